#include "desktop/app/main_queue_pump.h"

#include <QCoreApplication>
#include <QEvent>

#include "platform/async/dispatch_queue.h"

namespace corvane::desktop {
namespace {

const auto drainEvent = static_cast<QEvent::Type>(QEvent::registerEventType());

}  // namespace

MainQueuePump::MainQueuePump() {
  MainLoop::setWakeUp([this] {
    if (!isPosted_.exchange(true)) {
      QCoreApplication::postEvent(this, new QEvent(drainEvent));
    }
  });
}

MainQueuePump::~MainQueuePump() {
  MainLoop::setWakeUp(nullptr);
}

bool MainQueuePump::event(QEvent* event) {
  if (event->type() != drainEvent) {
    return QObject::event(event);
  }
  // Before the blocks run: what they post, or a dialog that they open, needs its own event.
  isPosted_ = false;
  MainLoop::drain();
  return true;
}

}  // namespace corvane::desktop
