// The tables of holdings and gains, and the pie.

#include "presentation/portfolio/portfolio_gain_loss_view_controller.h"
#include "presentation/portfolio/portfolio_holdings_view_controller.h"
#include "presentation/portfolio_screen_world.h"

namespace corvane::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::Pair;

class PortfolioTabsTest : public PortfolioScreenWorld {
 protected:
  PortfolioTabsTest() {
    xyz->name = "Xylophones Inc.";
    slice.portfolio = portfolio;
    slice.selectDays({{2021, 3, 1}, {2021, 3, 10}});
    // 950 CAD and 50 USD at 2; 10 ABC at 7, bought for 50; 4 XYZ without a price.
    first.equitySnapshots.set(abc, {20, 7, 100, 30});
    last.currencySnapshots.set(Currency::cad(), {950, 1000, 1});
    last.currencySnapshots.set(Currency::usd(), {50, 0, 2});
    last.equitySnapshots.set(abc, {10, 7, 50, 55});
    last.equitySnapshots.set(xyz, {4, {}, 0, -5});
    last.equitySnapshots.set(sold, {0, 3, 0, 9});
  }

  void show() {
    PortfolioSnapshotGroup group;
    group.sortedSnapshots = {{{2021, 2, 28}, first}, {{2021, 3, 10}, last}};
    group.currenciesHeldOrTraded = {Currency::usd(), Currency::cad()};
    group.equitiesHeldOrTraded = {xyz, abc, sold};
    group.tradingSummaryByEquity = {{abc,
                                     {.sharesBought = 0,
                                      .sharesSold = 10,
                                      .costBaseAdded = 0,
                                      .costBaseDisposed = 50,
                                      .proceedsOfSale = 75}},
                                    {sold, {1, 1, 6, 6, 15}}};
    slice.snapshotGroup = std::make_shared<PortfolioSnapshotGroup>(group);
    holdings.setCurrentData(slice, std::nullopt);
    gains.setCurrentData(slice, std::nullopt);
  }
  void endOn(YearMonthDay lastDay) {
    slice.selectDays({{2021, 3, 1}, lastDay});
    show();
  }

  EquityPointer sold = provider->equityWithId("SOLD");
  PortfolioDataSlice slice;
  PortfolioSnapshot first;
  PortfolioSnapshot last;
  PortfolioHoldingsViewController holdings{surroundings};
  PortfolioGainLossViewController gains{surroundings};
};

TEST_F(PortfolioTabsTest, ListsWhatIsHeld) {
  show();
  ASSERT_EQ(holdings.numberOfRows(), 4U) << "what was sold out has no row";
  EXPECT_THAT(cells(holdings, 0),
              ElementsAre(Pair("marketValue", "CA$950.00"), Pair("name", "CAD — Canadian Dollar"),
                          Pair("sharesHeld", "CA$950.00")));
  EXPECT_THAT(cells(holdings, 1),
              ElementsAre(Pair("marketValue", "CA$100.00"), Pair("name", "USD — US Dollar"),
                          Pair("sharesHeld", "$50.00")));
  EXPECT_THAT(
      cells(holdings, 2),
      ElementsAre(Pair("averagePrice", "CA$5.00"), Pair("costBase", "CA$50.00"),
                  Pair("marketGain", "CA$20.00"), Pair("marketPrice", "CA$7.00"),
                  Pair("marketValue", "CA$70.00"), Pair("name", "ABC"), Pair("sharesHeld", "10")));
  // Without a price.
  EXPECT_THAT(cells(holdings, 3),
              ElementsAre(Pair("averagePrice", "CA$0.00"), Pair("costBase", "—"),
                          Pair("name", "XYZ — Xylophones Inc."), Pair("sharesHeld", "4")));
}

TEST_F(PortfolioTabsTest, ShowsLossesInBracketsAndInRed) {
  last.equitySnapshots.set(abc, {10, 2, 50, 0});
  show();
  const AttributedText loss = holdings.cell(2, 6);
  EXPECT_EQ(loss.plainText(), "(CA$30.00)");
  EXPECT_EQ(loss.runs().front().style.colour, Colour(Colour::Name::systemRed));
  EXPECT_TRUE(loss.runs().front().style.isMonospaced);
  EXPECT_EQ(loss.alignment, TextAlignment::right);
}

TEST_F(PortfolioTabsTest, DrawsThePieFromTheSmallestSliceOn) {
  show();
  const auto& slices = holdings.pie().slices;
  std::vector<std::string> texts;
  for (const PieSlice& piece : slices) {
    texts.push_back(piece.label + " " + piece.percentText);
  }
  EXPECT_THAT(texts, ElementsAre("XYZ 0%", "ABC 6%", "Cash (USD) 9%", "Cash (CAD) 85%"));
  EXPECT_EQ(slices.back().value, 950);
  EXPECT_EQ(slices.front().colour, Colour::fromHue(1.0 / 9, 1, 0.6));
  EXPECT_EQ(holdings.pie().accessibleText(), "Cash (CAD) 85%, Cash (USD) 9%, ABC 6%, XYZ 0%");
  slice.snapshotGroup.reset();
  holdings.setCurrentData(slice, std::nullopt);
  EXPECT_TRUE(holdings.pie().slices.empty());
  EXPECT_EQ(holdings.pie().noDataText, "No holdings.");
}

TEST_F(PortfolioTabsTest, NamesTheDayOfTheHoldings) {
  show();
  EXPECT_EQ(holdings.title(), "Current holdings");
  endOn({2021, 3, 9});
  EXPECT_EQ(holdings.title(), "All holdings on March 9, 2021 (yesterday)");
  manager.reset();
  EXPECT_EQ(holdings.title(), "");
}

TEST_F(PortfolioTabsTest, ListsTheGainsOfWhatWasTraded) {
  show();
  ASSERT_EQ(gains.numberOfRows(), 2U);
  EXPECT_THAT(cells(gains, 0),
              ElementsAre(Pair("capitalGain", "CA$25.00"), Pair("costBaseAdded", "—"),
                          Pair("costBaseDisposed", "CA$50.00"), Pair("name", "ABC"),
                          Pair("proceedsOfSale", "CA$75.00"), Pair("sharesBought", "0"),
                          Pair("sharesNet", "10"), Pair("sharesSold", "10")));
  EXPECT_EQ(cells(gains, 1)["sharesNet"], "0");
  EXPECT_EQ(cells(gains, 1)["capitalGain"], "CA$9.00");
}

TEST_F(PortfolioTabsTest, TellsHowLongTheGainsTook) {
  show();
  EXPECT_EQ(gains.title(), "Realized gains/losses over 10 days as of today");
  slice.selectDays({{2021, 3, 10}, {2021, 3, 10}});
  show();
  EXPECT_EQ(gains.title(), "Realized gains/losses over 1 day as of today");
  slice.selectDays({{2020, 1, 1}, {2020, 12, 31}});
  show();
  EXPECT_EQ(gains.title(),
            "Realized gains/losses over 1 year as of December 31, 2020 (2 months ago)");
}

}  // namespace
}  // namespace corvane::testing
