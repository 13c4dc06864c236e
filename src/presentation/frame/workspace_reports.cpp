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
    : overview(PortfoliosOverviewViewController::make(surroundings)),
      returns(ReturnsViewController::make(surroundings)),
      taxYear(TaxYearViewController::make(surroundings)),
      income(IncomeViewController::make(surroundings)),
      coverage(CoverageViewController::make(surroundings)),
      overviewDatesPicker(surroundings.now),
      datesPicker(surroundings.now),
      surroundings_(std::move(surroundings)) {
  for (QueryDatesPicker* picker : {&overviewDatesPicker, &datesPicker}) {
    picker->setAllowsIntervalSelection(false);
    picker->action = [this] { reload(); };
    fresh_.insert(picker);
  }
}

bool WorkspaceReports::isBusy() const {
  return overview->isBusy() || returns->isBusy() || taxYear->isBusy() || income->isBusy() ||
         coverage->isBusy();
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
  fresh_ = {&overviewDatesPicker, &datesPicker};
  taxYear->setDocumentModel(model);
  coverage->setDocumentModel(std::move(model));
  reload();
}

void WorkspaceReports::show(std::optional<WorkspaceReport> report) {
  shown_ = report;
  reload();
  overview->setShown(shown_ == WorkspaceReport::overview);
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
    limitDays(overviewDatesPicker, portfolios);
    limitDays(datesPicker, portfolios);
  }
  const QueryDatesPicker& picker =
      shown_ == WorkspaceReport::overview ? overviewDatesPicker : datesPicker;
  ReportScope scope{.name = nameOfAll,
                    .portfolios = std::move(portfolios),
                    .days = {picker.startDate(), picker.endDate()}};
  if (scope.isOnePortfolio()) {
    scope.name = scope.portfolios.front()->name;
  }
  if (shown_ == WorkspaceReport::overview) {
    overview->setScope(std::move(scope));
  } else if (shown_ == WorkspaceReport::returns) {
    returns->setScope(std::move(scope));
  } else if (shown_ == WorkspaceReport::income) {
    income->setScope(std::move(scope));
  }
}

/// Keeps `picker` within the days of the ledgers; whoever looks at all of them goes on to.
void WorkspaceReports::limitDays(QueryDatesPicker& picker,
                                 const std::vector<PortfolioPointer>& portfolios) {
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
  const bool showedAll = fresh_.erase(&picker) > 0 || (picker.startDate() == picker.minimumDate() &&
                                                       picker.endDate() == picker.maximumDate());
  picker.setCalendar(calendar);
  picker.setLimits(first, last);
  picker.setPresets(portfolioDatePresets({first, last}, today));
  if (showedAll) {
    picker.setDates(first, last);
  } else {
    picker.setDates(std::clamp(picker.startDate(), first, last),
                    std::clamp(picker.endDate(), first, last));
  }
}

std::shared_ptr<PortfolioExporter> WorkspaceReports::makeExporter() const {
  if (!shown_) {
    return nullptr;
  }
  switch (*shown_) {
    case WorkspaceReport::overview:
      return overview->makeExporter();
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
