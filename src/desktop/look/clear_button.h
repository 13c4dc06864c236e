// The button that empties a field.
#pragma once

#include <QLineEdit>
#include <QToolButton>

namespace corvane::desktop {

/// Gives `field` a button that empties it, with the name that Qt leaves out for those who hear it.
inline void addClearButton(QLineEdit& field) {
  field.setClearButtonEnabled(true);
  for (QToolButton* button : field.findChildren<QToolButton*>()) {
    button->setAccessibleName(QStringLiteral("Clear"));
  }
}

}  // namespace corvane::desktop
