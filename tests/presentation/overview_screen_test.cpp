// The page over all portfolios: its figures, tables and chart, and how it follows prices.

#include "exchange/exports/portfolio_exporter.h"
#include "presentation/frame/workspace_reports.h"
#include "presentation/portfolio_screen_world.h"
#include "reports/trail/trail_node.h"
#include "storage/application/watchlist_manager.h"

namespace corvane::testing {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::Pair;
using ::testing::SizeIs;

/// Tells the latest price of what `latest` has, and succeeds.
class RefreshingProvider : public ScriptedQuoteProvider {
 public:
  using ScriptedQuoteProvider::ScriptedQuoteProvider;

  std::map<std::string, Decimal> latest;
  std::vector<std::string> refreshed;

  void refreshEquities(std::vector<EquityPointer> equities, RefreshCompletion completion) override {
    for (const EquityPointer& equity : equities) {
      refreshed.push_back(equity->id());
      if (const auto found = latest.find(equity->id()); found != latest.end()) {
        equity->recentPrice = found->second;
      }
    }
    DispatchQueue::global()->async(
        [completion = std::move(completion)]() mutable { completion(nullptr); });
  }
};

/// A US dollar is 2 Canadian ones. ABC has gone from 10 to 12 in the session of today, XYZ from 8
/// to 10 US dollars.
class OverviewScreenTest : public PortfolioScreenWorld {
 protected:
  OverviewScreenTest() {
    market->script = prices->script;
    prices = market;
    manager->quoteProvider = market;
    portfolio->name = "Taxable";
    retirement->name = "Retirement";
    quoteDollars(2);
    closes["ABC"] = 10;
    closes["XYZ"] = 8;
    price(abc, 12, 10);
    price(xyz, 10, 8);
    model->portfolioManagers = {manager};
  }

  void price(const EquityPointer& equity, int latest, int before) const {
    equity->recentPrice = latest;
    equity->previousClosePrice = before;
    equity->recentDate = now;
    equity->recentTradingPeriod = DateRange(now - 3600, now + 3600);
  }
  /// 60 ABC and 400 Canadian dollars here; 8 XYZ and 36 US dollars there.
  void fillBoth() {
    record({on(day(2021, 3, 1)).deposit("1000"), buy("60", "600")});
    on(day(2021, 3, 1));
    manager->recordTransactions({depositDollars("100"), buyForeign("8", "64", "64")}, retirement,
                                undo);
  }
  void open() {
    reports->setDocumentModel(model);
    reports->show(WorkspaceReport::overview);
    settle();
  }
  void settle() {
    waitUntil([&] { return !page.isBusy(); });
  }
  const ReportFigure& figure(std::size_t place) { return page.figures().at(place); }
  std::string value(std::size_t place) { return figure(place).value.plainText(); }
  void refreshed() {
    NotificationCenter::defaultCenter().post(WatchlistManager::didRefreshPortfolioEquities, nullptr,
                                             {portfolio, retirement});
    // What hears of it on the main queue has done so by then.
    bool isOver = false;
    DispatchQueue::main()->async([&] { isOver = true; });
    waitUntil([&] { return isOver; });
  }

