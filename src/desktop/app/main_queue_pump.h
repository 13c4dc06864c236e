// Lets Qt's event loop run what the program posts to its main queue.
#pragma once

#include <QObject>
#include <atomic>

namespace corvane::desktop {

/// Pumps the main queue on the thread that makes this, while that thread runs a Qt event loop, also
/// one of a dialog. One at a time; until it is destroyed.
class MainQueuePump : public QObject {
 public:
  MainQueuePump();
  ~MainQueuePump() override;

 protected:
  bool event(QEvent* event) override;

 private:
  std::atomic<bool> isPosted_ = false;  ///< so that a thousand blocks post one event
};

}  // namespace corvane::desktop
