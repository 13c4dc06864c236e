// What all portfolios are worth together, and what the latest session has done to them. Every
// figure is worked out in the comments beside it.

#include "reports/overview/portfolios_overview.h"

#include "reports/overview/deposits_over_time.h"
#include "reports/overview/overview_history.h"
#include "reports/report_world.h"
#include "reports/trail/overview_trails.h"
#include "reports/trail_checks.h"

namespace corvane::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Optional;

/// A Canadian dollar buys 0.8 US dollars, a US dollar 1.25 Canadian ones. ABC has gone from 10 to
/// 12 Canadian dollars, XYZ from 48 to 50 US dollars, in the session of March 10.
class PortfoliosOverviewTest : public ::testing::Test, protected ReportWorld {
 protected:
  PortfoliosOverviewTest() {
    portfolio->name = "Taxable";
    retirement->name = "Retirement";
    dollarRate->recentPrice = dec("1.25");
    canadianRate->recentPrice = dec("0.8");
    price(abc, "12", "10", day(2021, 3, 10));
    price(xyz, "50", "48", day(2021, 3, 10) + 3600);
  }

  static void price(const EquityPointer& equity, const char* latest, const char* before,
                    Date date) {
    equity->recentPrice = dec(latest);
    equity->previousClosePrice = dec(before);
    equity->recentDate = date;
  }
  void recordIn(const PortfolioPointer& into, std::vector<BasicTransaction> rows) {
    manager->recordTransactions(std::move(rows), into, undo);
  }
  /// 60 ABC and 400 Canadian dollars; 8 XYZ, 4 ABC, 100 US and 10 Canadian dollars.
  void fillBoth() {
    record({deposit("1000"), buy("60", "600")});
    recordIn(retirement, {make(BasicTransaction::Transfer{{Currency::usd(), 500}}),
                          make(BasicTransaction::Transfer{cad("50")}),
                          buyOf(xyz, "8", "400", "400"), buyOf(abc, "4", "40", "32")});
  }
  PortfoliosOverview overview(const UnpricedAssets& leftOut = {}) {
    return portfoliosOverview(all(), shown, *provider, leftOut);
  }
  [[nodiscard]] std::vector<PortfolioPointer> all() const { return {portfolio, retirement}; }
  static std::vector<std::string> names(const std::vector<PortfoliosOverview::HoldingLine>& lines) {
    std::vector<std::string> names;
    for (const auto& line : lines) {
      names.emplace_back(line.equity == nullptr ? std::string(line.currency.code)
                                                : line.equity->symbol);
    }
    return names;
  }

  PortfolioPointer retirement = manager->createPortfolio(Currency::usd());
  EquityPointer dollarRate = provider->exchangeRateEquity(Currency::usd(), Currency::cad());
  EquityPointer canadianRate = provider->exchangeRateEquity(Currency::cad(), Currency::usd());
  Currency shown = Currency::cad();
};

TEST_F(PortfoliosOverviewTest, AddsUpPortfoliosInSeveralCurrencies) {
  fillBoth();
  const PortfoliosOverview made = overview();
  ASSERT_EQ(made.portfolios.size(), 2U);
  const auto& taxable = made.portfolios[0];
  // 400 + 60 × 12
  EXPECT_THAT(taxable.figures.value, Optional(dec("1120")));
  EXPECT_THAT(taxable.figures.netDeposits, Optional(dec("1000")));
  EXPECT_THAT(taxable.figures.gain(), Optional(dec("120")));
  EXPECT_THAT(taxable.figures.dayChange, Optional(dec("120")));
  EXPECT_DOUBLE_EQ(taxable.figures.dayRate().value(), 0.12);  // 120 of the 1,000 before
  const auto& other = made.portfolios[1];
  // (100 + 8 × 50) × 1.25 + 10 + 4 × 12
  EXPECT_THAT(other.figures.value, Optional(dec("683")));
  EXPECT_THAT(other.figures.netDeposits, Optional(dec("675")));  // 500 × 1.25 + 50
  EXPECT_THAT(other.figures.dayChange, Optional(dec("28")));     // 8 × 2 × 1.25 + 4 × 2
  EXPECT_THAT(made.total.value, Optional(dec("1803")));
  EXPECT_THAT(made.total.netDeposits, Optional(dec("1675")));
  EXPECT_THAT(made.total.gain(), Optional(dec("128")));
  EXPECT_THAT(made.total.dayChange, Optional(dec("148")));
  EXPECT_DOUBLE_EQ(made.total.dayRate().value(), 148.0 / 1655);
  EXPECT_DOUBLE_EQ(taxable.share.value(), 1120.0 / 1803);
  EXPECT_TRUE(made.missing.isEmpty());
  EXPECT_EQ(made.newest, xyz);
}

