#include "presentation/coverage/coverage_view_controller.h"

#include <algorithm>
#include <chrono>
#include <numeric>
#include <tuple>
#include <utility>

#include "exchange/exports/report_lines_exporter.h"
#include "ledger/manager/portfolio_manager.h"
#include "marketdata/chain/switchable_quote_provider.h"
#include "platform/async/dispatch_queue.h"
#include "platform/async/timer.h"
#include "presentation/coverage/coverage_tables.h"
#include "presentation/reports/report_scope.h"
#include "reports/series/report_days.h"
#include "storage/application/watchlist_manager.h"

namespace corvane {
namespace {

using CoverState = PriceCoverage::State;

/// For how long a piece of the reading keeps the main queue from other things.
constexpr std::chrono::milliseconds sliceOfReading{4};
/// Until the next look at a ledger that an import is changing.
constexpr DispatchQueue::Duration pauseOfReading{0.1};
/// So many equities are asked about together: as many requests as are under way at a time.
constexpr std::size_t equitiesOfAGroup = 8;

bool isBeingImportedInto(const std::vector<PortfolioPointer>& portfolios) {
  return std::ranges::any_of(portfolios, [](const PortfolioPointer& portfolio) {
    const auto manager = portfolio->manager.lock();
    return manager != nullptr && manager->isEditedInBackground();
  });
}

CoverageLine countedLine(PriceCoverage coverage) {
  CoverageLine line{.coverage = std::move(coverage)};
  for (const auto& [days, state] : line.coverage.stretches) {
    line.days.at(static_cast<std::size_t>(state)) += daysBetween(days.first, days.last) + 1;
  }
  return line;
}

std::size_t missingStretches(const PriceCoverage& coverage) {
  return static_cast<std::size_t>(
      std::ranges::count(coverage.stretches, CoverState::missing, &PriceCoverage::Stretch::state));
}

}  // namespace

/// Portfolios are looked through first, then what they have held is looked up.
struct CoverageViewController::Reading {
  struct Held {
    EquityPointer equity;
    std::vector<DaySpan> spans;
    bool isExchangeRate;
  };

  int generation;
  std::vector<PortfolioPointer> portfolios;
  std::size_t nextPortfolio = 0;
  HeldDays days = {};
  std::vector<Held> held = {};
  std::vector<CoverageLine> lines = {};
  std::shared_ptr<SwitchableQuoteProvider> chain;
  YearMonthDay today;
  std::string problem = {};

