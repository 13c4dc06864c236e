#include "desktop/transactions/entry_buttons.h"

#include <QDialog>
#include <QHBoxLayout>
#include <QPushButton>

#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"

namespace corvane::desktop {

EntryButtons::EntryButtons(QDialog& form, QPushButton* onTheLeft)
    : cancel_(new QPushButton), go_(new QPushButton(&form)) {
  // With the dialog as its parent it stays the default button after the keyboard has been on it.
  go_->setDefault(true);
  cancel_->setAutoDefault(false);
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(0, 0, 0, 0);
  row->setSpacing(spacing::narrow);
  if (onTheLeft != nullptr) {
    onTheLeft->setAutoDefault(false);
    row->addWidget(onTheLeft);
  }
  row->addStretch(1);
  row->addWidget(cancel_);
  row->addWidget(go_);
}

void showButton(QPushButton& button, const Button& state) {
  button.setText(qtText(state.title));
  button.setToolTip(qtText(state.tooltip));
  button.setAccessibleDescription(qtText(state.tooltip));
  button.setEnabled(state.isEnabled);
  button.setVisible(!state.isHidden);
}

}  // namespace corvane::desktop
