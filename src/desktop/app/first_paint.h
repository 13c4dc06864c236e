// Tells when a program that was started can first be seen.
#pragma once

#include <QObject>
#include <functional>

namespace corvane::desktop {

/// Calls `painted` once, when the main window has been painted and Qt comes back to the loop.
/// Lives as long as the application it watches.
class FirstPaint : public QObject {
 public:
  FirstPaint(QObject& application, std::function<void()> painted);

  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  std::function<void()> painted_;
};

}  // namespace corvane::desktop
