// How long the window stands still while the screen of a strategy brings a long run. A frame of a
// display takes 16 ms.

#include <benchmark/benchmark.h>

#include <time.h>

#include <QApplication>
#include <QTimer>
#include <algorithm>
#include <cmath>
#include <memory>

#include "core/market/price_adjuster.h"
#include "core/money/year_month_day.h"
#include "desktop/app/main_queue_pump.h"
#include "desktop/scenario/scenario_batch_tab.h"
#include "desktop/scenario/scenario_detail_tab.h"
#include "platform/async/dispatch_queue.h"
#include "qt_application.h"

namespace corvane {
namespace scenario_screen_bench {

constexpr std::size_t manyBars = 77'000;
constexpr int minutesOfADay = 390;

/// Hands the same bars out, from another thread.
class StockOfBars : public QuoteProvider {
 public:
  std::vector<Quote> bars;

  void fetchQuotes(QuoteQuery query, std::shared_ptr<PriceAdjuster> /*adjuster*/,
                   QuoteCompletion completion) override {
    DispatchQueue::global(QualityOfService::userInitiated)
        ->async([this, range = query.dateRange, completion = std::move(completion)]() mutable {
          completion(QuoteFetchResult{bars, PriceAdjustment::marketNominal, std::nullopt, range});
        });
  }
  [[nodiscard]] std::set<QuoteInterval> availableIntervals(
      const EquityPointer& /*equity*/, const DateRange& /*range*/) const override {
    return {QuoteInterval::oneMinute};
  }
};

/// Notes how much the thread of the window had to do between two looks at what the user wants. Its
/// own time is counted, so that other programs on the machine do not matter.
class PauseWatch {
 public:
  PauseWatch() {
    QObject::connect(&look_, &QTimer::timeout, [this] {
      const double now = threadMilliseconds();
      longest_ = std::max(longest_, now - last_);
      last_ = now;
    });
    reset();
    look_.start(1);
  }
  void reset() {
    longest_ = 0;
    last_ = threadMilliseconds();
  }
  [[nodiscard]] double longestMilliseconds() const { return longest_; }

 private:
  static double threadMilliseconds() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
  }

  QTimer look_;
  double last_ = 0;
  double longest_ = 0;
};

struct ShownScenario {
  ShownScenario() {
    startQt();
    equity->isAuthoritative = true;
    equity->calendar = Calendar(*TimeZone::withIdentifier("America/New_York"));
    equity->currency = Currency::usd();
    YearMonthDay day{2023, 1, 3};
    while (market->bars.size() < manyBars) {
      const Date opens = day.startIn(equity->calendar) + 34200;
      day = YearMonthDay::normalised(day.year, day.month, day.day + 1, equity->calendar);
      if (!equity->calendar.isDateInWeekend(opens)) {
        addSession(opens);
      }
    }
    const auto components = [](const YearMonthDay& of) {
      return DateComponents{{CalendarUnit::year, of.year},
                            {CalendarUnit::month, of.month},
                            {CalendarUnit::day, of.day}};
    };
    auto& settings = model->tradingScenarioSettings;
    settings.detailScenario = settings.batchScenario = InvestmentScenario{
        components({2023, 1, 3}), components(day), QuoteInterval::oneMinute, 10'000};
    settings.detailStrategy = settings.batchStrategy = InvestmentStrategy::defaultStrategy();
  }

  void addSession(Date opens) {
    for (int minute = 0; minute < minutesOfADay; ++minute) {
      const auto place = static_cast<double>(market->bars.size());
      const double close = 100 + 15 * std::sin(place / 4000) + 2 * std::sin(place / 60);
      Quote bar;
      bar.fromDate = opens + 60.0 * minute;
      bar.toDate = bar.fromDate + 60;
      bar.open = bar.close = Decimal::fromDouble(std::round(close * 100) / 100);
      bar.low = Decimal::fromDouble(std::round(close * 100 - 5) / 100);
      bar.high = Decimal::fromDouble(std::round(close * 100 + 5) / 100);
      market->bars.push_back(bar);
    }
  }

  desktop::MainQueuePump pump;
  std::shared_ptr<StockOfBars> market = std::make_shared<StockOfBars>();
  EquityPointer equity = market->equityWithId("ABC");
  std::shared_ptr<WorkspaceModel> model = std::make_shared<WorkspaceModel>();
};

template <typename Tab, typename Controller>
void watchARun(benchmark::State& state, ShownScenario& shown,
               const std::shared_ptr<Controller>& controller) {
  controller->setDocumentModel(shown.model);
  Tab tab(controller);
  tab.resize(1440, 800);
  tab.show();
  controller->setCurrentEquity(shown.equity);
  controller->setShown(true);
  const auto settle = [&] {
    do {
      QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    } while (controller->isBusy());
    for (int i = 0; i < 20; ++i) {
      QApplication::processEvents();
    }
  };
  settle();
  PauseWatch watch;
  double longest = 0;
  for (auto _ : state) {
    watch.reset();
    controller->runAction();
    settle();
    longest = std::max(longest, watch.longestMilliseconds());
  }
  state.counters["longest pause in ms"] = longest;
  state.counters["rows"] = static_cast<double>(controller->scenarioDataSource().numberOfRows());
}

/// With spreads of as many tenths of a percent as the argument says; the smaller, the more rows.
/// The stop loss is active, so that at 0 there is a row for nearly every bar.
void runOnce(benchmark::State& state) {
  ShownScenario shown;
  auto& strategy = *shown.model->tradingScenarioSettings.detailStrategy;
  strategy.targetBuySpread = strategy.targetSellSpread = strategy.stopLossBuySpread =
      strategy.stopLossSellSpread =
          Decimal::fromParts(Sign::plus, -3, static_cast<long>(state.range(0)));
  strategy.isStopLossActive = true;
  watchARun<desktop::ScenarioDetailTab>(state, shown,
                                        ScenarioDetailViewController::make(ScreenSurroundings{}));
}
BENCHMARK(runOnce)
    ->Name("Scenario screens/a run of 77,000 bars in a window")
    ->Arg(50)
    ->Arg(2)
    ->Arg(0)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

void runABatchInAWindow(benchmark::State& state) {
  ShownScenario shown;
  watchARun<desktop::ScenarioBatchTab>(state, shown,
                                       ScenarioBatchViewController::make(ScreenSurroundings{}));
}
BENCHMARK(runABatchInAWindow)
    ->Name("Scenario screens/a batch of 198 days in a window")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace scenario_screen_bench
}  // namespace corvane
