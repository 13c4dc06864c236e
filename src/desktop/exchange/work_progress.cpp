#include "desktop/exchange/work_progress.h"

#include <QProgressDialog>

#include "exchange/brokers/import_export_error.h"

namespace corvane::desktop {

WorkProgress::~WorkProgress() {
  close();
}

void WorkProgress::show(double fraction) {
  constexpr int steps = 1000;
  if (fraction >= 1.0) {
    close();
    return;
  }
  if (dialog_ == nullptr) {
    dialog_ = new QProgressDialog(text_, QStringLiteral("Cancel"), 0, steps, parent_);
    dialog_->setWindowModality(Qt::ApplicationModal);
    dialog_->setMinimumDuration(static_cast<int>(patience.count()));
    dialog_->setAutoClose(false);
    dialog_->setAutoReset(false);
    dialog_->setValue(0);  // it counts its patience from here, and without this is never shown
  }
  dialog_->setValue(static_cast<int>(fraction * steps));  // lets events be handled once it is shown
  if (dialog_ != nullptr && dialog_->wasCanceled()) {
    close();
    throw UserCancelledError();
  }
}

void WorkProgress::close() {
  delete dialog_;
  dialog_ = nullptr;
}

}  // namespace corvane::desktop
