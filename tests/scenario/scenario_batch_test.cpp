// Batches: which sub-periods there are, what each yields, and what becomes of a batch that is given
// up, fails in part, or is refreshed from under.
//
// CORVANE_TEST_CASES sets the number of random batches, CORVANE_TEST_SEED the first seed.

#include <gmock/gmock.h>

#include <functional>
#include <set>

#include "random_cases.h"
#include "scenario/naive_trader.h"
#include "scenario/scenario_batch.h"
#include "scenario/scenario_builder.h"
#include "scenario/scenario_single_portfolio_manager.h"

namespace corvane::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Bounds = std::pair<std::size_t, std::size_t>;

std::vector<Bounds> boundsOf(BatchMethod method, const std::vector<int>& days) {
  std::vector<Bounds> bounds;
  for (const auto& range : batchRanges(method, days)) {
    bounds.emplace_back(range.lower(), range.upper());
  }
  return bounds;
}

/// What each of the methods says in words, by looking every day up in the list.
std::vector<Bounds> naiveBounds(BatchMethod method, const std::vector<int>& days) {
  std::vector<Bounds> bounds;
  for (const int day : std::set<int>(days.begin(), days.end())) {
    const auto first = static_cast<std::size_t>(std::ranges::find(days, day) - days.begin());
    const auto end = first + static_cast<std::size_t>(std::ranges::count(days, day));
    bounds.emplace_back(method == BatchMethod::accumulatingFromStart ? 0 : first,
                        method == BatchMethod::accumulatingFromEnd ? days.size() : end);
  }
  return bounds;
}

TEST(BatchMethods, CutDaysIntoRanges) {
  const std::vector<int> days = {7, 7, 8, 11, 11, 11};
  EXPECT_THAT(boundsOf(BatchMethod::eachDay, days),
              ElementsAre(Bounds(0, 2), Bounds(2, 3), Bounds(3, 6)));
  EXPECT_THAT(boundsOf(BatchMethod::accumulatingFromStart, days),
              ElementsAre(Bounds(0, 2), Bounds(0, 3), Bounds(0, 6)));
  EXPECT_THAT(boundsOf(BatchMethod::accumulatingFromEnd, days),
              ElementsAre(Bounds(0, 6), Bounds(2, 6), Bounds(3, 6)));
  for (const BatchMethod method : allBatchMethods) {
    EXPECT_THAT(boundsOf(method, {}), IsEmpty());
    EXPECT_THAT(boundsOf(method, {9, 9}), ElementsAre(Bounds(0, 2)));
    EXPECT_EQ(batchMethodWithCode(static_cast<int>(method)), method);
  }
  EXPECT_EQ(batchMethodWithCode(3), BatchMethod::eachDay);
  EXPECT_EQ(batchMethodWithCode(-1), BatchMethod::eachDay);
}

TEST(BatchMethods, AccumulateFromNoDayOfNumberZero) {
  EXPECT_THAT(boundsOf(BatchMethod::accumulatingFromEnd, {0, 0, 1}), ElementsAre(Bounds(2, 3)));
  EXPECT_THAT(boundsOf(BatchMethod::accumulatingFromStart, {-1, 0}), ElementsAre(Bounds(0, 1)));
  EXPECT_THAT(boundsOf(BatchMethod::eachDay, {0, 0, 1}), ElementsAre(Bounds(0, 2), Bounds(2, 3)));
}

/// A market of a few days that ends in the middle of some story.
Market randomMarket(std::mt19937_64& random) {
  const auto below = [&](std::uint64_t n) { return static_cast<long>(random() % n); };
  Market market;
  long price = 2000 + below(8000);
  const long count = below(60);
  for (long i = 0; i < count; ++i) {
    if (below(5) == 0) {
      market.nextDay();
    }
    const auto near = [&] {
      const long moved = price + below(1000) * price / 20000;
      return below(25) == 0 ? "" : Decimal::fromParts(Sign::plus, -3, moved).description();
    };
    market.quote(near(), near(), near());
    price = std::max(500L, price + (below(1001) - 500) * price / 5000);
  }
  return market;
}

InvestmentStrategy livelyStrategy() {
  InvestmentStrategy strategy = InvestmentStrategy::defaultStrategy();
  strategy.targetBuySpread = strategy.targetSellSpread = dec("0.02");
  strategy.targetBuyMax = 300;
  strategy.targetSellSlice = dec("0.5");
  return strategy;
}

/// A batch and what it told.
struct Observed {
  ScenarioBatch batch;
  int progressCount = 0;
  int completionCount = 0;
  ErrorPointer error;