TEST_F(PortfoliosOverviewTest, HasALineForEachEquityAndCurrencyThatIsHeld) {
  fillBoth();
  const PortfoliosOverview made = overview();
  EXPECT_THAT(names(made.holdings), ElementsAre("ABC", "XYZ", "CAD", "USD"));
  const auto& line = made.holdings[0];
  EXPECT_EQ(line.held, 64);
  EXPECT_THAT(line.value, Optional(dec("768")));
  EXPECT_DOUBLE_EQ(line.share.value(), 768.0 / 1803);
  EXPECT_THAT(line.change, Optional(dec("128")));
  EXPECT_DOUBLE_EQ(line.dayRate().value(), 0.2);
  // 720 − 600 here, 48 − 32 × 1.25 there.
  EXPECT_THAT(line.gain, Optional(dec("128")));
  ASSERT_EQ(line.parts.size(), 2U);
  EXPECT_EQ(line.parts[0].portfolio, portfolio);
  EXPECT_EQ(line.parts[1].held, 4);
  EXPECT_EQ(made.holdings[2].held, 410);
  EXPECT_EQ(made.holdings[2].price, std::nullopt);
  EXPECT_EQ(made.holdings[2].gain, std::nullopt);

  ASSERT_EQ(made.currencies.size(), 2U);
  EXPECT_THAT(made.currencies[0].amount, Optional(dec("1178")));  // 768 + 410
  EXPECT_THAT(made.currencies[1].amount, Optional(dec("500")));
  EXPECT_THAT(made.currencies[1].value, Optional(dec("625")));
}

TEST_F(PortfoliosOverviewTest, StandsInTheCurrencyThatIsChosen) {
  fillBoth();
  shown = Currency::usd();
  const PortfoliosOverview made = overview();
  EXPECT_THAT(made.total.value, Optional(dec("1442.4")));      // 1178 × 0.8 + 500
  EXPECT_THAT(made.total.netDeposits, Optional(dec("1340")));  // 1050 × 0.8 + 500
  EXPECT_THAT(made.total.dayChange, Optional(dec("118.4")));   // 128 × 0.8 + 16
  // 60 × 12 × 0.8 − 600 × 0.8 and 4 × 12 × 0.8 − 32.
  EXPECT_THAT(made.holdings[0].gain, Optional(dec("102.4")));
}

TEST_F(PortfoliosOverviewTest, HasNoTotalsWithoutAPriceUntilItIsLeftOut) {
  fillBoth();
  xyz->recentPrice.reset();
  PortfoliosOverview made = overview();
  EXPECT_THAT(made.missing.names(), ElementsAre("XYZ"));
  EXPECT_EQ(made.total.value, std::nullopt);
  EXPECT_EQ(made.total.gain(), std::nullopt);
  EXPECT_EQ(made.portfolios[1].figures.value, std::nullopt);
  EXPECT_THAT(made.portfolios[0].figures.value, Optional(dec("1120"))) << "which holds no XYZ";
  EXPECT_EQ(made.portfolios[0].share, std::nullopt);
  EXPECT_THAT(names(made.holdings), ElementsAre("ABC", "XYZ", "CAD", "USD"));
  EXPECT_EQ(made.holdings[1].value, std::nullopt);
  EXPECT_THAT(made.total.netDeposits, Optional(dec("1675")));

  made = overview(made.missing);
  EXPECT_TRUE(made.missing.isEmpty());
  EXPECT_THAT(made.total.value, Optional(dec("1303")));  // 1803 − 8 × 50 × 1.25
  EXPECT_EQ(made.total.gain(), std::nullopt) << "deposits have paid for what is left out";
  EXPECT_THAT(made.portfolios[0].figures.gain(), Optional(dec("120")));
  EXPECT_THAT(made.total.dayChange, Optional(dec("128")));
  EXPECT_EQ(made.holdings[1].share, std::nullopt);
}

