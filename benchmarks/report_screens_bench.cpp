// For how long a report that opens keeps the window from doing anything else: 100,000 rows, 20
// years, 50 equities, prices from memory.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <memory>

#include "core/market/price_adjuster.h"
#include "ledger_world.h"
#include "presentation/reports/income_view_controller.h"
#include "presentation/reports/returns_view_controller.h"

namespace corvane {
namespace {

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
BENCHMARK(openReport<IncomeViewController>)
    ->Name("ReportScreens/income: longest hold of the window")
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace corvane
