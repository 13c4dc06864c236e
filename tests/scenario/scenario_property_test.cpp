// Simulated traders over random quotes: every trade, value and count must equal those of a second
// trader.
//
// CORVANE_TEST_CASES sets the number of runs, CORVANE_TEST_SEED the first seed.

#include <gmock/gmock.h>

#include "random_cases.h"
#include "scenario/naive_trader.h"
#include "scenario/scenario_builder.h"

namespace corvane::testing {
namespace {

TEST(RandomScenarios, EqualThoseOfANaiveTrader) {
  std::size_t totalTrades = 0;
  forRandomCases(300, [&](std::mt19937_64& random) {
    const auto below = [&](std::uint64_t n) { return random() % n; };
    const auto fraction = [&](std::uint64_t most) {
      return Decimal::fromParts(Sign::plus, -3, static_cast<long>(below(most)));
    };
    const auto spread = [&] { return below(12) == 0 ? beyond : fraction(60); };
    const auto most = [&] {
      return below(4) == 0 ? beyond : Decimal(static_cast<long>(below(900)));
    };
    const auto slice = [&] { return below(3) == 0 ? Decimal(1) : fraction(1001); };
    const InvestmentStrategy strategy{.targetBuySpread = spread(),
                                      .targetBuyMax = most(),
                                      .targetSellSpread = spread(),
                                      .targetSellSlice = slice(),
                                      .isStopLossActive = below(2) == 0,
                                      .stopLossBuySpread = spread(),
                                      .stopLossBuyMax = most(),
                                      .stopLossSellSpread = spread(),
                                      .stopLossSellSlice = slice()};

    Market market;
    long price = 2000 + static_cast<long>(below(20000));
    const std::uint64_t count = below(150);
    for (std::uint64_t i = 0; i < count; ++i) {
      if (below(4) == 0) {
        market.nextDay();
      }
      // In mills, so that prices have more places than the currency.
      const auto near = [&] {
        const long moved = price + static_cast<long>(below(1000)) * price / 20000;
        return below(25) == 0 ? "" : Decimal::fromParts(Sign::plus, -3, moved).description();
      };
      market.quote(near(), near(), near());
      price = std::max(100L, price + (static_cast<long>(below(1001)) - 500) * price / 8000);
    }
    const auto analyzer = market.analyzer();
    const Decimal investment =
        Decimal::fromParts(Sign::plus, -2, static_cast<long>(below(200'000)));
    const auto analysis = analyzer.analyze(std::nullopt, strategy, investment);
    const NaiveTrader naive(market.quotes, analyzer.tradingDayNumbers, strategy, investment);
    EXPECT_EQ(rowsOf(analysis), naive.rows);
    EXPECT_EQ(analysis.portfolioValues, naive.values);
    EXPECT_EQ(analysis.totalTradesMade, naive.trades);
    EXPECT_EQ(analysis.totalDaysTradedOn, naive.daysTradedOn);
    EXPECT_EQ(analysis.totalTradingDays, naive.tradingDays);
    totalTrades += static_cast<std::size_t>(naive.trades);
  });
  EXPECT_GT(totalTrades, 0U) << "no case has traded at all";
}

}  // namespace
}  // namespace corvane::testing
