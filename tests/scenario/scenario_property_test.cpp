// Simulated traders over random quotes: every trade, value and count must equal those of a second
// trader, who keeps his books on the back of an envelope.
//
// CORVANE_TEST_CASES sets the number of runs, CORVANE_TEST_SEED the first seed.

#include <gmock/gmock.h>

#include "random_cases.h"
#include "scenario/scenario_builder.h"

namespace corvane::testing {
namespace {

const Decimal beyond = Decimal::greatestFiniteMagnitude();

/// The rules of the simulator told once more, with every figure worked out anew for each quote.
struct NaiveTrader {
  std::vector<std::string> rows;
  std::vector<Decimal> values;
  int trades = 0, daysTradedOn = 0, tradingDays = 0;

  NaiveTrader(const std::vector<Quote>& quotes, const std::vector<int>& days,
              const InvestmentStrategy& strategy, const Decimal& investment) {
    Decimal reference, close;
    std::vector<int> seen, traded;
    for (std::size_t i = 0; i < quotes.size(); ++i) {
      const Quote& quote = quotes[i];
      if (!quote.low || !quote.high || !quote.close) {
        values.push_back(values.empty() ? Decimal(0) : values.back());
        continue;
      }
      close = *quote.close;
      if (seen.empty()) {
        cash_ = investment;
        reference = close;
        note("open", 0, reference);
      }
      Decimal bottom = rounded(*quote.low, 2, RoundingMode::bankers);
      Decimal top = rounded(*quote.high, 2, RoundingMode::bankers);
      if (top < bottom) {
        std::swap(top, bottom);
      }
      const auto affordable = [&](const Decimal& most) {
        return rounded((most < cash_ ? most : cash_) / top, 0, RoundingMode::down);
      };
      const auto slice = [&](const Decimal& part) {
        return 0 - rounded(shares_ * part, 0, RoundingMode::down);
      };
      const auto above = [&](const Decimal& price, const Decimal& spread) {
        return spread != beyond && price >= reference + reference * spread;
      };
      const auto below = [&](const Decimal& price, const Decimal& spread) {
        return spread != beyond && price <= reference - reference * spread;
      };
      Decimal order, price;
      const char* event = "";
      const bool isFirst = seen.empty();
      if ((isFirst || below(top, strategy.targetBuySpread)) &&
          affordable(strategy.targetBuyMax) > 0) {
        event = "buy", order = affordable(strategy.targetBuyMax), price = top;
      } else if (above(bottom, strategy.targetSellSpread) && shares_ > 0) {
        event = "sell", order = slice(strategy.targetSellSlice), price = bottom;
      } else if (strategy.isStopLossActive && below(bottom, strategy.stopLossSellSpread) &&
                 shares_ > 0) {
        event = "stopLossSell", order = slice(strategy.stopLossSellSlice), price = bottom;
      } else if (strategy.isStopLossActive && above(top, strategy.stopLossBuySpread) &&
                 affordable(strategy.stopLossBuyMax) > 0) {
        event = "stopLossBuy", order = affordable(strategy.stopLossBuyMax), price = top;
      }
      if (order != 0) {
        shares_ += order;
        cash_ -= order * price;
        reference = price;
        note(event, order, reference);
        ++trades;
        traded.push_back(days[i]);
      }
      seen.push_back(days[i]);
      values.push_back(close * shares_ + cash_);
    }
    note("close", 0, close);
    daysTradedOn = distinct(traded);
    tradingDays = distinct(seen);
  }

 private:
  static int distinct(std::vector<int> numbers) {
    numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
    return static_cast<int>(numbers.size());
  }

  void note(const std::string& event, const Decimal& order, const Decimal& reference) {
    rows.push_back(event + " " + order.description() + " " + reference.description() + " " +
                   shares_.description() + " " + cash_.description());
  }

  Decimal shares_, cash_;
};

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
