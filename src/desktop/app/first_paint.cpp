#include "desktop/app/first_paint.h"

#include <QEvent>
#include <utility>

#include "desktop/app/main_window.h"

namespace corvane::desktop {

FirstPaint::FirstPaint(QObject& application, std::function<void()> painted)
    : painted_(std::move(painted)) {
  application.installEventFilter(this);
}

bool FirstPaint::eventFilter(QObject* watched, QEvent* event) {
  if (painted_ && event->type() == QEvent::Paint && dynamic_cast<MainWindow*>(watched) != nullptr) {
    // The children are painted after the window, before the loop takes the next call.
    QMetaObject::invokeMethod(this, std::exchange(painted_, nullptr), Qt::QueuedConnection);
  }
  return false;
}

}  // namespace corvane::desktop
