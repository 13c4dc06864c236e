// A simulated trader over a year of one-minute quotes: 252 sessions of 390 minutes.

#include <benchmark/benchmark.h>

#include <random>

#include "core/market/quote_provider.h"
#include "scenario/scenario_analyzer.h"

namespace corvane {
namespace {

struct Year {
  Year() {
    equity->calendar = Calendar(*TimeZone::withIdentifier("America/New_York"));
    equity->currency = Currency::usd();
    std::mt19937_64 random(1);
    double price = 100;
    for (int day = 0; quotes.size() < 252 * 390; ++day) {
      const Date opens = *equity->calendar.date({{CalendarUnit::year, 2023},
                                                 {CalendarUnit::day, 1 + day},
                                                 {CalendarUnit::hour, 9},
                                                 {CalendarUnit::minute, 30}});
      if (equity->calendar.isDateInWeekend(opens)) {
        continue;
      }
      for (int minute = 0; minute < 390; ++minute) {
        // Steps of up to 0.1%, about 1.2% a day. Prices have four places, as they come from a
        // source.
        const auto step = static_cast<double>(random() % 2001) - 1000;
        price *= 1 + step / 1'000'000;
        const auto cents = static_cast<long>(price * 10'000);
        Quote quote;
        quote.fromDate = opens + 60.0 * minute;
        quote.toDate = quote.fromDate + 60;
        quote.close = Decimal::fromParts(Sign::plus, -4, cents);
        quote.low = Decimal::fromParts(Sign::plus, -4, cents - 20);
        quote.high = Decimal::fromParts(Sign::plus, -4, cents + 20);
        quotes.push_back(quote);
      }
    }
  }

  std::shared_ptr<QuoteProvider> provider = std::make_shared<QuoteProvider>();
  EquityPointer equity = provider->equityWithId("ABC");
  std::vector<Quote> quotes;
};

const Year& year() {
  static const Year made;
  return made;
}

void numberTheDays(benchmark::State& state) {
  const Year& all = year();
  for (auto _ : state) {
    benchmark::DoNotOptimize(tradingDayNumbers(all.quotes, *all.equity));
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(all.quotes.size()));
}
BENCHMARK(numberTheDays)->Name("Scenario/number the days")->Unit(benchmark::kMillisecond);

/// With spreads of as many tenths of a percent as the argument says; the smaller, the more trades.
/// The stop loss is active, so that at 0 the trader finds something to do on nearly every quote.
void runAYear(benchmark::State& state) {
  const Year& all = year();
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

}  // namespace
}  // namespace corvane
