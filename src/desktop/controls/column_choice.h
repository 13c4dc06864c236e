// The columns of a table as its user wants them.
#pragma once

#include <QObject>
#include <string>

#include "platform/system/user_defaults.h"

class QMenu;

namespace corvane::desktop {

class TableView;

/// Lets a user hide, move and size the columns of a table, and keeps that for the next start: by a
/// drag in the heading, and by a menu that the heading opens and that fillMenu() makes elsewhere.
/// Belongs to the table, which has its model and its object name by then: that is the name under
/// which its columns are kept. Main queue only.
class ColumnChoice : public QObject {
  Q_OBJECT

 public:
  /// Shows the columns of `table` as they were chosen last. `defaults` must outlive it.
  ColumnChoice(TableView& table, UserDefaults& defaults);

  [[nodiscard]] const TableView& table() const { return table_; }
  /// Adds an item for each column that can be hidden, and one that makes everything as it was.
  void fillMenu(QMenu& menu);
  /// Back to the columns that the table has of its own.
  void reset();

 private:
  void apply();
  void keep();
  void keepSoon();
  void openMenu(const QPoint& place);
  void setShown(int column, bool isShown);
  [[nodiscard]] int shownCount() const;

  TableView& table_;
  UserDefaults& defaults_;
  const std::string key_;
  bool isKeeping_ = false;  ///< a change waits for being kept
  bool isApplying_ = false;
};

}  // namespace corvane::desktop
