#include "presentation/frame/workspace_reports.h"

#include <algorithm>
#include <utility>

#include "ledger/manager/portfolio_manager.h"
#include "presentation/performance/portfolio_date_presets.h"
#include "storage/application/watchlist_manager.h"

namespace corvane {
namespace {

constexpr const char* nameOfAll = "All portfolios";

}  // namespace

std::shared_ptr<WorkspaceReports> WorkspaceReports::make(ScreenSurroundings surroundings) {
  auto made = std::make_shared<WorkspaceReports>(Passkey{}, std::move(surroundings));
  made->observe();
  return made;
}

WorkspaceReports::WorkspaceReports(Passkey /*passkey*/, ScreenSurroundings surroundings)
    : returns(ReturnsViewController::make(surroundings)),
      taxYear(TaxYearViewController::make(surroundings)),
      income(IncomeViewController::make(surroundings)),
      coverage(CoverageViewController::make(surroundings)),
      datesPicker(surroundings.now),
      surroundings_(std::move(surroundings)) {
  datesPicker.setAllowsIntervalSelection(false);
  datesPicker.action = [this] { reload(); };
}

void WorkspaceReports::observe() {
  auto& center = NotificationCenter::defaultCenter();
  const auto reloads = [self = weak_from_this()] {
    if (const auto living = self.lock()) {
      living->reload();
    }
  };
  observations_.push_back(center.addObserver(
      PortfolioManager::didChangePortfolio, nullptr,
      [reloads](const PortfolioManager::PortfolioChange&) { reloads(); }, DispatchQueue::main()));
  observations_.push_back(center.addObserver(
      WatchlistManager::quoteDataSourceChanged, nullptr, [reloads](const NoPayload&) { reloads(); },
      DispatchQueue::main()));
}

void WorkspaceReports::setDocumentModel(std::weak_ptr<WorkspaceModel> model) {
  documentModel_ = model;
  showsAllTime_ = true;
  taxYear->setDocumentModel(model);
  coverage->setDocumentModel(std::move(model));
  reload();
}

void WorkspaceReports::show(std::optional<WorkspaceReport> report) {
  shown_ = report;
  reload();
  returns->setShown(shown_ == WorkspaceReport::returns);
  taxYear->setShown(shown_ == WorkspaceReport::taxYear);
  income->setShown(shown_ == WorkspaceReport::income);
  coverage->setShown(shown_ == WorkspaceReport::coverage);
}

void WorkspaceReports::reload() {
  const auto model = documentModel_.lock();
  std::vector<PortfolioPointer> portfolios;
  if (model != nullptr && shown_) {
    portfolios = model->portfolios();
    limitDays(portfolios);
  }
  ReportScope scope{.name = nameOfAll,
                    .portfolios = std::move(portfolios),
                    .days = {datesPicker.startDate(), datesPicker.endDate()}};
  if (scope.isOnePortfolio()) {
    scope.name = scope.portfolios.front()->name;
  }
  if (shown_ == WorkspaceReport::returns) {
    returns->setScope(std::move(scope));
  } else if (shown_ == WorkspaceReport::income) {
    income->setScope(std::move(scope));
  }
}

/// Keeps the picker within the days of the ledgers; whoever looks at all of them goes on to.
void WorkspaceReports::limitDays(const std::vector<PortfolioPointer>& portfolios) {
  const ReportScope scope{.name = "", .portfolios = portfolios};
  const Calendar& calendar = calendarOf(scope);
  const YearMonthDay today = YearMonthDay::of(surroundings_.now(), calendar);
  YearMonthDay first = today;
  YearMonthDay last = today;
  for (const PortfolioPointer& portfolio : portfolios) {
    if (const auto& rows = portfolio->transactions(); !rows.empty()) {
      first = std::min(first, YearMonthDay::of(rows.front()->settlementDate(), calendar));
      last = std::max(last, YearMonthDay::of(rows.back()->settlementDate(), calendar));
    }
  }
  const bool showedAll = showsAllTime_ || (datesPicker.startDate() == datesPicker.minimumDate() &&
                                           datesPicker.endDate() == datesPicker.maximumDate());
  showsAllTime_ = false;
  datesPicker.setCalendar(calendar);
  datesPicker.setLimits(first, last);
  datesPicker.setPresets(portfolioDatePresets({first, last}, today));
  if (showedAll) {
    datesPicker.setDates(first, last);
  } else {
    datesPicker.setDates(std::clamp(datesPicker.startDate(), first, last),
                         std::clamp(datesPicker.endDate(), first, last));
  }
}

std::shared_ptr<PortfolioExporter> WorkspaceReports::makeExporter() const {
  if (!shown_) {
    return nullptr;
  }
  switch (*shown_) {
    case WorkspaceReport::returns:
      return returns->makeExporter();
    case WorkspaceReport::taxYear:
      return taxYear->makeExporter();
    case WorkspaceReport::income:
      return income->makeExporter();
    case WorkspaceReport::coverage:
      return coverage->makeExporter();
  }
  return nullptr;
}

}  // namespace corvane
