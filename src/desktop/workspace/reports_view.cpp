#include "desktop/workspace/reports_view.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

#include "desktop/controls/dates_picker_view.h"
#include "desktop/look/theme.h"
#include "desktop/reports/coverage_view.h"
#include "desktop/reports/income_view.h"
#include "desktop/reports/returns_view.h"
#include "desktop/reports/tax_year_view.h"

namespace corvane::desktop {
namespace {

/// A page with `title`, and below it `parts`, the last of which gets what is left.
QWidget* reportPage(const QString& title, std::initializer_list<QWidget*> parts) {
  auto* page = new QWidget;
  auto* heading = new QLabel(title);
  heading->setFont(theme::font(1.5, QFont::DemiBold));
  auto* column = new QVBoxLayout(page);
  column->setContentsMargins(spacing::wide, spacing::wide, spacing::wide, spacing::narrow);
  column->setSpacing(spacing::narrow);
  column->addWidget(heading);
  for (QWidget* part : parts) {
    column->addWidget(part);
  }
  column->setStretchFactor(*(parts.end() - 1), 1);
  return page;
}

/// `part` at the left, as wide as it needs to be.
QWidget* atLeft(QWidget* part) {
  auto* line = new QWidget;
  auto* row = new QHBoxLayout(line);
  row->setContentsMargins(0, 0, 0, 0);
  row->addWidget(part);
  row->addStretch(1);
  return line;
}

}  // namespace

ReportsView::ReportsView(std::shared_ptr<WorkspaceReports> reports, QWidget* parent)
    : QStackedWidget(parent),
      reports_(std::move(reports)),
      returns_(
          reportPage(QStringLiteral("Returns"), {atLeft(new DatesPickerView(reports_->datesPicker)),
                                                 new ReturnsView(reports_->returns)})),
      taxYear_(new TaxYearView(reports_->taxYear)),
      taxYearPage_(reportPage(QStringLiteral("Tax Year"), {taxYear_})),
      income_(reportPage(QStringLiteral("Income"), {new IncomeView(reports_->income)})),
      coverage_(reportPage(QStringLiteral("Coverage"), {new CoverageView(reports_->coverage)})) {
  for (QWidget* page :
       std::initializer_list<QWidget*>{returns_, taxYearPage_, income_, coverage_}) {
    addWidget(page);
  }
}

void ReportsView::showReport() {
  if (const auto shown = reports_->shown()) {
    switch (*shown) {
      case WorkspaceReport::returns:
        setCurrentWidget(returns_);
        break;
      case WorkspaceReport::taxYear:
        setCurrentWidget(taxYearPage_);
        break;
      case WorkspaceReport::income:
        setCurrentWidget(income_);
        break;
      case WorkspaceReport::coverage:
        setCurrentWidget(coverage_);
        break;
    }
  }
}

}  // namespace corvane::desktop
