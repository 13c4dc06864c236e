// Which window the user has before him.
#pragma once

#include <QWidget>

namespace corvane::desktop {

/// Shows `window` in front of the others, with the keyboard.
///
/// A window that appears has the keyboard from the system, once. Asking for it as well would give
/// it the keyboard a second time, when it is on the screen, and so take it from a window that was
/// shown after it meanwhile: keys pressed at that moment would go astray.
inline void bringToFront(QWidget& window) {
  if (!window.isVisible()) {
    window.show();
    return;
  }
  if (window.isMinimized()) {
    window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
  }
  window.raise();
  window.activateWindow();
}

}  // namespace corvane::desktop