  std::shared_ptr<RefreshingProvider> market = std::make_shared<RefreshingProvider>();
  PortfolioPointer retirement = manager->createPortfolio(Currency::usd());
  EquityPointer canadianRate = market->exchangeRateEquity(Currency::cad(), Currency::usd());
  std::shared_ptr<WorkspaceModel> model = std::make_shared<WorkspaceModel>();
  std::shared_ptr<WorkspaceReports> reports = WorkspaceReports::make(surroundings);
  PortfoliosOverviewViewController& page = *reports->overview;
};

TEST_F(OverviewScreenTest, ShowsWhatIsThereAndWhatTodayHasDone) {
  fillBoth();
  open();
  // 400 + 60 × 12 = 1,120, and (36 + 8 × 10) × 2 = 232.
  EXPECT_EQ(figure(0).title, "Total value");
  EXPECT_EQ(value(0), "CA$1,352.00");
  // 60 × 2 + 8 × 2 × 2, by 1,352 − 152.
  EXPECT_EQ(figure(1).title, "Change today");
  EXPECT_EQ(value(1), "CA$152.00");
  EXPECT_EQ(figure(1).detail, "+12.67%") << "the session is under way";
  EXPECT_EQ(value(2), "CA$1,200.00");
  EXPECT_EQ(value(3), "CA$152.00");
  EXPECT_EQ(figure(3).detail, "+12.67% of net deposits");
  // Past prices have not moved.
  EXPECT_EQ(figure(4).title, "Return");
  EXPECT_EQ(value(4), "+0.00%");
  EXPECT_EQ(page.title(), "2 portfolios, in CAD");
  EXPECT_EQ(page.warning().text, "");

  EXPECT_THAT(cells(page.portfolioTable, 1),
              ElementsAre(Pair("change", "CA$32.00"), Pair("changeRate", "+16.00%"),
                          Pair("gain", "CA$32.00"), Pair("name", "Retirement"),
                          Pair("netDeposits", "CA$200.00"), Pair("share", "17.16%"),
                          Pair("value", "CA$232.00")));
  EXPECT_THAT(cells(page.portfolioTable, 2),
              AllOf(Contains(Pair("name", "All portfolios")), Contains(Pair("share", "100.00%")),
                    Contains(Pair("value", "CA$1,352.00"))));
  EXPECT_THAT(cells(page.holdingTable, 1),
              ElementsAre(Pair("change", "CA$32.00"), Pair("changeRate", "+25.00%"),
                          Pair("gain", "CA$32.00"), Pair("portfolios", "Retirement"),
                          Pair("price", "$10.00"), Pair("share", "11.83%"), Pair("shares", "8"),
                          Pair("symbol", "XYZ"), Pair("value", "CA$160.00")));
  EXPECT_EQ(page.holdingTable.numberOfRows(), 5U) << "two equities, two currencies and the sum";
  EXPECT_THAT(cells(page.holdingTable, 2), Not(Contains(Pair("change", "—")))) << "it is cash";
  EXPECT_THAT(page.currencyTable.records(), SizeIs(2));

  ASSERT_TRUE(page.chart.interactiveDataSet);
  // 400 + 60 × 10, and (36 + 8 × 8) × 2 on top of it.
  EXPECT_EQ(page.chart.interactiveDataSet->entries.back().y, 1200);
  EXPECT_EQ(page.chart.interactiveDataSet->entries.back().base, 1000);
  EXPECT_EQ(page.chart.noninteractiveDataSets().back().entries.back().y, 1200) << "net deposits";
}

TEST_F(OverviewScreenTest, SaysOfWhenThePricesAreWhenTheMarketIsClosed) {
  fillBoth();
  now = day(2021, 3, 11);
  open();
  EXPECT_EQ(figure(1).title, "Latest change");
  EXPECT_THAT(figure(1).detail, HasSubstr("as of March 10, 2021"));
}

TEST_F(OverviewScreenTest, ExplainsItsFiguresByRows) {
  fillBoth();
  open();
  const auto total = figure(0).explain();
  EXPECT_EQ(total->value, 1352);
  EXPECT_EQ(figure(1).explain()->value, 152);
  const auto deposits = figure(2).explain();
  EXPECT_EQ(deposits->value, 1200);
  EXPECT_TRUE(deposits->children[0].children[0].children[0].children[0].row)
      << "the row of the deposit";
  EXPECT_EQ(figure(3).explain()->value, 152);
  for (std::size_t row = 0; row < page.holdingTable.numberOfRows(); ++row) {
    constexpr std::size_t valueColumn = 3;
    EXPECT_EQ(page.holdingTable.trailOf(row, valueColumn)()->value,
              *page.holdingTable.records()[row].line.value);
  }
}

TEST_F(OverviewScreenTest, OpensPortfoliosAndEquities) {
  fillBoth();
  std::vector<PortfolioPointer> portfolios;
  std::vector<EquityPointer> equities;
  page.openPortfolioHandler = [&](const auto& opened) { portfolios.push_back(opened); };
  page.openEquityHandler = [&](const auto& opened) { equities.push_back(opened); };
  open();
  for (std::size_t row = 0; row < 6; ++row) {
    page.openPortfolioRow(row);
    page.openHoldingRow(row);
  }
  EXPECT_THAT(portfolios, ElementsAre(portfolio, retirement)) << "the sum opens nothing";
  EXPECT_THAT(equities, ElementsAre(abc, xyz));
}

TEST_F(OverviewScreenTest, FollowsRefreshesWithoutPastPricesAndOnlyWhileItIsShown) {
  fillBoth();
  open();
  const std::size_t asked = market->queries.size();
  price(abc, 13, 10);
  refreshed();
  EXPECT_EQ(value(0), "CA$1,412.00");
  EXPECT_EQ(market->queries.size(), asked);
  EXPECT_FALSE(page.isBusy());

  reports->show(std::nullopt);
  const auto before = page.overview();
  price(abc, 14, 10);
  refreshed();
  EXPECT_EQ(page.overview(), before) << "nothing is worked out for nobody";
  EXPECT_EQ(market->queries.size(), asked);
  reports->show(WorkspaceReport::overview);
  EXPECT_EQ(value(0), "CA$1,472.00");
  settle();

  record({on(day(2021, 3, 9)).deposit("50")});
  waitUntil([&] { return value(0) == "CA$1,522.00" && !page.isBusy(); });
  EXPECT_EQ(page.chart.interactiveDataSet->entries.back().y, 1250);
}

TEST_F(OverviewScreenTest, AsksForTheRateOfAnotherCurrency) {
  fillBoth();
  market->latest[canadianRate->id()] = dec("0.5");
  open();
  // No portfolio needs it for its own heading, so nobody else refreshes it.
  EXPECT_THAT(market->refreshed, Each("FX USD/CAD"));
  page.chooseCurrency(1);
  settle();
  EXPECT_THAT(market->refreshed, Contains(canadianRate->id()));
  EXPECT_EQ(page.title(), "2 portfolios, in USD");
  EXPECT_EQ(value(0), "$676.00");
  EXPECT_EQ(page.warning().text,
            "⚠️ Past prices or rates of CAD could not be had, so there is no "
            "chart and no return.");
}

TEST_F(OverviewScreenTest, HasNoTotalsWithoutAPriceUntilItIsLeftOut) {
  fillBoth();
  xyz->recentPrice.reset();
  open();
  EXPECT_EQ(value(0), "—");
  EXPECT_EQ(cells(page.portfolioTable, 0).at("value"), "CA$1,120.00") << "which is known";
  EXPECT_THAT(page.warning().text, AllOf(HasSubstr("XYZ"), HasSubstr("no totals")));
  ASSERT_TRUE(page.warning().canLeaveOut);
  page.leaveOutAction();
  EXPECT_EQ(value(0), "CA$1,192.00");  // 1,120 + 36 × 2
  EXPECT_EQ(value(3), "—");
  EXPECT_EQ(page.warning().text, "⚠️ Left out, since no prices or rates could be had: XYZ.");
  EXPECT_EQ(figure(0).explain, nullptr) << "the trail would have all of it";
  xyz->recentPrice = 10;
  page.retryAction();
  settle();
  EXPECT_EQ(value(0), "CA$1,352.00");
  EXPECT_EQ(page.warning().text, "");
}

TEST_F(OverviewScreenTest, LeavesOutWhatHasNoPastPrices) {
  fillBoth();
  closes.erase("XYZ");
  open();
  EXPECT_EQ(value(0), "CA$1,352.00") << "the latest prices are all there";
  EXPECT_EQ(value(4), "—");
  EXPECT_TRUE(page.chart.isEmpty());
  EXPECT_THAT(page.chart.noDataText, HasSubstr("XYZ"));
  EXPECT_TRUE(page.warning().canLeaveOut);
  page.leaveOutAction();
  settle();
  EXPECT_FALSE(page.chart.isEmpty());
  EXPECT_EQ(value(0), "CA$1,352.00");
}

TEST_F(OverviewScreenTest, IsShortForOnePortfolioAndSaysThatThereIsNone) {
  record({on(day(2021, 3, 1)).deposit("1000"), buy("60", "600")});
  manager->removePortfolio(retirement);
  open();
  EXPECT_EQ(page.title(), "Taxable, in CAD");
  EXPECT_EQ(figure(0).detail, "in one portfolio");
  EXPECT_EQ(page.portfolioTable.numberOfRows(), 1U) << "a sum of one line says nothing";
  EXPECT_THAT(page.currencies(), SizeIs(1));

  manager->removePortfolio(portfolio);
  reports->portfoliosDidChange();
  EXPECT_EQ(page.message(), "No portfolios yet.");
  EXPECT_THAT(page.figures(), IsEmpty());
  EXPECT_EQ(page.portfolioTable.numberOfRows(), 0U);
  EXPECT_FALSE(page.isBusy());
}

TEST_F(OverviewScreenTest, WritesEachOfItsLists) {
  fillBoth();
  open();
  const auto portfolios = page.makeExporter(OverviewSection::portfolios);
  ASSERT_EQ(portfolios->exportRowCount(), 2U) << "without the sum";
  EXPECT_EQ(portfolios->exportValue(1, "portfolio"), "Retirement");
  EXPECT_EQ(portfolios->exportValue(1, "value"), "CA$232.00");
  EXPECT_EQ(portfolios->exportValue(1, "dayRate"), "0.16");
  const auto holdings = page.makeExporter(OverviewSection::holdings);
  ASSERT_EQ(holdings->exportRowCount(), 4U);
  EXPECT_EQ(holdings->exportValue(1, "symbol"), "XYZ");
  EXPECT_EQ(holdings->exportValue(1, "unrealizedGain"), "CA$32.00");
  EXPECT_EQ(holdings->exportValue(2, "kind"), "cash");
  EXPECT_EQ(page.makeExporter(OverviewSection::currencies)->exportRowCount(), 2U);
  EXPECT_EQ(reports->makeExporter()->exportRowCount(), 4U);
}

TEST_F(OverviewScreenTest, ChoosesTheDaysOfTheChartAlone) {
  fillBoth();
  open();
  reports->overviewDatesPicker.chooseStartDate({2021, 3, 5});
  settle();
  EXPECT_EQ(page.chart.interactiveDataSet->entries.front().y, 1200) << "the day before";
  EXPECT_EQ(reports->datesPicker.startDate(), (YearMonthDay{2021, 3, 1})) << "that of the returns";
  EXPECT_EQ(value(0), "CA$1,352.00");
}

}  // namespace
}  // namespace corvane::testing
