// The row of buttons at the end of a form.
#pragma once

#include <QWidget>

#include "core/controls/form_controls.h"

class QDialog;
class QPushButton;

namespace corvane::desktop {

/// Cancel and the go button of a form on the right, perhaps a further one on the left; the keyboard
/// goes through them in that order. Return presses the go button wherever it is in the form.
class EntryButtons : public QWidget {
 public:
  explicit EntryButtons(QDialog& form, QPushButton* onTheLeft = nullptr);

  [[nodiscard]] QPushButton& go() { return *go_; }
  [[nodiscard]] QPushButton& cancel() { return *cancel_; }

 private:
  QPushButton* cancel_;
  QPushButton* go_;
};

/// Brings `button` in line with `state`. What the tooltip says is said to a screen reader as well.
void showButton(QPushButton& button, const Button& state);

}  // namespace corvane::desktop
