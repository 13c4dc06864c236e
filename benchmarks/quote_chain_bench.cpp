// Prices of 20 years on their way through the chain of providers: from a warm cache, and converted.

#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "core/market/price_adjuster.h"
#include "core/market/price_conversion.h"
#include "ledger_world.h"
#include "marketdata/cache/cache_quote_provider.h"
#include "marketdata/chain/switchable_quote_provider.h"
#include "platform/async/dispatch_queue.h"

namespace corvane {
namespace quote_chain_bench {

constexpr YearMonthDay firstDay{2004, 1, 1};
constexpr YearMonthDay lastDay{2023, 12, 31};

/// Bars of `count` weekdays from `start` on, each with all its figures.
std::vector<Quote> dailyBars(Date start, int count) {
  std::vector<Quote> bars;
  for (int day = 0; static_cast<int>(bars.size()) < count; ++day) {
    if (day % 7 < 5) {
      const auto cents = static_cast<unsigned long>(10'000 + 7 * bars.size() % 9'000);
      Quote bar;
      bar.fromDate = start + day * 86400.0;
      bar.toDate = bar.fromDate + 23400;
      bar.open = Decimal::fromParts(Sign::plus, -2, cents);
      bar.high = Decimal::fromParts(Sign::plus, -2, cents + 75);
      bar.low = Decimal::fromParts(Sign::plus, -2, cents - 50);
      bar.close = Decimal::fromParts(Sign::plus, -2, cents + 31);
      bar.volume = 1'000'000 + day;
      bars.push_back(bar);
    }
  }
  return bars;
}

/// `count` events through `years` from `start` on: dividends, and every thirtieth time a split.
std::vector<EquityEvent> events(Date start, double years, int count) {
  std::vector<EquityEvent> list;
  for (int i = 0; i < count; ++i) {
    EquityEvent event{
        start + years * 365 * 86400 * i / count, {}, PriceAdjustment::adjustedForSplits};
    if (i % 30 == 29) {
      event.kind = EquityEvent::Split{{3, 2}};
    } else {
      event.kind = EquityEvent::Dividend{Decimal::fromParts(Sign::plus, -4, 3250 + i)};
    }
    list.push_back(event);
  }
  return list;
}

/// A source that has everything and calls it final.
class MemorySource : public QuoteProvider {
 public:
  std::vector<Quote> bars;
  std::vector<EquityEvent> history;

