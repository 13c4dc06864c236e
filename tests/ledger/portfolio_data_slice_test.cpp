// Which rows and which assets a choice of days comes to.

#include "ledger/manager/portfolio_data_slice.h"

#include "support/ledger_builder.h"

namespace corvane::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class PortfolioDataSliceTest : public ::testing::Test, protected Ledger {
 protected:
  PortfolioDataSliceTest() { slice.portfolio = portfolio; }

  static std::vector<std::string> names(const std::vector<PortfolioAsset>& assets) {
    std::vector<std::string> names;
    for (const auto& asset : assets) {
      names.emplace_back(asset.cash() != nullptr ? std::string(asset.cash()->code)
                                                 : asset.equity()->symbol);
    }
    return names;
  }

  PortfolioDataSlice slice;
};

TEST_F(PortfolioDataSliceTest, HasTheRowsOfItsDays) {
  const ClosedRange<YearMonthDay> days({2021, 3, 13}, {2021, 3, 14});
  const Date start = days.lower().startIn(manager->calendar);
  // The clocks go forward on the 14th.
  const Date lastSecond = start + 47 * 3600.0 - 1;
  const auto at = [&](Date date) { return on(date).deposit("1"); };
  record({at(start - 1), at(start), at(lastSecond), at(lastSecond + 0.5), at(lastSecond + 1)});
  slice.selectDays(days);
  EXPECT_EQ(slice.nominalDateRange, ClosedRange<Date>(start, lastSecond));
  EXPECT_THAT(slice.transactions.value(), ElementsAre(rows()[1], rows()[2], rows()[3]));

  slice.selectDays({{2021, 3, 1}, {2021, 3, 2}});
  EXPECT_THAT(slice.transactions.value(), IsEmpty());
  EXPECT_EQ(slice.ymdRange.upper(), (YearMonthDay{2021, 3, 2}));

  manager.reset();
  slice.selectDays(days);
  EXPECT_EQ(slice.nominalDateRange, ClosedRange<Date>(Date::distantPast(), Date::distantPast()));
}

TEST_F(PortfolioDataSliceTest, ListsCurrenciesThenEquities) {
  EXPECT_THAT(slice.assetEntries({}), IsEmpty());
  EXPECT_EQ(slice.lastSnapshot(), PortfolioSnapshot());

  const EquityPointer sold = provider->equityWithId("1");
  const EquityPointer shorted = provider->equityWithId("2");
  sold->symbol = "AAA";
  shorted->symbol = "MMM";
  PortfolioSnapshotGroup group;
  PortfolioSnapshot last;
  last.currencySnapshots.set(Currency::usd(), {-1, 0, {}});
  last.currencySnapshots.set(Currency::cad(), {0, 5, 1});
  last.equitySnapshots.set(abc, {10, {}, 0, 0});
  last.equitySnapshots.set(xyz, {1, {}, 0, 0});
  last.equitySnapshots.set(sold, {0, {}, 0, 7});
  last.equitySnapshots.set(shorted, {-3, {}, 0, 0});
  group.sortedSnapshots = {{{2021, 3, 1}, {}}, {{2021, 3, 2}, last}};
  group.currenciesHeldOrTraded = {Currency::usd(), Currency::cad()};
  group.equitiesHeldOrTraded = {xyz, abc, sold, shorted};
  group.tradingSummaryByEquity = {{sold, {}}, {xyz, {}}};
  slice.snapshotGroup = std::make_shared<PortfolioSnapshotGroup>(group);

  EXPECT_THAT(names(slice.assetEntries({})), ElementsAre("CAD", "USD", "AAA", "ABC", "MMM", "XYZ"));
  EXPECT_THAT(names(slice.assetEntries({.excludingZero = true})), ElementsAre("USD", "ABC", "XYZ"));
  EXPECT_THAT(names(slice.assetEntries({.tradedOnly = true})), ElementsAre("AAA", "XYZ"));
  EXPECT_THAT(names(slice.assetEntries({.excludingZero = true, .tradedOnly = true})),
              ElementsAre("XYZ"));
  EXPECT_EQ(slice.firstSnapshot(), PortfolioSnapshot());
  EXPECT_EQ(slice.lastSnapshot(), last);
}

}  // namespace
}  // namespace corvane::testing
