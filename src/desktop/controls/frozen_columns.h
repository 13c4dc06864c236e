// The first columns of a table, which stay in view while it scrolls sideways.
#pragma once

#include <QObject>
#include <array>

class QPainter;
class QTableView;
class QWidget;

namespace corvane::desktop {

/// Draws the first columns of a table over its left edge as soon as they have begun to scroll away.
/// It only draws: rows are clicked, and read by a screen reader, in the table itself. Belongs to
/// the table.
class FrozenColumns : public QObject {
  Q_OBJECT

 public:
  /// Keeps the first `count` columns, in the order in which they are shown.
  FrozenColumns(QTableView& table, int count);

  /// Whether they are being drawn now.
  [[nodiscard]] bool isShown() const;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  [[nodiscard]] int width() const;
  void place();
  void drawRows(QPainter& painter) const;
  void drawHeader(QPainter& painter) const;

  QTableView& table_;
  int count_;
  QWidget* rows_;
  QWidget* header_;
};

}  // namespace corvane::desktop
