// Why figures of a ledger are what they are.

#include "reports/trail/ledger_trails.h"

#include <set>

#include "random_cases.h"
#include "reports/report_cases.h"
#include "reports/report_world.h"
#include "reports/series/valuation_series.h"
#include "reports/trail/heading_trails.h"
#include "reports/trail_checks.h"

namespace corvane::testing {
namespace {

using ::testing::HasSubstr;

TEST(ReportCases, Explanations) {
  forReportCases("explain", [](const ReportCase& made) {
    ReportWorld world;
    world.portfolio->usesCashAccounts = false;
    for (const JSONValue& row : made.inputs.at("rows").array()) {
      const std::string& shares = row.at("shares").string();
      const std::string& amount = row.at("amount").string();
      world.record({row.at("kind").string() == "buy" ? world.buy(shares, amount)
                                                     : world.sell(shares, amount)});
    }
    const std::size_t last = world.rows().size() - 1;
    const auto gain = capitalGainTrail(*world.portfolio, last, world.calendar);
    const auto cost = costBaseTrail(*world.portfolio, last, world.calendar);
    EXPECT_TRUE(gain && cost);
    if (!gain || !cost) {
      return true;
    }
    expectRecomputes(*gain);
    expectRecomputes(*cost);
    const std::map<std::string, std::optional<Decimal>> figures = {
        {"costBefore", world.rows()[last]->costBasePrior},
        {"costDisposedExact", nodeNamed(*gain, "Cost base of the shares sold")->value},
        {"costAfterExact", nodeNamed(*cost, "Cost base of the shares that stay")->value},
        {"costAfter", cost->value},
        {"gainExact", nodeNamed(*gain, "Proceeds less cost")->value},
        {"gain", gain->value}};
    for (const auto& [name, value] : made.expected.object()) {
      SCOPED_TRACE(name);
      if (name == "noteExpected") {
        EXPECT_EQ(gain->note.contains("rounded separately"), value.boolean());
      } else {
        EXPECT_EQ(figures.at(name), amountOf(value));
      }
    }
    return true;
  });
}

TEST(LedgerTrails, LeadToTheFiguresOfTheLedger) {
  forRandomCases(15, [](std::mt19937_64& random) {
    ReportWorld world;
    world.portfolio->usesCashAccounts = false;
    std::vector<BasicTransaction> basics;
    long held = 0;
    for (int i = 0; i < 70; ++i) {
      const std::string amount = std::to_string(random() % 1000) + ".01";
      const long shares = static_cast<long>(random() % 9) + 1;
      if (held > shares && random() % 2 == 0) {
        basics.push_back(world.sell(std::to_string(shares), amount));
        held -= shares;
      } else if (held > 0 && random() % 5 == 0) {
        basics.push_back(world.yield(BasicTransaction::YieldType::returnOfCapital, amount));
      } else {
        basics.push_back(world.buy(std::to_string(shares), amount));
        held += shares;
      }
    }
    world.record(basics);
    for (std::size_t i = 0; i < world.rows().size(); ++i) {
      const auto cost = costBaseTrail(*world.portfolio, i, world.calendar);
      expectRecomputes(cost.value());
      EXPECT_EQ(cost->value, world.rows()[i]->costBaseNet()) << i;
      const auto gain = capitalGainTrail(*world.portfolio, i, world.calendar);
      EXPECT_EQ(gain ? std::optional(gain->value) : std::nullopt, world.rows()[i]->capitalGain());
      if (gain) {
        expectRecomputes(*gain);
      }
    }
  });
}

TEST(LedgerTrails, OfValueAndDepositsAreThoseOfTheHeading) {
  ReportWorld world;
  world.record({world.deposit("1000"), world.buy("10", "100.50"),
                world.make(BasicTransaction::Transfer{{Currency::usd(), 500}}),
                world.buyOf(world.xyz, "3", "60", "80"), world.withdrawal("50")});
  world.abc->recentPrice = dec("11.25");
  world.xyz->recentPrice = 21;
  const EquityPointer rate = world.provider->exchangeRateEquity(Currency::usd(), Currency::cad());
  rate->recentPrice = dec("1.3");
  const PortfolioValuation heading = world.manager->valuation(world.portfolio);
  const TrailNode value = valueTrail(*world.portfolio);
  const TrailNode deposits = depositsTrail(*world.portfolio);
  expectRecomputes(value);
  expectRecomputes(deposits);
  EXPECT_EQ(value.value, heading.currentValue);
  EXPECT_EQ(deposits.value, heading.netDeposited);
  EXPECT_EQ(nodeNamed(value, "Cash in USD")->value, dec("572"));
  EXPECT_THAT(nodeNamed(deposits, "Taken out")->source, HasSubstr("row 5"));
  EXPECT_EQ(nodeNamed(deposits, "Taken out")->row->position, 4U);
}

/// ABC and DEF lack a price and the rate is not known; GHI is sold out with a gain and lacks one
/// too, which takes nothing from the value.
TEST(LedgerTrails, NameWhatMakesAHeadingIndeterminate) {
  ReportWorld world;
  const EquityPointer gone = world.provider->equityWithId("GHI");
  gone->currency = Currency::cad();
  world.record({world.deposit("1000"), world.buy("10", "100.50"),
                world.buyOf(gone, "5", "10", "10"), world.buyOf(gone, "-5", "-30", "-30"),
                world.make(BasicTransaction::Transfer{{Currency::usd(), 500}}),
                world.buyOf(world.xyz, "3", "60", "80")});
  world.xyz->recentPrice = 21;
  EXPECT_TRUE(errorOf([&] { (void)world.manager->valuation(world.portfolio); }));
  const TrailNode value = valueTrail(*world.portfolio);
  EXPECT_FALSE(value.isKnown());
  EXPECT_EQ(value.note, "indeterminate: no price of ABC, no rate of USD");
  EXPECT_FALSE(nodeNamed(value, "ABC")->isKnown());
  EXPECT_THAT(nodeNamed(value, "Price")->note, HasSubstr("⚠️"));
  EXPECT_FALSE(nodeNamed(value, "Cash in USD")->isKnown());
  const TrailNode* sold = nodeNamed(value, "GHI, 0 shares");
  ASSERT_NE(sold, nullptr);
  EXPECT_EQ(sold->value, 0);
  EXPECT_THAT(sold->note, HasSubstr("realised gain of 20 CAD"));
  EXPECT_EQ(depositsTrail(*world.portfolio).note, "indeterminate: no rate of USD");

  world.abc->recentPrice = 11;
  const EquityPointer rate = world.provider->exchangeRateEquity(Currency::usd(), Currency::cad());
  rate->recentPrice = dec("1.3");
  const TrailNode known = valueTrail(*world.portfolio);
  EXPECT_EQ(known.value, world.manager->valuation(world.portfolio).currentValue);
  EXPECT_EQ(known.note, "");
  EXPECT_EQ(nodeNamed(known, "GHI, 0 shares"), nullptr);
}

/// The second column of deposits is what the bridge of returns calls deposits at the rates of their
/// days, the first one what the heading has.
TEST(LedgerTrails, TellDepositsAtTheRatesOfTheirDaysAsWell) {
  ReportWorld world;
  const auto usd = [&](int dayOfMonth, int amount) {
    return world.on(day(2021, 3, dayOfMonth))
        .make(BasicTransaction::Transfer{{Currency::usd(), amount}});
  };
  world.record({world.on(day(2021, 3, 2)).deposit("1000"), usd(3, 500), usd(8, -200), usd(9, 30)});
  const EquityPointer rate = world.provider->exchangeRateEquity(Currency::usd(), Currency::cad());
  rate->recentPrice = dec("1.3");
  world.rate({{1, "1.1"}, {5, "1.2"}, {9, "1.4"}});
  const auto needs = depositPairs(*world.portfolio);
  EXPECT_EQ(needs.pairs, (std::set<CurrencyPair>{{Currency::usd(), Currency::cad()}}));
  const TrailNode deposits = depositsTrail(*world.portfolio, &world.market);
  EXPECT_EQ(deposits.value, 1000 + 330 * dec("1.3"));
  EXPECT_EQ(deposits.atRatesOfDays, 1000 + 500 * dec("1.1") - 200 * dec("1.2") + 30 * dec("1.4"));
  const auto bridge = valuationSeries(*world.portfolio, {world.march(2), world.march(20)},
                                      world.market, world.calendar)
                          .bridge;
  EXPECT_EQ(deposits.atRatesOfDays, bridge.deposits - bridge.withdrawals);
  EXPECT_THAT(nodeNamed(deposits, "Taken out")->note, HasSubstr("at 1.2 on its day"));
  EXPECT_EQ(depositsTrail(*world.portfolio).atRatesOfDays, std::nullopt) << "no rate was asked for";

  // Without accounts for cash a trade has its own rate where the market knows none.
  ReportWorld other;
  other.portfolio->usesCashAccounts = false;
  other.record({other.buyOf(other.xyz, "3", "60", "80")});
  EXPECT_EQ(depositsTrail(*other.portfolio).atRatesOfDays, 80);
}

TEST(LedgerTrails, TellOldDepositsInOneLine) {
  ReportWorld world;
  std::vector<BasicTransaction> basics;
  for (int i = 0; i < 1'003; ++i) {
    basics.push_back(world.deposit(std::to_string(i + 1)));
  }
  world.record(basics);
  const TrailNode deposits = depositsTrail(*world.portfolio);
  const TrailNode* sum = nodeNamed(deposits, "In CAD");
  EXPECT_EQ(deposits.value, 1'003 * 502);
  EXPECT_EQ(sum->children.size(), 1'001U);
  EXPECT_EQ(sum->children.front().value, 1 + 2 + 3);
  expectRecomputes(deposits);
}

}  // namespace
}  // namespace corvane::testing
