#include "desktop/transactions/number_entry_view.h"

#include <QFocusEvent>

#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"

namespace corvane::desktop {

NumberEntryView::NumberEntryView(QGridLayout& grid, const NumberEntry& entry,
                                 std::function<void(std::string)> typed,
                                 std::function<void()> ended)
    : entry_(entry), row_(grid, this, this, EntryRow::HintSide::left) {
  setAlignment(Qt::AlignRight);
  setFont(theme::monospacedFont());
  // Whatever changes the text is typing, also a paste and an assistive technology that sets it.
  connect(this, &QLineEdit::textChanged, this, [this, typed = std::move(typed)](const QString& to) {
    if (!isShowing_) {
      typed(utf8Text(to));
    }
  });
  connect(this, &QLineEdit::editingFinished, this, std::move(ended));
}

void NumberEntryView::update() {
  isShowing_ = true;
  if (const QString shown = qtText(entry_.text()); text() != shown) {
    setText(shown);
  }
  setEnabled(entry_.isEnabled);
  row_.show(entry_.label, entry_.isHidden, entry_.hint());
  row_.setLabelEnabled(entry_.isEnabled);
  isShowing_ = false;
}

void NumberEntryView::focusInEvent(QFocusEvent* event) {
  QLineEdit::focusInEvent(event);
  // A number is mostly replaced as a whole.
  if (event->reason() != Qt::MouseFocusReason && event->reason() != Qt::PopupFocusReason &&
      event->reason() != Qt::ActiveWindowFocusReason) {
    selectAll();
  }
}

}  // namespace corvane::desktop
