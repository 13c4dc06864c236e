// Buttons at the end of a text field, such as the one that opens what the field is chosen from.
#pragma once

#include <initializer_list>

class QLineEdit;
class QToolButton;
class QWidget;

namespace corvane::desktop {

/// Fills `box` with `field`, in whose right end `buttons` stand. No text runs below them, and the
/// keyboard stays in the field.
void putIntoField(QWidget& box, QLineEdit& field, std::initializer_list<QToolButton*> buttons);

}  // namespace corvane::desktop
