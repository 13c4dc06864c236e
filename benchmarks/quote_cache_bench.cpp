// The quote cache: ten years of daily bars written and read, each next to the bare calls of the
// database engine on the same rows, and a query planned over many ranges.

#include <benchmark/benchmark.h>
#include <sqlite3.h>
#include <stdlib.h>

#include <filesystem>
#include <memory>
#include <random>

#include "marketdata/cache/cache_quote_provider.h"

namespace corvane {
namespace quote_cache_bench {

constexpr int barCount = 2520;
constexpr double day = 86400;
const DateRange tenYears(Date::since1970(0), Date::since1970(barCount* day));

/// A cache in a folder of its own that knows one equity.
struct CacheInFolder {
  CacheInFolder() {
    std::string pattern = std::filesystem::temp_directory_path() / "corvane-bench-XXXXXX";
    folder = mkdtemp(pattern.data());
    cache = std::make_shared<CacheQuoteProvider>(folder / "cache");
    equity = cache->equityWithId("ABC");
    cache->storeEquity(equity);
  }
  CacheInFolder(const CacheInFolder&) = delete;
  CacheInFolder& operator=(const CacheInFolder&) = delete;
  ~CacheInFolder() {
    cache.reset();
    std::filesystem::remove_all(folder);
  }

  [[nodiscard]] QuoteQuery query(const DateRange& range, PriceAdjustment prices) const {
    return {equity, range, QuoteQuery::Quotes{QuoteInterval::oneDay, prices}};
  }

