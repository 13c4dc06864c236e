// Reports of the console program from the start of the process to its end: a workspace of 100,000
// rows and 20 years, whose prices are in a warm cache.

#include <benchmark/benchmark.h>
#include <stdlib.h>
#include <sys/wait.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "core/market/price_adjuster.h"
#include "ledger_world.h"
#include "marketdata/cache/cache_quote_provider.h"
#include "marketdata/chain/switchable_quote_provider.h"
#include "platform/async/dispatch_queue.h"
#include "reports/series/market_history.h"
#include "storage/workspace/workspace_document.h"

namespace corvane {
namespace console_reports_bench {

constexpr YearMonthDay firstDay{2004, 1, 1};
constexpr YearMonthDay lastDay{2023, 12, 31};
constexpr int rowsOfWorkspace = 100'000;

/// A source under the service's names that has a bar for each weekday and calls it final.
class ServiceInMemory : public QuoteProvider {
 public:
  [[nodiscard]] std::string providerName() const override { return "YahooFinance"; }
  [[nodiscard]] EquityPointer exchangeRateEquity(const Currency& from,
                                                 const Currency& to) override {
    EquityPointer pair = equityWithId(std::string(from.code) + std::string(to.code) + "=X");
    pair->currency = to;
    return pair;
  }
  void fetchQuotes(QuoteQuery query, std::shared_ptr<PriceAdjuster> adjuster,
                   QuoteCompletion completion) override {
    QuoteFetchResult result{std::nullopt, std::nullopt, std::vector<EquityEvent>(),
                            query.dateRange};
    if (std::holds_alternative<QuoteQuery::Quotes>(query.seeking)) {
      result.quotes = bars(query.dateRange);
      result.prices = PriceAdjustment::adjustedForSplits;
    }
    adjuster->adjust(std::move(result), std::move(query), std::move(completion));
  }

 private:
  static std::vector<Quote> bars(const DateRange& range) {
    constexpr double day = 86400;
    std::vector<Quote> made;
    for (Date start = range.lower() + 34200; start + 23400 < range.upper(); start = start + day) {
      const auto cents = static_cast<unsigned long>(10'000 + 7 * made.size() % 9'000);
      Quote bar;
      bar.fromDate = start;
      bar.toDate = start + 23400;
      bar.open = bar.low = bar.high = bar.close = Decimal::fromParts(Sign::plus, -2, cents);
      bar.volume = 1'000'000;
      made.push_back(bar);
    }
    return made;
  }
};

/// A folder with the workspace, and with the cache that the program finds.
class ConsoleWorld {
 public:
  ConsoleWorld() {
    std::string pattern = std::filesystem::temp_directory_path() / "corvane-console-XXXXXX";
    folder_ = mkdtemp(pattern.data());
    std::filesystem::create_directories(folder_ / "cache" / "corvane");
    const auto source = std::make_shared<ServiceInMemory>();
    const std::filesystem::path cache = cachePath();
    const auto provider = std::make_shared<SwitchableQuoteProvider>(source, cache);
    std::vector<EquityPointer> equities = saveWorkspace(provider);
    fetchAll(provider, equities);
    CacheQuoteProvider file(cache);
    for (const EquityPointer& equity : equities) {
      equity->recentPrice = 100;
      file.storeEquity(equity);
    }
  }
  ConsoleWorld(const ConsoleWorld&) = delete;
  ConsoleWorld& operator=(const ConsoleWorld&) = delete;
  ~ConsoleWorld() { std::filesystem::remove_all(folder_); }

  /// Whether the command has ended well.
  [[nodiscard]] bool run(const std::string& command, const std::string& options) const {
    const std::string in = folder_.string();
    const std::string line = "HOME='" + in + "' TMPDIR='" + in + "' XDG_CONFIG_HOME='" + in +
                             "/config'" + " XDG_CACHE_HOME='" + in +
                             "/cache' TZ=America/Toronto LC_ALL=C.UTF-8 '" + CORVANE_CLI "' " +
                             command + " '" + in + "/World' " + options + " >/dev/null";
    const int status = std::system(line.c_str());
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
  }

 private:
  [[nodiscard]] std::filesystem::path cachePath() const {
    return folder_ / "cache" / "corvane" / "YahooQuoteProviderCache.sqlite3";
  }

  std::vector<EquityPointer> saveWorkspace(const std::shared_ptr<QuoteProvider>& provider) {
    WorkspaceSurroundings surroundings{
        .sharedQuoteProvider = [provider] { return provider; },
        .appBundleVersion = "1",
        .appMarketingVersion = "1",
        .presentTimeZone = [] { return *TimeZone::withIdentifier("America/Toronto"); }};
    const auto document = std::make_shared<WorkspaceDocument>(surroundings);
    document->makeWindowControllers(nullptr);
    World world(provider, document->model()->portfolioManagers.front());
    world.portfolio->name = "World";
    world.manager->portfolioPropertiesDidChange(world.portfolio);
    world.record(rowsOfWorkspace);
    document->save(folder_ / "World.corvane");
    std::vector<EquityPointer> equities = world.equities;
    for (const EquityPointer& equity : equities) {
      equity->calendar = world.manager->calendar;
    }
    MarketNeeds needs;
    addMarketNeeds(needs, *world.portfolio, firstDay, lastDay, world.manager->calendar);
    for (const CurrencyPair& pair : needs.pairs) {
      equities.push_back(provider->exchangeRateEquity(pair.from, pair.to));
    }
    return equities;
  }

  static void fetchAll(const std::shared_ptr<SwitchableQuoteProvider>& provider,
                       const std::vector<EquityPointer>& equities) {
    std::size_t missing = equities.size();
    for (const EquityPointer& equity : equities) {
      const DateRange dates(YearMonthDay{2003, 12, 1}.startIn(equity->calendar),
                            YearMonthDay{2024, 2, 1}.startIn(equity->calendar));
      provider->fetchQuotes(
          {equity, dates,
           QuoteQuery::Quotes{QuoteInterval::oneDay, PriceAdjustment::marketNominal}},
          std::make_shared<PriceAdjuster>(provider), [&missing](const auto&) {
            DispatchQueue::main()->async([&missing] {
              if (--missing == 0) {
                MainLoop::stop();
              }
            });
          });
    }
    MainLoop::run();
  }

  std::filesystem::path folder_;
};

void runConsole(benchmark::State& state, const std::string& command, const std::string& options) {
  static const ConsoleWorld world;
  if (!world.run(command, options)) {
    state.SkipWithError("The program does not answer.");
    return;
  }
  for (auto _ : state) {
    const auto begin = std::chrono::steady_clock::now();
    const bool isDone = world.run(command, options);
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
    if (!isDone) {
      state.SkipWithError("The program failed.");
      return;
    }
    state.SetIterationTime(taken.count());
  }
}
BENCHMARK_CAPTURE(runConsole, returns, "returns", "--offline --from 2004-01-01 --to 2023-12-31")
    ->Name("Reports/console returns of 100,000 rows, warm cache")
    ->UseManualTime()
    ->MinTime(3)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(runConsole, tax, "tax", "--year 2023")
    ->Name("Reports/console tax year of 100,000 rows")
    ->UseManualTime()
    ->MinTime(3)
    ->Unit(benchmark::kMillisecond);

}  // namespace console_reports_bench
}  // namespace corvane
