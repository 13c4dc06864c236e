#include "desktop/exchange/progress_dialog.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"

namespace corvane::desktop {
namespace {

constexpr int steps = 1000;  // of the bar; a job may count more units than an int holds

}  // namespace

ProgressDialog::ProgressDialog(std::shared_ptr<ImportExportProgressViewController> controller,
                               QWidget* parent)
    : QDialog(parent),
      controller_(std::move(controller)),
      status_(new QLabel),
      bar_(new QProgressBar),
      cancel_(new QPushButton) {
  setAttribute(Qt::WA_DeleteOnClose);
  setWindowModality(Qt::WindowModal);
  setWindowTitle(QStringLiteral("Corvane"));
  status_->setTextFormat(Qt::PlainText);
  bar_->setTextVisible(false);
  bar_->setMinimumWidth(380);
  bar_->setAccessibleName(QStringLiteral("Progress"));

  auto* row = new QHBoxLayout;
  row->addWidget(bar_, 1);
  row->addWidget(cancel_);
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(spacing::section, spacing::wide, spacing::section, spacing::wide);
  column->setSpacing(spacing::medium);
  column->setSizeConstraint(QLayout::SetFixedSize);
  column->addWidget(status_);
  column->addLayout(row);
  connect(cancel_, &QPushButton::clicked, this, [this] { controller_->cancel(); });
  changes_ = subscribe(controller_->viewDidUpdate, [this] { update(); });
  update();
}

void ProgressDialog::update() {
  status_->setText(qtText(controller_->statusLabel.text));
  const auto& indicator = controller_->progressIndicator;
  const double span = indicator.maximum - indicator.minimum;
  bar_->setRange(0, indicator.isIndeterminate ? 0 : steps);
  bar_->setValue(span > 0 ? static_cast<int>((indicator.value - indicator.minimum) / span * steps)
                          : 0);
  cancel_->setText(qtText(controller_->cancelButton.title));
  cancel_->setEnabled(controller_->cancelButton.isEnabled);
}

}  // namespace corvane::desktop