TEST_F(PortfoliosOverviewTest, NamesTheCurrencyThatHasNoRate) {
  fillBoth();
  dollarRate->recentPrice.reset();
  PortfoliosOverview made = overview();
  EXPECT_THAT(made.missing.names(), ElementsAre("USD"));
  EXPECT_EQ(made.total.value, std::nullopt);
  EXPECT_EQ(made.total.netDeposits, std::nullopt);
  made = overview(made.missing);
  // 1120 + 10 + 48; XYZ and its currency are out.
  EXPECT_THAT(made.total.value, Optional(dec("1178")));
  EXPECT_EQ(made.total.netDeposits, std::nullopt);
  EXPECT_THAT(made.total.dayChange, Optional(dec("128")));
}

TEST_F(PortfoliosOverviewTest, CountsTheLatestSessionAlone) {
  fillBoth();
  // ABC was last traded at the same time of the day before.
  price(abc, "12", "10", day(2021, 3, 9) + 3600);
  PortfoliosOverview made = overview();
  EXPECT_THAT(made.total.dayChange, Optional(dec("20")));  // 8 × 2 × 1.25
  EXPECT_EQ(made.holdings[0].change, std::nullopt);
  EXPECT_THAT(made.ofEarlierSession, ElementsAre(abc));
  EXPECT_THAT(made.total.value, Optional(dec("1803"))) << "it is worth what it was";
  EXPECT_EQ(made.portfolios[0].figures.dayChange, std::nullopt) << "nothing of it counts";

  // An exchange half the world away has closed some hours before.
  price(abc, "12", "10", day(2021, 3, 10) - 14.0 * 3600);
  EXPECT_THAT(overview().total.dayChange, Optional(dec("148")));

  xyz->previousClosePrice.reset();
  made = overview();
  EXPECT_THAT(made.total.dayChange, Optional(dec("128")));
  EXPECT_THAT(made.withoutCloseBefore, ElementsAre(xyz));
}

TEST_F(PortfoliosOverviewTest, IsNothingWithoutPortfoliosAndZeroWithoutHoldings) {
  PortfoliosOverview made = portfoliosOverview({}, shown, *provider);
  EXPECT_THAT(made.total.value, Optional(Decimal(0)));
  EXPECT_THAT(made.total.dayChange, Optional(Decimal(0)));
  EXPECT_EQ(made.total.dayRate(), std::nullopt);
  EXPECT_THAT(made.holdings, IsEmpty());

  portfolio->allowsNegativeBalances = true;
  record({deposit("70"), make(BasicTransaction::CashAdjustment{cad("-100")})});
  made = overview();
  EXPECT_THAT(made.total.value, Optional(dec("-30")));
  EXPECT_EQ(made.portfolios[0].share, std::nullopt) << "there is no share of a debt";
  EXPECT_EQ(made.newest, nullptr);
}

TEST_F(PortfoliosOverviewTest, CountsDividendsThatAPortfolioWithoutAccountsHasKept) {
  portfolio->usesCashAccounts = false;
  record({buy("10", "100"), yield(BasicTransaction::YieldType::dividend, "7", Decimal(10))});
  const PortfoliosOverview made = overview();
  EXPECT_EQ(made.total.value, manager->valuation(portfolio).currentValue);
  EXPECT_THAT(made.total.value, Optional(dec("127")));  // 10 × 12 + 7
  EXPECT_THAT(made.total.gain(), Optional(dec("27")));
}