  void begin(const Market& market, BatchMethod method, const InvestmentStrategy& strategy) {
    batch.begin(
        {market.equity, market.quotes, method, strategy, 1000}, [this] { ++progressCount; },
        [this](ErrorPointer told) {
          ++completionCount;
          error = std::move(told);
        });
  }
  void waitForTheEnd() {
    const int before = completionCount;
    ASSERT_TRUE(
        MainLoop::runUntil([&] { return completionCount > before; }, std::chrono::seconds(20)));
  }
};

/// Everything of a result that a table shows.
std::string line(const DateRange& dates, const Decimal& gain, const Decimal& held, int days) {
  return std::to_string(dates.lower().timeIntervalSinceReferenceDate()) + " " +
         std::to_string(dates.upper().timeIntervalSinceReferenceDate()) + " " + gain.description() +
         " " + held.description() + " " + std::to_string(days);
}

std::vector<std::string> linesOf(const ScenarioBatch& batch) {
  std::vector<std::string> lines;
  for (const BatchResultPointer& result : batch.results()) {
    lines.push_back(line(result->dateRange, result->strategyPeriodReturn, result->buyAndHoldReturn,
                         result->analysis.totalTradingDays));
  }
  return lines;
}

std::vector<std::string> naiveLines(const Market& market, BatchMethod method,
                                    const InvestmentStrategy& strategy) {
  const auto days = tradingDayNumbers(market.quotes, *market.equity);
  std::vector<std::string> lines;
  for (const auto& [first, end] : naiveBounds(method, days)) {
    const std::vector<Quote> quotes(market.quotes.begin() + static_cast<long>(first),
                                    market.quotes.begin() + static_cast<long>(end));
    const std::vector<int> numbers(days.begin() + static_cast<long>(first),
                                   days.begin() + static_cast<long>(end));
    const NaiveTrader trader(quotes, numbers, strategy, 1000);
    const NaiveTrader holder(quotes, numbers, InvestmentStrategy::buyAndHold(), 1000);
    // Without a usable quote nobody has invested anything.
    const auto gainOf = [](const NaiveTrader& naive) {
      return naive.tradingDays == 0 ? Decimal::nan() : naive.values.back() / 1000 - 1;
    };
    lines.push_back(line({quotes.front().fromDate, quotes.back().toDate}, gainOf(trader),
                         gainOf(holder), trader.tradingDays));
  }
  return lines;
}

TEST(RandomBatches, EqualThoseOfANaiveTrader) {
  std::size_t distinctLines = 0;
  forRandomCases(60, [&](std::mt19937_64& random) {
    const Market market = randomMarket(random);
    for (const BatchMethod method : allBatchMethods) {
      Observed observed;
      observed.begin(market, method, livelyStrategy());
      observed.waitForTheEnd();
      const auto lines = linesOf(observed.batch);
      EXPECT_EQ(lines, naiveLines(market, method, livelyStrategy()));
      EXPECT_EQ(observed.error, nullptr);
      EXPECT_EQ(observed.completionCount, 1);
      EXPECT_EQ(static_cast<std::size_t>(observed.progressCount), lines.size());
      distinctLines += std::set<std::string>(lines.begin(), lines.end()).size();
    }
  });
  EXPECT_GT(distinctLines, 300U) << "the markets are too quiet to tell results apart";
}

/// Three days: one without a chance to sell, one with, and another without.
Market threeDays() {
  Market market;
  market.nextDay().quote("10", "10", "10").quote("10", "10", "10.1");
  market.nextDay().quote("10", "10", "10").quote("12", "12", "12");
  market.nextDay().quote("10", "10", "10").quote("10", "10", "9.5");
  return market;
}

TEST(ScenarioBatches, KeepWhatTheOtherPeriodsYieldWhereOneFails) {
  InvestmentStrategy strategy = InvestmentStrategy::defaultStrategy();
  strategy.targetSellSlice = 2;  // more than there is
  Observed observed;
  observed.begin(threeDays(), BatchMethod::eachDay, strategy);
  observed.waitForTheEnd();
  ASSERT_NE(observed.error, nullptr);
  ASSERT_EQ(observed.batch.results().size(), 2U);
  const ReturnSpan span = returnSpan(observed.batch.results());
  EXPECT_EQ(span.least, dec("-0.05"));
  EXPECT_EQ(span.greatest, dec("0.01"));
  EXPECT_EQ(observed.batch.results().front()->strategyAnnualizedReturn, dec("2.52"));
}