  [[nodiscard]] bool isOver() const {
    return !problem.empty() || (nextPortfolio == portfolios.size() && lines.size() == held.size());
  }
  /// Puts what was held in its order: equities by symbol, then rates.
  void sortHeld() {
    for (const auto& [equity, spans] : days.equities) {
      held.push_back({equity, spans, false});
    }
    for (const auto& [pair, spans] : days.rates) {
      held.push_back({pair, spans, true});
    }
    std::ranges::sort(held, {}, [](const Held& each) {
      return std::tuple(each.isExchangeRate, each.equity->symbol, each.equity->id());
    });
  }
};

struct CoverageViewController::Fetch {
  std::shared_ptr<QuoteProvider> provider;
  std::vector<PriceCoverage> coverages;  ///< those with missing days
  std::size_t next = 0;                  ///< of them
  std::size_t stretchesInAll = 0;
  std::size_t stretchesDone = 0;
  double partOfGroup = 0;
  std::size_t stretchesOfGroup = 0;
  EquityMap<std::string> refused = {};
};

std::shared_ptr<CoverageViewController> CoverageViewController::make(
    ScreenSurroundings surroundings) {
  auto made = std::make_shared<CoverageViewController>(Passkey{}, std::move(surroundings));
  made->observe();
  return made;
}

CoverageViewController::CoverageViewController(Passkey /*passkey*/, ScreenSurroundings surroundings)
    : table(coverageColumns()),
      stretches(stretchColumns()),
      surroundings_(std::move(surroundings)) {}

void CoverageViewController::observe() {
  auto& center = NotificationCenter::defaultCenter();
  const auto reloads = [self = weak_from_this()](bool isRefresh) {
    if (const auto living = self.lock()) {
      living->isRefreshed_ = living->isRefreshed_ || isRefresh;
      living->reload();
    }
  };
  observations_.push_back(center.addObserver(
      PortfolioManager::didChangePortfolio, nullptr,
      [reloads](const PortfolioManager::PortfolioChange&) { reloads(false); },
      DispatchQueue::main()));
  observations_.push_back(center.addObserver(
      WatchlistManager::quoteDataSourceChanged, nullptr,
      [reloads](const NoPayload&) { reloads(false); }, DispatchQueue::main()));
  observations_.push_back(center.addObserver(
      WatchlistManager::didRefreshPortfolioEquities, nullptr,
      [reloads](const std::vector<PortfolioPointer>&) { reloads(true); }, DispatchQueue::main()));
}

void CoverageViewController::setDocumentModel(std::weak_ptr<WorkspaceModel> model) {
  documentModel_ = std::move(model);
  cancelAction();
  refused_.clear();
  outcome_.clear();
  isRefreshed_ = false;
  chosen_ = nullptr;
  show({});
  message_.clear();
  reload();
}

void CoverageViewController::setShown(bool isShown) {
  if (isShown != std::exchange(isShown_, isShown) && isShown) {
    reload();
  }
}

std::vector<PortfolioPointer> CoverageViewController::portfolios() const {
  const auto model = documentModel_.lock();
  return model == nullptr ? std::vector<PortfolioPointer>() : model->portfolios();
}

/// The provider that keeps prices; null where none are kept.
std::shared_ptr<SwitchableQuoteProvider> CoverageViewController::chain() const {
  const auto all = portfolios();
  const auto manager = all.empty() ? nullptr : all.front()->manager.lock();
  return manager == nullptr
             ? nullptr
             : std::dynamic_pointer_cast<SwitchableQuoteProvider>(manager->quoteProvider);
}

/// Begins to look at ledgers and cache; what is shown stays until all is known.
void CoverageViewController::reload() {
  ++generation_;
  isReading_ = false;
  if (!isShown_) {
    return;
  }
  const auto all = portfolios();
  const auto provider = chain();
  if (all.empty() || provider == nullptr) {
    show({});
    message_ = all.empty() ? "No portfolios."
                           : "No prices are kept in this run, since the cache could not be opened.";
    changeHandler();
    return;
  }
  const Calendar& calendar = calendarOf({.name = "", .portfolios = all});
  isReading_ = true;
  advance(
      std::make_shared<Reading>(Reading{.generation = generation_,
                                        .portfolios = all,
                                        .chain = provider,
                                        .today = YearMonthDay::of(surroundings_.now(), calendar)}));
  changeHandler();
}

/// Reads for a few milliseconds, and goes on when the main queue has done other things.
void CoverageViewController::advance(const std::shared_ptr<Reading>& reading) {
  if (reading->generation != generation_) {
    return;
  }
  if (isBeingImportedInto(reading->portfolios)) {
    advanceLater(reading);
    return;
  }
  const auto end = std::chrono::steady_clock::now() + sliceOfReading;
  do {
    try {
      readNext(*reading);
    } catch (const Error& error) {
      reading->problem = "What is kept of prices could not be read. " +
                         error.description().value_or(std::string());
    }
  } while (!reading->isOver() && std::chrono::steady_clock::now() < end);
  if (reading->isOver()) {
    take(*reading);
    return;
  }
  advanceLater(reading);
}

/// Has `reading` go on later: at once, or where an import is changing a ledger after a while.
void CoverageViewController::advanceLater(const std::shared_ptr<Reading>& reading) {
  const auto goOn = [self = weak_from_this(), reading] {
    if (const auto living = self.lock()) {
      living->advance(reading);
    }
  };
  if (isBeingImportedInto(reading->portfolios)) {
    waitTimer_ = Timer::scheduled(pauseOfReading, false, [goOn](Timer&) { goOn(); });
  } else {
    DispatchQueue::main()->async(goOn);
  }
}

/// One portfolio, or one equity of them.
void CoverageViewController::readNext(Reading& reading) const {
  const Calendar& calendar = calendarOf({.name = "", .portfolios = reading.portfolios});
  if (reading.nextPortfolio < reading.portfolios.size()) {
    const PortfolioPointer& portfolio = reading.portfolios[reading.nextPortfolio++];
    addHeldDays(reading.days, heldDays({portfolio}, calendar, reading.today, *reading.chain));
    if (reading.nextPortfolio == reading.portfolios.size()) {
      reading.sortHeld();
    }
    return;
  }
  const Reading::Held& held = reading.held[reading.lines.size()];
  PriceCoverage coverage = coverageOf(held.equity, held.spans,
                                      {.cache = *reading.chain->smartQuoteProvider->cacheProvider,
                                       .quotes = *reading.chain,
                                       .calendar = calendar,
                                       .today = reading.today,
                                       .isRefreshed = isRefreshed_});
  coverage.isExchangeRate = held.isExchangeRate;
  if (const auto why = refused_.find(held.equity); why != refused_.end() && !coverage.problem) {
    coverage.problem = why->second;
  }
  reading.lines.push_back(countedLine(std::move(coverage)));
}

void CoverageViewController::take(Reading& reading) {
  isReading_ = false;
  YearMonthDay first = reading.today;
  for (const CoverageLine& line : reading.lines) {
    first = std::min(first, line.coverage.stretches.front().days.first);
  }
  days_ = {first, reading.today};
  const bool isEmpty = reading.lines.empty();
  show(std::move(reading.lines));
  message_ = !reading.problem.empty() ? reading.problem : isEmpty ? "Nothing has been held." : "";
  changeHandler();
}

void CoverageViewController::show(std::vector<CoverageLine> lines) {
  const auto equityOf = [](const CoverageLine& line) { return line.coverage.equity; };
  if (std::ranges::find(lines, chosen_, equityOf) == lines.end()) {
    chosen_ = lines.empty() ? nullptr : lines.front().coverage.equity;
  }
  table.setRecords(std::move(lines));
  showFigures();
  showStretches();
}

void CoverageViewController::showFigures() {
  figures_ = coverageFigures(table.records());
}

void CoverageViewController::showStretches() {
  const auto row = chosenRow();
  std::vector<PriceCoverage::Stretch> lines;
  if (row) {
    lines = table.records()[*row].coverage.stretches;
    std::ranges::reverse(lines);
  }
  stretches.setRecords(std::move(lines));
}

void CoverageViewController::chooseRow(std::optional<std::size_t> row) {
  const bool isThere = row && *row < table.numberOfRows();
  const EquityPointer chosen = isThere ? table.records()[*row].coverage.equity : nullptr;
  if (chosen != chosen_) {
    chosen_ = chosen;
    showStretches();
    changeHandler();
  }
}

std::optional<std::size_t> CoverageViewController::chosenRow() const {
  const auto found = std::ranges::find(
      table.records(), chosen_, [](const CoverageLine& line) { return line.coverage.equity; });
  return chosen_ == nullptr || found == table.records().end()
             ? std::nullopt
             : std::optional(static_cast<std::size_t>(found - table.records().begin()));
}

void CoverageViewController::openRow(std::size_t row) {
  if (row < table.numberOfRows() && !table.records()[row].coverage.isExchangeRate) {
    openEquityHandler(table.records()[row].coverage.equity);
  }
}

bool CoverageViewController::canFetch() const {
  const auto provider = chain();
  return !isBusy() && provider != nullptr &&
         provider->dataSource != SwitchableQuoteProvider::DataSource::cacheOnly &&
         std::ranges::any_of(table.records(), [](const CoverageLine& line) {
           return line.coverage.hasMissingDays();
         });
}

void CoverageViewController::fetchAction() {
  if (!canFetch()) {
    return;
  }
  const auto fetch = std::make_shared<Fetch>(Fetch{.provider = chain(), .coverages = {}});
  for (const CoverageLine& line : table.records()) {
    if (const std::size_t count = missingStretches(line.coverage); count > 0) {
      fetch->coverages.push_back(line.coverage);
      fetch->stretchesInAll += count;
    }
  }
  outcome_.clear();
  fetch_ = fetch;
  fetchNext(fetch);
}

/// Asks about the next few equities. A fetch that has been ended goes no further.
void CoverageViewController::fetchNext(const std::shared_ptr<Fetch>& fetch) {
  if (fetch != fetch_) {
    return;
  }
  const std::size_t end = std::min(fetch->next + equitiesOfAGroup, fetch->coverages.size());
  if (fetch->next == end) {
    fetch_ = nullptr;
    fetchDidEnd(*fetch);
    return;
  }
  const std::vector<PriceCoverage> group(
      fetch->coverages.begin() + static_cast<std::ptrdiff_t>(fetch->next),
      fetch->coverages.begin() + static_cast<std::ptrdiff_t>(end));
  fetch->next = end;
  fetch->partOfGroup = 0;
  fetch->stretchesOfGroup = std::transform_reduce(group.begin(), group.end(), std::size_t{0},
                                                  std::plus(), missingStretches);
  const auto ifGoingOn = [self = weak_from_this(), fetch](auto then) {
    const auto living = self.lock();
    if (living != nullptr && living->fetch_ == fetch) {
      then(*living);
    }
  };
  fetchMissingPrices(
      fetch->provider, group,
      [ifGoingOn, fetch](double part) {
        ifGoingOn([&](CoverageViewController& living) {
          fetch->partOfGroup = part;
          living.changeHandler();
        });
      },
      [ifGoingOn, fetch](EquityMap<std::string> refused) {
        ifGoingOn([&](CoverageViewController& living) {
          fetch->refused.merge(refused);
          fetch->stretchesDone += std::exchange(fetch->stretchesOfGroup, 0);
          living.fetchNext(fetch);
        });
      });
  changeHandler();
}

void CoverageViewController::fetchDidEnd(const Fetch& fetch) {
  refused_ = fetch.refused;
  outcome_ = refused_.empty()
                 ? "All that was missing has been asked for."
                 : "The market has refused the prices of " + std::to_string(refused_.size()) +
                       (refused_.size() == 1 ? " line" : " lines") + ", for the reasons below.";
  reload();
}

void CoverageViewController::cancelAction() {
  if (fetch_ == nullptr) {
    return;
  }
  refused_ = std::exchange(fetch_, nullptr)->refused;
  outcome_ = "Cancelled. What had come until then is kept.";
  reload();
}

double CoverageViewController::progress() const {
  if (fetch_ == nullptr || fetch_->stretchesInAll == 0) {
    return 0;
  }
  const double ofGroup = fetch_->partOfGroup * static_cast<double>(fetch_->stretchesOfGroup);
  return (static_cast<double>(fetch_->stretchesDone) + ofGroup) /
         static_cast<double>(fetch_->stretchesInAll);
}

std::string CoverageViewController::title() const {
  if (table.numberOfRows() == 0) {
    return "";
  }
  return "Daily prices of what was held, " + mediumDayText(days_.lower()) + " – " +
         mediumDayText(days_.upper());
}

std::string CoverageViewController::notice() const {
  if (isFetching()) {
    return "";
  }
  const auto provider = chain();
  const bool isCacheOnly =
      provider != nullptr && provider->dataSource == SwitchableQuoteProvider::DataSource::cacheOnly;
  return isCacheOnly ? "Prices come from the cache alone, as the settings say, so that nothing can "
                       "be fetched."
                     : outcome_;
}

std::shared_ptr<PortfolioExporter> CoverageViewController::makeExporter() const {
  if (table.numberOfRows() == 0) {
    return nullptr;
  }
  std::vector<PriceCoverage> coverages;
  for (const CoverageLine& line : table.records()) {
    coverages.push_back(line.coverage);
  }
  return ReportLinesExporter::ofCoverage(coverages, "Coverage",
                                         calendarOf({.name = "", .portfolios = portfolios()}),
                                         surroundings_.defaults);
}

}  // namespace corvane
