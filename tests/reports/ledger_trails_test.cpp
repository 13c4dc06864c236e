// Why figures of a ledger are what they are.

#include "reports/trail/ledger_trails.h"

#include "random_cases.h"
#include "reports/report_cases.h"
#include "reports/report_world.h"
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
  EXPECT_EQ(errorOf([&] { (void)valueTrail(*world.portfolio); })->description(),
            errorOf([&] { (void)world.manager->valuation(world.portfolio); })->description());
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
}

}  // namespace
}  // namespace corvane::testing
