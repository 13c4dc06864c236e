#include "desktop/reports/report_view.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QSignalBlocker>
#include <QVBoxLayout>
#include <utility>

#include "desktop/controls/busy_bar.h"
#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"
#include "desktop/reports/report_heading.h"
#include "desktop/reports/report_parts.h"

namespace corvane::desktop {

ReportView::ReportView(std::shared_ptr<ReportViewController> report, const QString& work,
                       QWidget* parent)
    : QWidget(parent),
      report_(std::move(report)),
      currency_(new QComboBox),
      busy_(makeBusyBar(work)),
      heading_(new ReportHeading(busy_)),
      warning_(new ReportWarningBar),
      page_(new ReportPage),
      figures_(new FiguresRow) {
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, spacing::narrow, 0, 0);
  column->setSpacing(spacing::narrow);
  addHeading();
  column->addWidget(heading_);
  column->addWidget(warning_);
  column->addWidget(page_, 1);
  page_->column().addWidget(figures_);
  figures_->explain = [this](const ReportFigure& figure) { explain(figure.explain); };
  changes_ = subscribe(report_->changeHandler, [this] { showState(); });
}

ReportView::~ReportView() {
  // Charts and boxes give their handlers back, so they go before what holds them.
  delete page_;
  delete heading_;
}

void ReportView::addHeading() {
  currency_->setAccessibleName(QStringLiteral("Currency of the report"));
  currency_->setSizeAdjustPolicy(QComboBox::AdjustToContents);
  heading().addWidget(currency_);
  connect(currency_, &QComboBox::activated, this,
          [this](int index) { report_->chooseCurrency(static_cast<std::size_t>(index)); });
}

void ReportView::addChoice(QWidget* choice) {
  heading().insertWidget(heading().indexOf(currency_), choice);
}

QHBoxLayout& ReportView::heading() {
  return heading_->choices();
}

void ReportView::addNotes() {
  notes_ = page_->addNote();
}

void ReportView::showState() {
  heading_->setTitle(qtText(report_->title()));
  busy_->setVisible(report_->isBusy());
  warning_->setWarning(report_->warning());
  figures_->setFigures(report_->figures());
  showCurrencies();
  if (notes_ == nullptr) {
    return;
  }
  QString notes;
  for (const std::string& note : report_->notes()) {
    notes += (notes.isEmpty() ? "" : "\n") + qtText(note);
  }
  notes_->setText(notes);
  notes_->setVisible(!notes.isEmpty());
}

void ReportView::showCurrencies() {
  const QSignalBlocker block(currency_);
  QStringList codes;
  for (const Currency& currency : report_->currencies()) {
    codes.push_back(qtText(currency.code));
  }
  // A list that the user has opened stays open while prices are refreshed.
  if (codes != shownCurrencies_) {
    currency_->clear();
    currency_->addItems(codes);
    shownCurrencies_ = codes;
  }
  currency_->setCurrentIndex(static_cast<int>(codes.indexOf(qtText(report_->currency().code))));
  currency_->setVisible(report_->currencies().size() > 1);
}

}  // namespace corvane::desktop
