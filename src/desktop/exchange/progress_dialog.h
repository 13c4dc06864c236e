// The sheet that shows how far a job has come.
#pragma once

#include <QDialog>
#include <memory>

#include "exchange/panels/import_export_progress_view_controller.h"
#include "platform/async/subscription.h"

class QLabel;
class QProgressBar;
class QPushButton;

namespace corvane::desktop {

/// Shows an ImportExportProgressViewController. Closing the sheet by other means is a click on
/// Cancel; it goes when the job has ended.
class ProgressDialog : public QDialog {
  Q_OBJECT

 public:
  ProgressDialog(std::shared_ptr<ImportExportProgressViewController> controller, QWidget* parent);

  void reject() override { controller_->cancel(); }

 private:
  void update();

  std::shared_ptr<ImportExportProgressViewController> controller_;
  QLabel* status_;
  QProgressBar* bar_;
  QPushButton* cancel_;
  Subscription changes_;
};

}  // namespace corvane::desktop
