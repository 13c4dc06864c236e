// A simulated trader over a year of one-minute quotes: 252 sessions of 390 minutes; and batches
// over 60 sessions of two-minute bars and 250 of hourly ones, on all cores and on one.

#include <benchmark/benchmark.h>

#include <memory>
#include <random>

#include "core/market/quote_provider.h"
#include "scenario/scenario_batch.h"

namespace corvane {
namespace scenario_bench {

/// Sessions of bars of `minutes`, of 390 minutes each.
struct History {
  History(std::size_t sessions, int minutes) {
    equity->calendar = Calendar(*TimeZone::withIdentifier("America/New_York"));
    equity->currency = Currency::usd();
    std::mt19937_64 random(1);
    double price = 100;
    for (int day = 0; quotes.size() < sessions * static_cast<std::size_t>(barsOf(minutes)); ++day) {
      const Date opens = *equity->calendar.date({{CalendarUnit::year, 2023},
                                                 {CalendarUnit::day, 1 + day},
                                                 {CalendarUnit::hour, 9},
                                                 {CalendarUnit::minute, 30}});
      if (equity->calendar.isDateInWeekend(opens)) {
        continue;
      }
      for (int minute = 0; minute < 390; minute += minutes) {
        // Steps of up to 0.1%, about 1.2% a day. Prices have four places, as they come from a
        // source.
        const auto step = static_cast<double>(random() % 2001) - 1000;
        price *= 1 + step / 1'000'000;
        const auto cents = static_cast<long>(price * 10'000);
        Quote quote;
        quote.fromDate = opens + 60.0 * minute;
        quote.toDate = quote.fromDate + 60.0 * minutes;
        quote.close = Decimal::fromParts(Sign::plus, -4, cents);
        quote.low = Decimal::fromParts(Sign::plus, -4, cents - 20);
        quote.high = Decimal::fromParts(Sign::plus, -4, cents + 20);
        quotes.push_back(quote);
      }
    }
  }

  static int barsOf(int minutes) { return (390 + minutes - 1) / minutes; }

  std::shared_ptr<QuoteProvider> provider = std::make_shared<QuoteProvider>();
  EquityPointer equity = provider->equityWithId("ABC");
  std::vector<Quote> quotes;
};

const History& year() {
  static const History made(252, 1);
  return made;
}

void numberTheDays(benchmark::State& state) {
  const History& all = year();
  for (auto _ : state) {
    benchmark::DoNotOptimize(tradingDayNumbers(all.quotes, *all.equity));
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(all.quotes.size()));
}
BENCHMARK(numberTheDays)->Name("Scenario/number the days")->Unit(benchmark::kMillisecond);

/// With spreads of as many tenths of a percent as the argument says; the smaller, the more trades.
/// The stop loss is active, so that at 0 the trader finds something to do on nearly every quote.
void runAYear(benchmark::State& state) {
  const History& all = year();
  const ScenarioAnalyzer analyzer(all.equity, all.quotes,
                                  tradingDayNumbers(all.quotes, *all.equity));
  InvestmentStrategy strategy = InvestmentStrategy::defaultStrategy();
  strategy.isStopLossActive = true;
  for (Decimal* spread : {&strategy.targetBuySpread, &strategy.targetSellSpread,
                          &strategy.stopLossBuySpread, &strategy.stopLossSellSpread}) {
    *spread = Decimal::fromParts(Sign::plus, -3, static_cast<long>(state.range(0)));
  }
  int trades = 0;
  for (auto _ : state) {
    const auto analysis = analyzer.analyze(std::nullopt, strategy, 10'000);
    trades = analysis.totalTradesMade;
  }
  state.counters["trades"] = trades;
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(all.quotes.size()));
}
BENCHMARK(runAYear)
    ->Name("Scenario/run a year of minutes")
    ->Arg(50)
    ->Arg(5)
    ->Arg(0)
    ->Unit(benchmark::kMillisecond);

using MakeHistory = const History& (*)();

const History& sixtyDaysOfTwoMinutes() {
  static const History made(60, 2);
  return made;
}
const History& yearOfHours() {
  static const History made(250, 60);
  return made;
}

/// As the screen runs it, on all cores.
void runABatch(benchmark::State& state, MakeHistory history) {
  const History& all = history();
  ScenarioBatch batch;
  for (auto _ : state) {
    bool hasEnded = false;
    batch.begin({all.equity, all.quotes, BatchMethod::accumulatingFromStart,
                 InvestmentStrategy::defaultStrategy(), 10'000},
                nullptr, [&](const ErrorPointer&) { hasEnded = true; });
    MainLoop::runUntil([&] { return hasEnded; }, std::chrono::minutes(1));
  }
  state.counters["periods"] = static_cast<double>(batch.results().size());
}

/// The same work, period by period, on one thread.
void runPeriodsOnOneCore(benchmark::State& state, MakeHistory history) {
  const History& all = history();
  const auto days = tradingDayNumbers(all.quotes, *all.equity);
  const auto ranges = batchRanges(BatchMethod::accumulatingFromStart, days);
  const ScenarioAnalyzer analyzer(all.equity, all.quotes, days);
  for (auto _ : state) {
    std::vector<BatchResultPointer> results;
    for (const auto& range : ranges) {
      results.push_back(
          batchResult(analyzer, range, InvestmentStrategy::defaultStrategy(), 10'000));
    }
    benchmark::DoNotOptimize(results);
  }
  state.counters["periods"] = static_cast<double>(ranges.size());
}

BENCHMARK_CAPTURE(runABatch, "", &sixtyDaysOfTwoMinutes)
    ->Name("Scenario/batch of 60 days of two minutes, all cores")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(runPeriodsOnOneCore, "", &sixtyDaysOfTwoMinutes)
    ->Name("Scenario/batch of 60 days of two minutes, one core")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(runABatch, "", &yearOfHours)
    ->Name("Scenario/batch of 250 days of hours, all cores")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(runPeriodsOnOneCore, "", &yearOfHours)
    ->Name("Scenario/batch of 250 days of hours, one core")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace scenario_bench
}  // namespace corvane
