// Why the lines of equities in the report of returns say what they say.

#include "reports/trail/equity_trails.h"

#include "random_cases.h"
#include "reports/report_world.h"
#include "reports/series/report_days.h"
#include "reports/trail_checks.h"

namespace corvane::testing {
namespace {

using ::testing::HasSubstr;

/// Trades of two equities in two currencies, some before the days of the report, which are those of
/// March from the 8th on.
class EquityWorld : public ReportWorld {
 public:
  EquityWorld() {
    portfolio->usesCashAccounts = false;
    quote(abc, {{2, "10.5"}, {9, "11.25"}, {16, "9.75"}, {23, "12.03"}});
    quote(xyz, {{2, "20.5"}, {11, "21.25"}, {18, "19.75"}, {23, "22.01"}});
    rate({{2, "1.21"}, {10, "1.25"}, {22, "1.317"}});
  }

  static Decimal rateOf(const EquityPointer& equity) {
    return equity->currency == Currency::usd() ? dec("1.3") : Decimal(1);
  }
  BasicTransaction trade(const EquityPointer& equity, long shares, const Decimal& cost) {
    return make(BasicTransaction::Trade{equity,
                                        {equity->currency, cost},
                                        rounded(cost * rateOf(equity), 2, RoundingMode::bankers),
                                        Decimal(shares)});
  }
  BasicTransaction randomRow(std::mt19937_64& random, std::map<EquityPointer, long>& held) {
    const EquityPointer equity = random() % 2 == 0 ? abc : xyz;
    const std::string amount = std::to_string(random() % 900 + 1) + ".07";
    const long shares = 1 + static_cast<long>(random() % 9);
    const auto choice = random() % 5;
    if (choice == 0 && held[equity] > 0) {
      return make(
          BasicTransaction::Yield{BasicTransaction::YieldType::dividend,
                                  equity,
                                  Decimal(held[equity]),
                                  {equity->currency, dec(amount)},
                                  rounded(dec(amount) * rateOf(equity), 2, RoundingMode::bankers)});
    }
    if (choice == 1 && held[equity] >= shares) {
      held[equity] -= shares;
      return trade(equity, -shares, -dec(amount));
    }
    held[equity] += shares;
    return trade(equity, shares, dec(amount));
  }

  void recordRandomRows(std::mt19937_64& random) {
    constexpr int count = 30;
    std::map<EquityPointer, long> held;
    std::vector<BasicTransaction> basics;
    for (int i = 0; i < count; ++i) {
      on(day(2021, 3, 2 + i * 26 / count));
      basics.push_back(randomRow(random, held));
    }
    record(basics);
  }

