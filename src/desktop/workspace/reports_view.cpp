#include "desktop/workspace/reports_view.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

#include "desktop/controls/dates_picker_view.h"
#include "desktop/look/theme.h"
#include "desktop/reports/coverage_view.h"
#include "desktop/reports/income_view.h"
#include "desktop/reports/overview_view.h"
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
    : QStackedWidget(parent), reports_(std::move(reports)) {}

QWidget* ReportsView::makePage(WorkspaceReport report) {
  switch (report) {
    case WorkspaceReport::overview:
      return reportPage(QStringLiteral("All Portfolios"),
                        {new OverviewView(reports_->overview, reports_->overviewDatesPicker)});
    case WorkspaceReport::returns:
      return reportPage(
          QStringLiteral("Returns"),
          {atLeft(new DatesPickerView(reports_->datesPicker)), new ReturnsView(reports_->returns)});
    case WorkspaceReport::taxYear:
      return reportPage(QStringLiteral("Tax Year"), {new TaxYearView(reports_->taxYear)});
    case WorkspaceReport::income:
      return reportPage(QStringLiteral("Income"), {new IncomeView(reports_->income)});
    case WorkspaceReport::coverage:
      return reportPage(QStringLiteral("Coverage"), {new CoverageView(reports_->coverage)});
  }
  return nullptr;
}

QWidget* ReportsView::page(WorkspaceReport report) {
  QWidget*& page = pages_[report];
  if (page == nullptr) {
    page = makePage(report);
    addWidget(page);
    if (pageMade) {
      pageMade(*page);
    }
  }
  return page;
}

TaxYearView& ReportsView::taxYear() {
  return *page(WorkspaceReport::taxYear)->findChild<TaxYearView*>();
}

void ReportsView::showReport() {
  if (const auto shown = reports_->shown()) {
    setCurrentWidget(page(*shown));
  }
}

}  // namespace corvane::desktop