  std::filesystem::path folder;
  std::shared_ptr<CacheQuoteProvider> cache;
  EquityPointer equity;
};

/// Bars whose prices have the odd digits that a source delivers.
QuoteFetchResult tenYearsOfBars() {
  std::mt19937_64 random(1);
  std::uniform_real_distribution price(1.0, 500.0);
  std::vector<Quote> bars;
  for (int i = 0; i < barCount; ++i) {
    Quote bar;
    bar.fromDate = Date::since1970(i * day);
    bar.toDate = bar.fromDate + day;
    bar.open = Decimal::fromDouble(price(random));
    bar.close = Decimal::fromDouble(price(random));
    bar.low = Decimal::fromDouble(price(random));
    bar.high = Decimal::fromDouble(price(random));
    bar.volume = static_cast<std::int64_t>(random() >> 30);
    bars.push_back(bar);
  }
  return {.quotes = std::move(bars),
          .prices = PriceAdjustment::adjustedForSplits,
          .events = std::vector<EquityEvent>(),
          .durableDateRange = tenYears};
}

void writeBars(benchmark::State& state) {
  const CacheInFolder world;
  const QuoteFetchResult result = tenYearsOfBars();
  for (auto _ : state) {
    state.PauseTiming();
    world.cache->empty();
    state.ResumeTiming();
    world.cache->storeFetchResult(result, world.query(tenYears, *result.prices));
  }
  state.SetItemsProcessed(state.iterations() * barCount);
}
BENCHMARK(writeBars)->Name("QuoteCache/write 10 years of bars")->Unit(benchmark::kMillisecond);

void replaceBars(benchmark::State& state) {
  const CacheInFolder world;
  const QuoteFetchResult result = tenYearsOfBars();
  for (auto _ : state) {
    world.cache->storeFetchResult(result, world.query(tenYears, *result.prices));
  }
  state.SetItemsProcessed(state.iterations() * barCount);
}
BENCHMARK(replaceBars)->Name("QuoteCache/write the same bars again")->Unit(benchmark::kMillisecond);

void readBars(benchmark::State& state) {
  const CacheInFolder world;
  const QuoteFetchResult result = tenYearsOfBars();
  const QuoteQuery query = world.query(tenYears, *result.prices);
  world.cache->storeFetchResult(result, query);
  for (auto _ : state) {
    benchmark::DoNotOptimize(world.cache->readQuery(query));
  }
  state.SetItemsProcessed(state.iterations() * barCount);
}
BENCHMARK(readBars)->Name("QuoteCache/read 10 years of bars")->Unit(benchmark::kMillisecond);

/// The engine's own interface on the file of `world`.
sqlite3* bareHandle(const CacheInFolder& world) {
  sqlite3* handle = nullptr;
  sqlite3_open((world.folder / "cache").c_str(), &handle);
  return handle;
}

void bareInserts(benchmark::State& state) {
  const CacheInFolder world;
  sqlite3* handle = bareHandle(world);
  sqlite3_stmt* insert = nullptr;
  sqlite3_prepare_v2(handle, "INSERT INTO quotes VALUES (NULL, 1, ?, ?, 31, 2, ?, ?, ?, ?, ?)", -1,
                     &insert, nullptr);
  for (auto _ : state) {
    state.PauseTiming();
    sqlite3_exec(handle, "DELETE FROM quotes", nullptr, nullptr, nullptr);
    state.ResumeTiming();
    sqlite3_exec(handle, "BEGIN", nullptr, nullptr, nullptr);
    for (int i = 0; i < barCount; ++i) {
      sqlite3_bind_double(insert, 1, i * day);
      sqlite3_bind_double(insert, 2, (i + 1) * day);
      for (int column = 3; column <= 6; ++column) {
        sqlite3_bind_double(insert, column, 100.0 + i * 0.37);
      }
      sqlite3_bind_int64(insert, 7, i);
      sqlite3_step(insert);
      sqlite3_reset(insert);
    }
    sqlite3_exec(handle, "COMMIT", nullptr, nullptr, nullptr);
  }
  sqlite3_finalize(insert);
  sqlite3_close(handle);
  state.SetItemsProcessed(state.iterations() * barCount);
}
BENCHMARK(bareInserts)->Name("QuoteCache/bare inserts")->Unit(benchmark::kMillisecond);

void bareSelect(benchmark::State& state) {
  const CacheInFolder world;
  const QuoteFetchResult result = tenYearsOfBars();
  world.cache->storeFetchResult(result, world.query(tenYears, *result.prices));
  sqlite3* handle = bareHandle(world);
  sqlite3_stmt* select = nullptr;
  sqlite3_prepare_v2(handle,
                     "SELECT * FROM quotes WHERE equityId = 1 AND intervalType = 31 AND "
                     "fromDate >= 0 AND fromDate < 1e12 AND priceType = 2 ORDER BY fromDate",
                     -1, &select, nullptr);
  for (auto _ : state) {
    double sum = 0;
    while (sqlite3_step(select) == SQLITE_ROW) {
      for (int column = 2; column < 11; ++column) {
        sum += sqlite3_column_double(select, column);
      }
    }
    benchmark::DoNotOptimize(sum);
    sqlite3_reset(select);
  }
  sqlite3_finalize(select);
  sqlite3_close(handle);
  state.SetItemsProcessed(state.iterations() * barCount);
}
BENCHMARK(bareSelect)->Name("QuoteCache/bare select")->Unit(benchmark::kMillisecond);

void planQuery(benchmark::State& state) {
  constexpr int rowCount = 1000;
  const CacheInFolder world;
  for (int i = 0; i < rowCount; ++i) {
    // Every second one on the basis sought, the others longer and across their holes.
    const auto prices =
        i % 2 == 0 ? PriceAdjustment::adjustedForSplits : PriceAdjustment::marketNominal;
    const DateRange range(Date::since1970(i * 10), Date::since1970(i * 10 + (i % 2 == 0 ? 8 : 15)));
    world.cache->storeFetchResult({.quotes = std::vector<Quote>(),
                                   .prices = prices,
                                   .events = std::nullopt,
                                   .durableDateRange = range},
                                  world.query(range, prices));
  }
  const QuoteQuery query =
      world.query({Date::since1970(0), Date::since1970(1e6)}, PriceAdjustment::adjustedForSplits);
  for (auto _ : state) {
    benchmark::DoNotOptimize(world.cache->coveragePlan(query));
  }
  state.SetItemsProcessed(state.iterations() * rowCount);
}
BENCHMARK(planQuery)
    ->Name("QuoteCache/plan a query over 1,000 ranges")
    ->Unit(benchmark::kMillisecond);

}  // namespace quote_cache_bench
}  // namespace corvane
