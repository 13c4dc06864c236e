// Check boxes and radio buttons, which the program and the user both set.
#pragma once

#include <QAbstractButton>
#include <QSignalBlocker>
#include <utility>

namespace corvane::desktop {

/// Shows that `button` is on or off without telling those who listen to its toggled(), which then
/// stands for what somebody does: an assistive technology toggles a button without a click. Of
/// radio buttons the one that goes out is told all the same; listen to those that go on.
inline void showChecked(QAbstractButton& button, bool isOn) {
  const QSignalBlocker block(&button);
  button.setChecked(isOn);
}

/// Has `action` run when somebody turns `button` on, as long as there is `receiver`.
template <typename Action>
void whenChosen(QAbstractButton& button, const QObject* receiver, Action action) {
  QObject::connect(&button, &QAbstractButton::toggled, receiver,
                   [action = std::move(action)](bool isOn) {
                     if (isOn) {
                       action();
                     }
                   });
}

}  // namespace corvane::desktop
