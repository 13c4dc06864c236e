// A field for a number, as Qt shows it.
#pragma once

#include <QLineEdit>
#include <functional>
#include <string>

#include "desktop/transactions/entry_row.h"

namespace corvane::desktop {

/// Shows a NumberEntry in a row of a form. `typed` hears of every change of the text that is the
/// user's, `ended` when the keyboard leaves the field or Return is pressed.
class NumberEntryView : public QLineEdit {
  Q_OBJECT

 public:
  NumberEntryView(QGridLayout& grid, const NumberEntry& entry,
                  std::function<void(std::string)> typed, std::function<void()> ended);

  /// Brings the row in line with the entry.
  void update();

 protected:
  void focusInEvent(QFocusEvent* event) override;

 private:
  const NumberEntry& entry_;
  EntryRow row_;
  bool isShowing_ = false;
};

}  // namespace corvane::desktop
