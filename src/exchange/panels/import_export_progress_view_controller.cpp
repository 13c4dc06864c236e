#include "exchange/panels/import_export_progress_view_controller.h"

#include "platform/async/dispatch_queue.h"

namespace corvane {

void ImportExportProgressViewController::observe(const std::shared_ptr<Progress>& progress) {
  observations_ = progress->addObserver(
      [weakSelf = weak_from_this(), weakProgress = std::weak_ptr(progress),
       updateIsWaiting = std::make_shared<std::atomic<bool>>(false)](const Progress&) {
        if (updateIsWaiting->exchange(true)) {
          return;
        }
        DispatchQueue::main()->async([weakSelf, weakProgress, updateIsWaiting] {
          updateIsWaiting->store(false);
          const auto self = weakSelf.lock();
          const auto observed = weakProgress.lock();
          if (self != nullptr && observed != nullptr && self->observations_) {
            self->show(*observed);
          }
        });
      });
  show(*progress);
}

void ImportExportProgressViewController::show(const Progress& progress) {
  progressIndicator.maximum = static_cast<double>(progress.totalUnitCount());
  progressIndicator.value = static_cast<double>(progress.completedUnitCount());
  if (viewDidUpdate) {
    viewDidUpdate();
  }
}

void ImportExportProgressViewController::cancel() {
  if (!cancelButton.isEnabled) {
    return;
  }
  observations_.reset();
  cancelButton.isEnabled = false;
  progressIndicator.isIndeterminate = true;
  progressIndicator.isAnimated = true;
  if (cancelHandler) {
    cancelHandler();
  }
  if (viewDidUpdate) {
    viewDidUpdate();
  }
}

}  // namespace corvane
