// A field for a day, as Qt shows it.
#pragma once

#include <QWidget>
#include <functional>

#include "desktop/transactions/entry_row.h"
#include "presentation/transactions/date_entry.h"

class QLineEdit;
class QToolButton;

namespace corvane::desktop {

/// Shows a DateEntry: a field in which one types, steps with Up and Down, and opens a calendar with
/// Alt+Down or the button. Everything that the user does goes through `change`.
class DateEntryView : public QWidget {
  Q_OBJECT

 public:
  using Change = std::function<void(const std::function<void(DateEntry&)>&)>;

  DateEntryView(const DateEntry& entry, Change change);

  [[nodiscard]] QLineEdit& field() { return *field_; }
  /// Brings the field in line with the entry.
  void update();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  bool handleFieldKey(int key, Qt::KeyboardModifiers modifiers);
  void openCalendar();

  const DateEntry& entry_;
  Change change_;
  QLineEdit* field_;
  QToolButton* calendar_;
  bool isShowing_ = false;
};

}  // namespace corvane::desktop
