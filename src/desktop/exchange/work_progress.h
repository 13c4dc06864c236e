// How far work on the main thread has come, once that takes long.
#pragma once

#include <QPointer>
#include <QString>
#include <QWidget>
#include <chrono>

class QProgressDialog;

namespace corvane::desktop {

/// Shows a bar with "Cancel" when work on the main thread takes longer than `patience`, and lets
/// the window be drawn meanwhile. It is gone at the end of the work.
class WorkProgress {
 public:
  /// How long all work of the program may take without a bar. Main thread only.
  static inline std::chrono::milliseconds patience{500};

  /// `parent` may go away earlier.
  WorkProgress(QString text, QWidget* parent) : text_(std::move(text)), parent_(parent) {}
  WorkProgress(const WorkProgress&) = delete;
  WorkProgress& operator=(const WorkProgress&) = delete;
  ~WorkProgress();

  /// `fraction` is from 0 to 1, the end of the work. Throws UserCancelledError where the user has
  /// cancelled.
  void show(double fraction);

 private:
  void close();

  QString text_;
  QPointer<QWidget> parent_;
  QPointer<QProgressDialog> dialog_;
};

}  // namespace corvane::desktop