  EquityTrailGround ground() {
    return {portfolio, ValuationScope{march(8), march(28)},
            std::make_shared<const MarketHistory>(market), calendar};
  }
  ReturnsReport reportOn(const EquityTrailGround& made) {
    return returnsReport(*portfolio, made.scope, *made.history, made.calendar);
  }
};

TEST(EquityTrails, LeadToEachFigureOfALine) {
  std::map<EquityFigure, int> told;
  int returns = 0;
  forRandomCases(25, [&](std::mt19937_64& random) {
    EquityWorld world;
    world.recordRandomRows(random);
    const EquityTrailGround made = world.ground();
    for (const EquityReturns& line : world.reportOn(made).equities) {
      const EquityFigures& figures = line.figures;
      for (const auto& [figure, value] :
           std::map<EquityFigure, Decimal>{{EquityFigure::opening, figures.opening},
                                           {EquityFigure::bought, figures.bought},
                                           {EquityFigure::sold, figures.sold},
                                           {EquityFigure::dividends, figures.dividends},
                                           {EquityFigure::closing, figures.closing},
                                           {EquityFigure::gain, figures.gain()}}) {
        const TrailNode trail = equityFigureTrail(figure, figures, made);
        expectRecomputes(trail);
        EXPECT_EQ(trail.value, rounded(value, 2, RoundingMode::bankers));
        told[figure] += trail.children.empty() ? 0 : 1;
      }
      for (const auto& [trail, shown] :
           {std::pair(equityTimeWeightedTrail(line, made), line.timeWeighted),
            std::pair(equityMoneyWeightedTrail(line, made), line.moneyWeighted)}) {
        ASSERT_EQ(trail.has_value(), shown.has_value());
        if (trail) {
          expectRecomputes(*trail);
          EXPECT_EQ(trail->value,
                    rounded(Decimal::fromDouble(*shown * 100), 2, RoundingMode::bankers));
          ++returns;
        }
      }
    }
  });
  EXPECT_EQ(told.size(), 6U);
  for (const auto& [figure, count] : told) {
    EXPECT_GT(count, 10) << static_cast<int>(figure) << " is told by more than a leaf";
  }
  EXPECT_GT(returns, 50);
}

TEST(EquityTrails, NameRowsPricesAndRates) {
  EquityWorld world;
  world.on(day(2021, 3, 2));
  const auto purchase = world.buyOf(world.xyz, "10", "200", "240");
  world.on(day(2021, 3, 12));
  const auto sale = world.buyOf(world.xyz, "-4", "-84", "-104.5");
  world.record({purchase, world.on(day(2021, 3, 9)).buy("5", "50"), sale});
  const EquityTrailGround made = world.ground();
  const ReturnsReport report = world.reportOn(made);
  const EquityFigures& line = report.equities.back().figures;
  ASSERT_EQ(*line.equity, *world.xyz);

  const TrailNode sold = equityFigureTrail(EquityFigure::sold, line, made);
  EXPECT_EQ(sold.children.front().label, "4 shares sold");
  EXPECT_EQ(sold.children.front().source, "row 3 of “" + world.portfolio->name + "”");
  EXPECT_EQ(sold.children.front().row->position, 2U);
  EXPECT_EQ(sold.children.front().row->portfolio.lock(), world.portfolio);
  EXPECT_THAT(sold.children.front().note, HasSubstr("84 USD at the equivalent"));
  EXPECT_TRUE(equityFigureTrail(EquityFigure::bought, line, made).children.empty())
      << "the purchase was before";

  const TrailNode opening = equityFigureTrail(EquityFigure::opening, line, made);
  EXPECT_EQ(opening.day, world.march(7));
  EXPECT_EQ(nodeNamed(opening, "Shares held")->value, 10);
  EXPECT_EQ(nodeNamed(opening, "Close")->value, dec("20.5"));
  EXPECT_EQ(nodeNamed(opening, "Close")->day, world.march(2));
  EXPECT_EQ(nodeNamed(opening, "Rate of USD")->value, dec("1.21"));
  const TrailNode closing = equityFigureTrail(EquityFigure::closing, line, made);
  EXPECT_EQ(nodeNamed(closing, "Shares held")->value, 6);
  EXPECT_EQ(nodeNamed(closing, "Rate of USD")->day, world.march(22));
}

/// 3 shares at 21.25 × 1.25 come in on the 12th, and 2 at 22.01 × 1.317 go out on the 24th; what
/// was journaled before the days of the report plays no part.
TEST(EquityTrails, NameTheRowsOfJournaledShares) {
  EquityWorld world;
  const auto journal = [&](int dayOfMonth, long shares) {
    world.on(day(2021, 3, dayOfMonth));
    return world.make(BasicTransaction::JournaledShares{world.xyz, Decimal(shares), {}});
  };
  world.record({journal(3, 10), journal(12, 3), journal(24, -2)});
  const EquityTrailGround made = world.ground();
  const EquityFigures line = world.reportOn(made).equities.back().figures;
  const TrailNode gain = equityFigureTrail(EquityFigure::gain, line, made);
  expectRecomputes(gain);
  const TrailNode* journaled = nodeNamed(gain, "Shares journaled");
  ASSERT_NE(journaled, nullptr);
  EXPECT_EQ(journaled->value, line.journaled);
  ASSERT_EQ(journaled->children.size(), 2U);
  EXPECT_EQ(journaled->children.front().value, dec("79.6875"));
  EXPECT_EQ(journaled->children.front().children.front().row->position, 1U);
  EXPECT_EQ(journaled->children.back().label, "Journaled out");
  EXPECT_EQ(journaled->children.back().children.front().row->position, 2U);
}

/// A line that the ledger has left behind is told as it stands, without rows that do not make it.
TEST(EquityTrails, TellNothingThatDoesNotLeadToTheLine) {
  EquityWorld world;
  world.record(
      {world.on(day(2021, 3, 9)).buy("5", "50"), world.on(day(2021, 3, 15)).buy("5", "60")});
  const EquityTrailGround made = world.ground();
  const EquityReturns line = world.reportOn(made).equities.front();
  EXPECT_EQ(equityFigureTrail(EquityFigure::bought, line.figures, made).children.size(), 2U);
  world.record({world.on(day(2021, 3, 20)).buy("7", "1000")});
  const TrailNode bought = equityFigureTrail(EquityFigure::bought, line.figures, made);
  EXPECT_EQ(bought.value, 110);
  EXPECT_TRUE(bought.children.empty());
  EXPECT_THAT(bought.note, HasSubstr("has changed"));
  EXPECT_TRUE(equityFigureTrail(EquityFigure::closing, line.figures, made).children.empty());
  EXPECT_FALSE(equityTimeWeightedTrail(line, made));
  EXPECT_FALSE(equityMoneyWeightedTrail(line, made));
}

TEST(EquityTrails, TellOldRowsInOneLine) {
  EquityWorld world;
  std::vector<BasicTransaction> basics;
  for (int i = 0; i < 1'003; ++i) {
    basics.push_back(world.on(day(2021, 3, 9)).buy("1", std::to_string(i + 1)));
  }
  world.record(basics);
  const EquityTrailGround made = world.ground();
  const EquityFigures line = world.reportOn(made).equities.front().figures;
  const TrailNode bought = equityFigureTrail(EquityFigure::bought, line, made);
  EXPECT_EQ(bought.value, 1'003 * 502);
  EXPECT_EQ(bought.children.size(), 1'001U);
  EXPECT_EQ(bought.children.front().value, 1 + 2 + 3);
  expectRecomputes(bought);
}

}  // namespace
}  // namespace corvane::testing
