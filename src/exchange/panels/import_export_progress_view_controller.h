// The sheet that shows how far a job has come, and lets the user cancel it.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>

#include "core/controls/form_controls.h"
#include "platform/async/progress.h"

namespace corvane {

/// State of the sheet's widgets, kept up to date from a Progress that a job counts on another
/// queue. Main queue only.
class ImportExportProgressViewController
    : public std::enable_shared_from_this<ImportExportProgressViewController> {
 public:
  Label statusLabel;
  ProgressIndicator progressIndicator;
  Button cancelButton{.title = "Cancel"};

  /// What the button does.
  std::function<void()> cancelHandler;
  /// Set by the shell: shows the state again.
  std::function<void()> viewDidUpdate;

  /// Follows `progress`, first with what it is now. However often the job counts, at most one
  /// update waits on the main queue, so that a click never queues up behind them.
  void observe(const std::shared_ptr<Progress>& progress);

  /// The button was pressed: the sheet stops following, shows that something goes on, and tells the
  /// handler. Pressing it again does nothing.
  void cancel();

 private:
  void show(const Progress& progress);

  Subscription observations_;
};

}  // namespace corvane
