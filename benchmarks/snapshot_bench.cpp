// The day-by-day series of all time: 50 equities in 3 currencies, 20 years, 10,000 rows.

#include <benchmark/benchmark.h>

#include <map>

#include "core/market/price_adjuster.h"
#include "ledger/manager/portfolio_manager.h"
#include "ledger/reports/daily_snapshots.h"
#include "platform/async/dispatch_queue.h"

namespace corvane {
namespace snapshot_bench {

constexpr YearMonthDay firstDay{2004, 1, 1};
constexpr YearMonthDay lastDay{2023, 12, 31};

/// Answers from memory, on a background queue.
class MemoryProvider : public QuoteProvider {
 public:
  std::map<std::string, std::vector<Quote>, std::less<>> bars;

  void fetchQuotes(QuoteQuery query, std::shared_ptr<PriceAdjuster> /*adjuster*/,
                   QuoteCompletion completion) override {
    DispatchQueue::global()->async(
        [this, id = query.equity->id(), completion = std::move(completion)]() mutable {
          QuoteFetchResult result{bars.find(id)->second, PriceAdjustment::marketNominal,
                                  std::nullopt, DateRange(Date(), Date())};
          completion(std::move(result));
        });
  }
};

struct World {
  World() {
    manager->calendar = Calendar(*TimeZone::withIdentifier("America/Toronto"));
    portfolio = manager->createPortfolio(Currency::cad());
    for (int i = 0; i < 50; ++i) {
      equities.push_back(provider->equityWithId("EQUITY" + std::to_string(i) + ".TO"));
      equities.back()->currency = currencies[i % 3];
      quote(equities.back());
    }
    for (const Currency& currency : {currencies[1], currencies[2]}) {
      rates.push_back(provider->exchangeRateEquity(currency, Currency::cad()));
      quote(rates.back());
    }
    record(10'000);
  }

  /// A bar for each of the weekdays.
  void quote(const EquityPointer& equity) {
    auto& bars = provider->bars[equity->id()];
    const Date end = lastDay.startIn(manager->calendar) + 86400;
    for (Date date = firstDay.startIn(manager->calendar) + 34200; date < end; date = date + 86400) {
      if (!manager->calendar.isDateInWeekend(date)) {
        Quote bar;
        bar.fromDate = date;
        bar.toDate = date + 23400;
        bar.open = Decimal::fromParts(Sign::plus, -2, 1000 + bars.size());
        bar.close = Decimal::fromParts(Sign::plus, -2, 1001 + bars.size());
        bars.push_back(bar);
      }
    }
  }

  /// Purchases of one equity after the other, and every third time a sale.
  void record(int count) {
    const Date start = firstDay.startIn(manager->calendar) + 43200;
    const double step = 20 * 365.0 * 86400 / count;
    std::vector<BasicTransaction> basics;
    for (int i = 0; i < count; ++i) {
      const Date date = start + step * i;
      const EquityPointer& equity = equities[static_cast<std::size_t>(i) % 50];
      const int sign = i / 50 % 3 == 2 ? -1 : 1;
      basics.push_back(
          {BasicTransaction::Trade{equity, {equity->currency, sign * 100}, sign * 120, sign * 10},
           date, date, std::nullopt});
      if (i < 3) {
        basics.back().kind = BasicTransaction::Transfer{{currencies[i], 10'000'000}};
      }
    }
    manager->recordTransactions(std::move(basics), portfolio, nullptr);
  }

  const Currency currencies[3] = {Currency::cad(), Currency::usd(),
                                  Currency::byCode().find("EUR")->second};
  std::shared_ptr<MemoryProvider> provider = std::make_shared<MemoryProvider>();
  std::shared_ptr<PortfolioManager> manager = std::make_shared<PortfolioManager>(provider);
  PortfolioPointer portfolio;
  std::vector<EquityPointer> equities;
  std::vector<EquityPointer> rates;
};

World& world() {
  static World made;
  return made;
}

void countSnapshots(benchmark::State& state, const PortfolioSnapshotGroup& group) {
  state.counters["days"] = static_cast<double>(group.sortedSnapshots.size());
  state.counters["equities"] = static_cast<double>(group.equitiesHeldOrTraded.size());
}

void mergeAllTime(benchmark::State& state) {
  const auto& [currencies, provider, manager, portfolio, equities, rates] = world();
  const YearMonthDay seedDay{firstDay.year - 1, 12, 31};
  for (auto _ : state) {
    state.PauseTiming();
    DailySnapshots snapshots(*portfolio, manager->calendar, seedDay, lastDay, {},
                             portfolio->transactions());
    for (const auto& equity : snapshots.equities()) {
      snapshots.addPrices(equity, provider->bars[equity->id()], manager->calendar);
    }
    for (const auto& currency : snapshots.foreignCurrencies()) {
      const auto rate = provider->exchangeRateEquity(currency, Currency::cad());
      snapshots.addRates(currency, provider->bars[rate->id()], manager->calendar);
    }
    state.ResumeTiming();
    PortfolioSnapshotGroup group = snapshots.merge();
    state.PauseTiming();
    countSnapshots(state, group);
    group = {};
    state.ResumeTiming();
  }
}
BENCHMARK(mergeAllTime)->Name("Snapshots/merge all time")->Unit(benchmark::kMillisecond);

void fetchAllTime(benchmark::State& state) {
  World& all = world();
  for (auto _ : state) {
    std::optional<PortfolioManager::FetchDailySnapshotsResult> fetched;
    all.manager->fetchDailySnapshots(all.portfolio, firstDay, lastDay, [&](auto result) {
      fetched = std::move(result.value());
      MainLoop::stop();
    });
    MainLoop::run();
    state.PauseTiming();
    countSnapshots(state, fetched->snapshotGroup);
    fetched.reset();
    state.ResumeTiming();
  }
}
BENCHMARK(fetchAllTime)
    ->Name("Snapshots/fetch all time from memory")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace snapshot_bench
}  // namespace corvane