TEST(ScenarioBatches, EndWithoutResultsWhereThereAreNoQuotesOrNoProvider) {
  Observed observed;
  observed.begin(Market(), BatchMethod::eachDay, livelyStrategy());
  EXPECT_EQ(observed.completionCount, 0) << "called before begin() has returned";
  observed.waitForTheEnd();
  EXPECT_EQ(observed.error, nullptr);
  EXPECT_TRUE(returnSpan(observed.batch.results()).least.isNaN());
  EXPECT_TRUE(returnSpan(observed.batch.results()).greatest.isNaN());

  Market orphaned = threeDays();
  orphaned.provider = nullptr;
  observed.begin(orphaned, BatchMethod::eachDay, livelyStrategy());
  observed.waitForTheEnd();
  ASSERT_NE(observed.error, nullptr);
  EXPECT_EQ(*observed.error, ScenarioSinglePortfolioManager::EquityMissingQuoteProviderError());
  EXPECT_THAT(observed.batch.results(), IsEmpty());
}

TEST(ScenarioBatches, AreNotChangedByARefresh) {
  Market market = threeDays();
  market.nextDay().quote("10.47", "10.49", "10.48");
  const auto expected = naiveLines(market, BatchMethod::accumulatingFromEnd, livelyStrategy());
  Observed observed;
  observed.begin(market, BatchMethod::accumulatingFromEnd, livelyStrategy());
  market.equity->currency = Currency::byCode().at("JPY");
  market.equity->symbol = "OTHER";
  market.equity->calendar = Calendar(*TimeZone::withIdentifier("Asia/Tokyo"));
  market.equity->quoteProvider.reset();
  observed.waitForTheEnd();
  EXPECT_EQ(observed.error, nullptr);
  ASSERT_EQ(linesOf(observed.batch), expected);
  EXPECT_EQ(observed.batch.results().front()->analysis.portfolio->name, "ABC Scenario");
}

TEST(ScenarioBatches, GiveWayToANewerOne) {
  std::mt19937_64 random(4);
  Market large;
  for (int day = 0; day < 30; ++day) {
    large.nextDay();
    for (int i = 0; i < 20; ++i) {
      const std::string price = std::to_string(90 + random() % 20);
      large.quote(price, price, price);
    }
  }
  Observed observed;
  for (int i = 0; i < 10; ++i) {
    observed.begin(large, BatchMethod::accumulatingFromStart, livelyStrategy());
    // Let it come to different points, from none at all to some results.
    MainLoop::runUntil(
        [&] { return observed.batch.completedCount() >= static_cast<std::size_t>(i); },
        std::chrono::seconds(20));
  }
  ASSERT_TRUE(observed.batch.isRunning());
  observed.begin(threeDays(), BatchMethod::eachDay, livelyStrategy());
  observed.waitForTheEnd();
  EXPECT_EQ(observed.completionCount, 1);
  EXPECT_EQ(linesOf(observed.batch),
            naiveLines(threeDays(), BatchMethod::eachDay, livelyStrategy()));
  EXPECT_FALSE(observed.batch.isRunning());
}

TEST(ScenarioBatches, KeepTheirResultsSoFarWhenCancelled) {
  Observed observed;
  observed.begin(threeDays(), BatchMethod::eachDay, livelyStrategy());
  ASSERT_TRUE(MainLoop::runUntil([&] { return observed.batch.completedCount() == 1; },
                                 std::chrono::seconds(20)));
  observed.batch.cancel();
  EXPECT_FALSE(observed.batch.isRunning());
  MainLoop::runUntil([] { return false; }, std::chrono::milliseconds(100));
  EXPECT_EQ(observed.completionCount, 0);
  EXPECT_EQ(observed.progressCount, 1);
  EXPECT_EQ(observed.batch.results().size(), 1U);
  observed.batch.reset();
  EXPECT_THAT(observed.batch.results(), IsEmpty());
  EXPECT_EQ(observed.batch.totalCount(), 0U);
}

TEST(ScenarioBatches, MayGoWhileTheyRun) {
  int calls = 0;
  for (std::size_t progress = 0; progress < 3; ++progress) {
    auto batch = std::make_unique<ScenarioBatch>();
    const Market market = threeDays();
    batch->begin(
        {market.equity, market.quotes, BatchMethod::eachDay, livelyStrategy(), 1000},
        [&, progress] {
          if (batch->completedCount() == progress) {
            batch.reset();
          }
        },
        [&](const ErrorPointer&) { ++calls; });
    if (progress == 0) {
      batch.reset();
    }
    ASSERT_TRUE(MainLoop::runUntil([&] { return batch == nullptr; }, std::chrono::seconds(20)));
    // Whatever was under way still comes.
    MainLoop::runUntil([&] { return calls > 0; }, std::chrono::milliseconds(100));
  }
  EXPECT_EQ(calls, 0);
}

}  // namespace
}  // namespace corvane::testing
