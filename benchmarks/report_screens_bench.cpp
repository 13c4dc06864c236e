// For how long a report that opens keeps the window from doing anything else: 100,000 rows, 20
// years, 50 equities, prices from memory.

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "core/market/price_adjuster.h"
#include "ledger_world.h"
#include "marketdata/chain/switchable_quote_provider.h"
#include "presentation/coverage/coverage_view_controller.h"
#include "presentation/overview/portfolios_overview_view_controller.h"
#include "presentation/reports/income_view_controller.h"
#include "presentation/reports/returns_view_controller.h"
#include "presentation/taxes/tax_year_view_controller.h"

namespace corvane {
namespace report_screens_bench {

using Clock = std::chrono::steady_clock;

const ClosedRange<YearMonthDay> reportedDays({2004, 1, 1}, {2023, 12, 31});

/// Weekly closes of everything, on a background queue.
class SteadyProvider : public QuoteProvider {
 public:
  void fetchQuotes(QuoteQuery query, std::shared_ptr<PriceAdjuster> /*adjuster*/,
                   QuoteCompletion completion) override {
    DispatchQueue::global()->async(
        [dates = query.dateRange, completion = std::move(completion)]() mutable {
          std::vector<Quote> bars;
          for (Date date = dates.lower(); date < dates.upper(); date = date + 7 * 86400) {
            Quote bar;
            bar.fromDate = date;
            bar.toDate = date + 23400;
            bar.open = bar.close = Decimal::fromParts(Sign::plus, -2, 1000 + bars.size());
            bars.push_back(bar);
          }
          completion(QuoteFetchResult{std::move(bars), PriceAdjustment::marketNominal,
                                      std::vector<EquityEvent>(), DateRange(Date(), Date())});
        });
  }
};

World& reportedWorld() {
  static World world = [] {
    World made(std::make_shared<SteadyProvider>());
    made.record(100'000);
    return made;
  }();
  return world;
}

/// The longest time between two turns of the main queue until `screen` has its answer, which
/// `open` asks for.
template <typename Screen, typename Open>
double longestHold(const Screen& screen, Open open) {
  double longest = 0;
  Clock::time_point last = Clock::now();
  // The last of the turns comes when nobody measures any more.
  const auto isOver = std::make_shared<bool>(false);
  std::function<void()> probe = [&, isOver] {
    if (*isOver) {
      return;
    }
    const Clock::time_point now = Clock::now();
    longest = std::max(longest, std::chrono::duration<double>(now - last).count());
    last = now;
    if (screen.isBusy()) {
      DispatchQueue::main()->async(probe);
    }
  };
  open();
  probe();
  MainLoop::runUntil([&] { return !screen.isBusy(); }, std::chrono::seconds(60));
  probe();
  *isOver = true;
  return longest;
}

template <typename Screen>
void openReport(benchmark::State& state) {
  World& world = reportedWorld();
  for (auto _ : state) {
    const auto screen = Screen::make({});
    screen->setShown(true);
    state.SetIterationTime(longestHold(*screen, [&] {
      screen->setScope({.name = "All", .portfolios = {world.portfolio}, .days = reportedDays});
    }));
  }
}
BENCHMARK(openReport<ReturnsViewController>)
    ->Name("ReportScreens/returns: longest hold of the window")
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(openReport<PortfoliosOverviewViewController>)
    ->Name("ReportScreens/all portfolios: longest hold of the window")
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(openReport<IncomeViewController>)
    ->Name("ReportScreens/income: longest hold of the window")
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

std::shared_ptr<WorkspaceModel> workspaceOf(const World& world) {
  auto model = std::make_shared<WorkspaceModel>();
  model->portfolioManagers = {world.manager};
  return model;
}

template <typename Screen>
void openWorkspaceReport(benchmark::State& state, const World& world) {
  const auto model = workspaceOf(world);
  for (auto _ : state) {
    const auto screen = Screen::make({});
    screen->setDocumentModel(model);
    state.SetIterationTime(longestHold(*screen, [&] { screen->setShown(true); }));
  }
}

void openTaxYear(benchmark::State& state) {
  openWorkspaceReport<TaxYearViewController>(state, reportedWorld());
}
BENCHMARK(openTaxYear)
    ->Name("ReportScreens/tax year: longest hold of the window")
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

/// The ledger behind a cache that has a close for every day of every equity.
World& cachedWorld() {
  static const auto folder = std::filesystem::temp_directory_path() /
                             ("corvane-bench-coverage-" + std::to_string(::getpid()));
  static World world = [] {
    std::filesystem::create_directories(folder);
    std::atexit([] {
      std::error_code ignored;
      std::filesystem::remove_all(folder, ignored);
    });
    const auto chain = std::make_shared<SwitchableQuoteProvider>(std::make_shared<SteadyProvider>(),
                                                                 folder / "Cache.sqlite3");
    World made(chain);
    made.record(100'000);
    const DateRange days(reportedDays.lower().startIn(made.manager->calendar),
                         reportedDays.upper().startIn(made.manager->calendar));
    std::vector<Quote> bars;
    for (Date date = days.lower() + 34200; date < days.upper(); date = date + 86400) {
      Quote bar;
      bar.fromDate = date;
      bar.toDate = date + 23400;
      bar.open = bar.close = 10;
      bars.push_back(bar);
    }
    for (const EquityPointer& equity : made.equities) {
      chain->smartQuoteProvider->cacheProvider->storeFetchResult(
          {.quotes = bars,
           .prices = PriceAdjustment::marketNominal,
           .events = std::nullopt,
           .durableDateRange = days},
          {equity, days,
           QuoteQuery::Quotes{QuoteInterval::oneDay, PriceAdjustment::marketNominal}});
    }
    return made;
  }();
  return world;
}

void openCoverage(benchmark::State& state) {
  openWorkspaceReport<CoverageViewController>(state, cachedWorld());
}
BENCHMARK(openCoverage)
    ->Name("ReportScreens/coverage: longest hold of the window")
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace report_screens_bench
}  // namespace corvane