TEST_F(PortfoliosOverviewTest, IsExplainedToTheLastRow) {
  fillBoth();
  const PortfoliosOverview made = overview();
  const auto both = all();
  const TrailNode worth = worthTrail(both, shown);
  expectRecomputes(worth);
  EXPECT_EQ(worth.value, *made.total.value);
  EXPECT_EQ(worth.children[1].label, "“Retirement”");
  const TrailNode gain = totalGainTrail(both, shown);
  expectRecomputes(gain);
  EXPECT_EQ(gain.value, *made.total.gain());
  const TrailNode change = dayChangeTrail(made, *provider);
  expectRecomputes(change);
  EXPECT_EQ(change.value, *made.total.dayChange);
  EXPECT_EQ(dayChangeTrail(made, *provider, retirement).value,
            *made.portfolios[1].figures.dayChange);
  for (const auto& line : made.holdings) {
    EXPECT_EQ(lineTrail(made, line, *provider).value, *line.value);
  }

  shown = Currency::usd();
  EXPECT_EQ(worthTrail(both, shown).value, *overview().total.value);
  EXPECT_EQ(netDepositsTrail(both, shown).value, *overview().total.netDeposits);
}

TEST_F(PortfoliosOverviewTest, NeedsTheRatesOfWhatIsHeldAndDeposited) {
  fillBoth();
  EXPECT_THAT(ratesOfOverview(all(), shown, *provider), ElementsAre(dollarRate));
  shown = Currency::usd();
  EXPECT_THAT(ratesOfOverview(all(), shown, *provider), ElementsAre(canadianRate));
}

TEST_F(PortfoliosOverviewTest, FollowsDepositsAndValuesThroughTime) {
  // Both deposit on the first of March; the second portfolio brings in 100 more on the third.
  record({on(day(2021, 3, 1)).deposit("1000")});
  const auto dollars = [&](int dayOfMonth, int amount) {
    return on(day(2021, 3, dayOfMonth)).make(BasicTransaction::Transfer{{Currency::usd(), amount}});
  };
  recordIn(retirement, {dollars(1, 500), dollars(3, 100)});
  rate({{1, "1.2"}, {3, "1.4"}});
  const auto both = all();
  const OverviewHistory made = overviewHistory(both, {march(1), march(3)}, market, calendar, shown);
  const auto& days = made.sum.days;
  ASSERT_EQ(days.size(), 3U) << "the day before, and the two with rows";
  ASSERT_EQ(made.bands.size(), 2U);
  EXPECT_THAT(made.bands[0].values, ElementsAre(0, 1000, 1000));
  EXPECT_THAT(made.bands[1].values, ElementsAre(0, 600, 840));  // 500 × 1.2, 600 × 1.4
  for (std::size_t i = 0; i < days.size(); ++i) {
    EXPECT_EQ(made.bands[0].values[i] + made.bands[1].values[i], days[i].value);
  }
  EXPECT_THAT(made.netDeposits, ElementsAre(0, 1600, 1840));
  // 140 come in at the start of the third day, so 100 are gained on 1,740.
  EXPECT_DOUBLE_EQ(made.timeWeighted.total.value(), 1840.0 / 1740 - 1);

  // A range that begins later counts what was there before it.
  EXPECT_THAT(depositsOverTime(both, std::span(days).subspan(2), shown, market, calendar),
              ElementsAre(1840));
  market.rates.clear();
  EXPECT_THAT(depositsOverTime(both, days, shown, market, calendar), IsEmpty());
  EXPECT_THAT(overviewHistory(both, {march(1), march(3)}, market, calendar, shown).sum.missing,
              ElementsAre("USD"));
}

}  // namespace
}  // namespace corvane::testing