  void fetchQuotes(QuoteQuery query, std::shared_ptr<PriceAdjuster> adjuster,
                   QuoteCompletion completion) override {
    QuoteFetchResult result{std::nullopt, std::nullopt, history, query.dateRange};
    if (std::holds_alternative<QuoteQuery::Quotes>(query.seeking)) {
      result.quotes = bars;
      result.prices = PriceAdjustment::adjustedForSplits;
    }
    adjuster->adjust(std::move(result), std::move(query), std::move(completion));
  }
};

/// A portfolio of 10,000 rows whose prices are in a cache on disk.
struct ChainWorld {
  ChainWorld() {
    std::filesystem::remove_all(folder);
    std::filesystem::create_directory(folder);
    provider = std::make_shared<SwitchableQuoteProvider>(source, folder / "Cache.sqlite3");
    world.emplace(provider);
    world->record(10'000);
    const Calendar& calendar = world->manager->calendar;
    range.emplace(firstDay.startIn(calendar),
                  YearMonthDay{lastDay.year + 1, 1, 1}.startIn(calendar));
    source->bars = dailyBars(range->lower() + 34200, 20 * 261);
    std::erase_if(source->bars, [&](const Quote& bar) { return !range->contains(bar.toDate); });
    source->history = events(range->lower(), 20, 120);
    for (const EquityPointer& equity : world->equities) {
      equity->calendar = calendar;
    }
    fetchEquities();
    fetchAllTime();
  }
  ~ChainWorld() { std::filesystem::remove_all(folder); }

  /// The daily bars of all equities; how many there were.
  std::size_t fetchEquities() {
    std::size_t bars = 0;
    std::size_t missing = world->equities.size();
    for (const EquityPointer& equity : world->equities) {
      provider->fetchQuotes(
          {equity, *range,
           QuoteQuery::Quotes{QuoteInterval::oneDay, PriceAdjustment::marketNominal}},
          std::make_shared<PriceAdjuster>(provider), [&](Result<QuoteFetchResult> answer) {
            DispatchQueue::main()->async([&, answer = std::move(answer)] {
              bars += answer.value().quotes->size();
              if (--missing == 0) {
                MainLoop::stop();
              }
            });
          });
    }
    MainLoop::run();
    return bars;
  }

  PortfolioManager::FetchDailySnapshotsResult fetchAllTime() {
    std::optional<PortfolioManager::FetchDailySnapshotsResult> fetched;
    world->manager->fetchDailySnapshots(world->portfolio, firstDay, lastDay, [&](auto result) {
      fetched = std::move(result.value());
      MainLoop::stop();
    });
    MainLoop::run();
    return *std::move(fetched);
  }

  const std::filesystem::path folder =
      std::filesystem::temp_directory_path() / "corvane-quote-chain-bench";
  std::shared_ptr<MemorySource> source = std::make_shared<MemorySource>();
  std::shared_ptr<SwitchableQuoteProvider> provider;
  std::optional<World> world;
  std::optional<DateRange> range;
};

ChainWorld& chainWorld() {
  static ChainWorld made;
  return made;
}

void convertBars(benchmark::State& state) {
  const Date start = Date::since1970(0);
  const std::vector<Quote> bars = dailyBars(start, 7'500);
  const std::vector<EquityEvent> history = events(start, 28, 120);
  const auto from = static_cast<PriceAdjustment>(state.range(0));
  const auto to = static_cast<PriceAdjustment>(state.range(1));
  state.SetLabel(std::string(caseName(from)) + " to " + std::string(caseName(to)));
  for (auto _ : state) {
    state.PauseTiming();
    QuoteFetchResult result{bars, from, std::nullopt, DateRange(start, start)};
    state.ResumeTiming();
    result = converted(std::move(result), to, history);
    benchmark::DoNotOptimize(result);
    state.PauseTiming();
    result = {{}, {}, {}, DateRange(start, start)};
    state.ResumeTiming();
  }
}
BENCHMARK(convertBars)
    ->Name("Quote chain/convert 7,500 bars")
    ->Args({static_cast<int>(PriceAdjustment::adjustedForSplits),
            static_cast<int>(PriceAdjustment::marketNominal)})
    ->Args({static_cast<int>(PriceAdjustment::marketNominal),
            static_cast<int>(PriceAdjustment::adjustedForSplitsAndDividends)})
    ->Unit(benchmark::kMillisecond);

/// The floor below the next one: the same rows, read and thrown away.
void stepThroughRows(benchmark::State& state) {
  ChainWorld& all = chainWorld();
  sqlite3* database = nullptr;
  sqlite3_open_v2((all.folder / "Cache.sqlite3").c_str(), &database, SQLITE_OPEN_READONLY, nullptr);
  sqlite3_stmt* statement = nullptr;
  sqlite3_prepare_v2(database,
                     "SELECT * FROM quotes WHERE equityId <= 50 AND intervalType = 31 "
                     "ORDER BY equityId, fromDate",
                     -1, &statement, nullptr);
  for (auto _ : state) {
    double sum = 0;
    while (sqlite3_step(statement) == SQLITE_ROW) {
      for (int column = 0; column < sqlite3_column_count(statement); ++column) {
        sum += sqlite3_column_double(statement, column);
      }
    }
    benchmark::DoNotOptimize(sum);
    sqlite3_reset(statement);
  }
  sqlite3_finalize(statement);
  sqlite3_close(database);
}
BENCHMARK(stepThroughRows)
    ->Name("Quote chain/floor: step through the rows of 50 equities")
    ->Unit(benchmark::kMillisecond);

void fetchEquities(benchmark::State& state) {
  ChainWorld& all = chainWorld();
  for (auto _ : state) {
    state.counters["bars"] = static_cast<double>(all.fetchEquities());
  }
}
BENCHMARK(fetchEquities)
    ->Name("Quote chain/50 equities of 20 years from the warm cache")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

void fetchAllTime(benchmark::State& state) {
  ChainWorld& all = chainWorld();
  for (auto _ : state) {
    auto fetched = all.fetchAllTime();
    state.PauseTiming();
    state.counters["days"] = static_cast<double>(fetched.snapshotGroup.sortedSnapshots.size());
    state.counters["errors"] = static_cast<double>(fetched.fetchErrorsByEquity.size() +
                                                   fetched.fetchErrorsByCurrency.size());
    fetched = {};
    state.ResumeTiming();
  }
}
BENCHMARK(fetchAllTime)
    ->Name("Quote chain/all time of a portfolio from the warm cache")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace quote_chain_bench
}  // namespace corvane
