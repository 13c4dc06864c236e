// The screen of a portfolio: what it fetches when, and what it says of what came.

#include "presentation/portfolio/portfolio_view_controller.h"

#include "marketdata/cache/cache_quote_provider.h"
#include "marketdata/chain/switchable_quote_provider.h"
#include "platform/net/url_request.h"
#include "presentation/performance/performance_warning.h"
#include "presentation/portfolio_screen_world.h"
#include "presentation/screen/segue.h"
#include "storage/application/watchlist_manager.h"
#include "support/log_capture.h"

namespace corvane::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::testing::StartsWith;

class PortfolioViewControllerTest : public PortfolioScreenWorld {
 protected:
  void show() {
    screen->setPortfolio(portfolio);
    settle();
  }
  void settle() {
    waitUntil([this] { return !screen->isFetching(); });
  }
  /// Lets the news of an edit arrive, and the prices that it has asked for.
  void settleAfterEdit() {
    MainLoop::drain();
    settle();
  }

  std::vector<std::string> presetLabels() const {
    std::vector<std::string> labels;
    for (const auto& preset : screen->datesPicker.presets()) {
      labels.push_back(preset.label);
    }
    return labels;
  }
  std::vector<std::string> assetTitles() const {
    std::vector<std::string> titles;
    for (const auto& item : screen->assetMenu().items()) {
      titles.push_back(item.isSeparator ? "-" : item.title);
    }
    return titles;
  }
  /// The label and the last value of each series, the one that the pointer follows last.
  std::vector<std::string> series() const {
    std::vector<std::string> texts;
    const auto add = [&](const ChartDataSet& set) {
      texts.push_back(set.label + " " + Decimal::fromDouble(set.entries.back().y).description());
    };
    for (const ChartDataSet& set : screen->chart.noninteractiveDataSets()) {
      EXPECT_FALSE(set.isHighlightEnabled);
      add(set);
    }
    if (screen->chart.interactiveDataSet) {
      add(*screen->chart.interactiveDataSet);
    }
    return texts;
  }
  void buySomeOfEach() {
    quoteDollars(2);
    closes["ABC"] = 7;
    closes["XYZ"] = 5;
    on(day(2021, 3, 1));
    record(
        {deposit("1000"), depositDollars("500"), buy("10", "50"), buyForeign("20", "100", "200")});
    MainLoop::drain();
  }

  std::shared_ptr<PortfolioViewController> screen = PortfolioViewController::make(surroundings);
};

TEST_F(PortfolioViewControllerTest, SaysThatNothingIsSelected) {
  EXPECT_EQ(screen->chart.noDataText, "No portfolio selected.");
  EXPECT_FALSE(screen->canCreateTransaction());
  buySomeOfEach();
  show();
  EXPECT_TRUE(screen->canCreateTransaction());
  EXPECT_EQ(screen->transactions->numberOfRows(), 4U);
  screen->setPortfolio(nullptr);
  EXPECT_TRUE(screen->chart.isEmpty());
  EXPECT_EQ(screen->chart.noDataText, "No portfolio selected.");
  EXPECT_EQ(screen->heading().name, "");
  EXPECT_EQ(screen->transactions->numberOfRows(), 0U);
  EXPECT_EQ(screen->holdings->numberOfRows(), 0U);
  EXPECT_THAT(assetTitles(), ElementsAre("All"));
}

TEST_F(PortfolioViewControllerTest, ShowsAnEmptyPortfolio) {
  show();
  EXPECT_EQ(screen->heading().value, "Empty portfolio");
  EXPECT_TRUE(screen->heading().summary.isEmpty());
  EXPECT_TRUE(screen->chart.isEmpty());
  EXPECT_EQ(screen->chart.noDataText, "Nothing was held on these days.");
  EXPECT_EQ(screen->datesPicker.startDate(), (YearMonthDay{2021, 1, 1}));
  EXPECT_EQ(screen->datesPicker.endDate(), (YearMonthDay{2021, 12, 31}));
  EXPECT_TRUE(screen->datesPicker.isPresetMenuHidden());
  EXPECT_EQ(screen->warning(), "");
  EXPECT_THAT(errors, IsEmpty());
}

TEST_F(PortfolioViewControllerTest, SaysInWordsWhatNoChartCanShow) {
  buySomeOfEach();
  show();
  screen->datesPicker.chooseStartDate({2021, 3, 2});
  screen->datesPicker.chooseEndDate({2021, 3, 2});
  settle();
  EXPECT_TRUE(screen->chart.isEmpty());
  EXPECT_THAT(screen->chart.noDataText, StartsWith("CA$1,000.00 on March 2, 2021."));
}

TEST_F(PortfolioViewControllerTest, HeadsWithTheValueAtTheStalestPrice) {
  buySomeOfEach();
  abc->recentPrice = 8;
  abc->recentDate = day(2021, 3, 9);
  xyz->recentPrice = 6;
  xyz->recentDate = day(2021, 3, 8);
  show();
  // 950 + 400 * 2 + 10 * 8 + 20 * 6 * 2, of which 1000 + 500 * 2 were deposited.
  EXPECT_EQ(screen->heading().value, "CA$2,070.00");
  EXPECT_THAT(screen->heading().summary.plainText(),
              StartsWith("(▲ CA$70.00) as of March 8, 2021 at 12:00:00"));
  EXPECT_THAT(screen->heading().summary.plainText(), ::testing::EndsWith("."));

  xyz->recentPrice.reset();
  NotificationCenter::defaultCenter().post(WatchlistManager::didRefreshPortfolioEquities, nullptr,
                                           {portfolio});
  const std::size_t asked = prices->queries.size();
  MainLoop::drain();
  EXPECT_EQ(screen->heading().value, "⚠️");
  EXPECT_EQ(screen->heading().summary.plainText(), "Current portfolio value is indeterminate");
  EXPECT_EQ(prices->queries.size(), asked) << "a refresh is for the heading alone";

  xyz->recentPrice = 6;
  prices->exchangeRateEquity(Currency::usd(), Currency::cad())->recentPrice.reset();
  screen->reload(PortfolioViewController::PortfolioChanged{});
  EXPECT_EQ(screen->heading().value, "⚠️");
}

TEST_F(PortfolioViewControllerTest, OffersTheYearsOfTheLedger) {
  on(day(2019, 6, 15));
  record({deposit("1")});
  on(day(2021, 2, 1));
  record({deposit("1")});
  screen->datesPicker.setDates({2018, 1, 1}, {2018, 12, 31});
  show();
  EXPECT_THAT(presetLabels(),
              ElementsAre("All time", "—", "Year to date", "Past month", "Past 3 months",
                          "Past 6 months", "Past year", "—", "2020", "2019"));
  EXPECT_EQ(screen->datesPicker.startDate(), (YearMonthDay{2019, 6, 15}));
  EXPECT_EQ(screen->datesPicker.endDate(), (YearMonthDay{2021, 3, 10}));
  EXPECT_EQ(screen->datesPicker.presetTitle(), "All time");
  screen->datesPicker.choosePreset(4);
  settle();
  EXPECT_EQ(screen->currentData().ymdRange,
            (ClosedRange<YearMonthDay>({2020, 12, 10}, {2021, 3, 10})));
  EXPECT_EQ(screen->transactions->title(), "Showing 1 of 2 transactions");

  // Within the current year there is no year to offer.
  undo->undo();
  undo->undo();
  on(day(2021, 1, 4));
  record({deposit("1")});
  settleAfterEdit();
  EXPECT_EQ(presetLabels().back(), "Past year");
}

TEST_F(PortfolioViewControllerTest, StaysWithAllTimeFromPortfolioToPortfolio) {
  on(day(2020, 6, 15));
  record({deposit("1")});
  show();
  ASSERT_EQ(screen->datesPicker.presetTitle(), "All time");
  const PortfolioPointer older = manager->createPortfolio(Currency::cad());
  manager->recordTransactions({on(day(2017, 2, 1)).deposit("1")}, older, nullptr);
  const PortfolioPointer empty = manager->createPortfolio(Currency::cad());
  for (const PortfolioPointer& next : {older, empty, older, portfolio}) {
    screen->setPortfolio(next);
    settle();
    EXPECT_EQ(screen->datesPicker.presetTitle(), next == empty ? "Custom Range" : "All time");
  }
  EXPECT_EQ(screen->datesPicker.startDate(), (YearMonthDay{2020, 6, 15}));

  // Days of one's own stay what they are.
  screen->datesPicker.choosePreset(3);
  settle();
  screen->setPortfolio(older);
  settle();
  EXPECT_EQ(screen->datesPicker.presetTitle(), "Past month");
}

TEST_F(PortfolioViewControllerTest, StacksTheSeriesUpToTheTotal) {
  buySomeOfEach();
  show();
  EXPECT_THAT(assetTitles(), ElementsAre("All", "ABC", "XYZ", "-", "CAD", "USD"));
  EXPECT_THAT(series(), ElementsAre("CAD 950", "ABC 1020", "Net Deposits 2000", "XYZ 1220"));
  EXPECT_EQ(screen->chart.axisMinimum, 0);
  EXPECT_EQ(screen->chart.openingValue(), 0) << "before the first day";
  EXPECT_EQ(screen->chart.closingValue(), 1220);
  const ChartDataSet& top = *screen->chart.interactiveDataSet;
  EXPECT_THAT(top.entries, SizeIs(11)) << "the days to today, and the one before";
  EXPECT_EQ(top.entries.back().x, 10);
  const auto& others = screen->chart.noninteractiveDataSets();
  EXPECT_EQ(others[0].fill, Colour(Colour::Name::systemBlue).withAlpha(0.5));
  EXPECT_NE(others[1].fill, others[0].fill) << "neighbours differ in their tone";
  EXPECT_NE(top.fill, others[1].fill);
  EXPECT_FALSE(others[2].fill);
  EXPECT_EQ(top.entries.back().base, 1020) << "a band stands on the one below";
  std::vector<std::string> legend;
  for (const ChartLegendEntry& entry : screen->chart.legend()) {
    legend.push_back(entry.label);
  }
  EXPECT_THAT(legend, ElementsAre("XYZ", "ABC", "CAD", "Net Deposits"));
  ASSERT_THAT(screen->chart.xAxisLimitLines, SizeIs(10)) << "one for each of the chosen days";
  EXPECT_EQ(screen->chart.xAxisLimitLines.front().label, "Mar 01");
  EXPECT_EQ(screen->chart.accessibleText,
            "From CA$0.00 on February 28, 2021 to CA$1,220.00 on March 10, 2021.");
  screen->chart.pointerMovedTo(3);
  EXPECT_EQ(screen->chart.tooltip()->plainText(), "CA$1,020.00\nMarch 3, 2021");

  portfolio->allowsNegativeBalances = true;
  screen->chooseAsset(2);
  EXPECT_THAT(series(), ElementsAre("XYZ 200"));
  EXPECT_FALSE(screen->chart.axisMinimum);
  screen->chooseAsset(4);
  EXPECT_THAT(series(), ElementsAre("Net Deposits 2000", "CAD 950"));
  screen->chooseAsset(3);
  EXPECT_EQ(screen->assetMenu().selectedIndex(), 4U) << "a separator is no choice";
}

TEST_F(PortfolioViewControllerTest, FetchesForDaysAndEditsButNotForAssets) {
  buySomeOfEach();
  show();
  const std::size_t each = prices->queries.size();
  EXPECT_EQ(each, 3U);
  screen->chooseAsset(1);
  EXPECT_FALSE(screen->isFetching());
  EXPECT_EQ(prices->queries.size(), each);

  screen->datesPicker.chooseStartDate({2021, 3, 4});
  EXPECT_TRUE(screen->isFetching());
  settle();
  EXPECT_EQ(prices->queries.size(), 2 * each);
  EXPECT_EQ(screen->currentData().snapshotGroup->sortedSnapshots.front().ymd,
            (YearMonthDay{2021, 3, 3}));
  EXPECT_EQ(screen->assetMenu().selectedIndex(), 1U);

  NotificationCenter::defaultCenter().post(WatchlistManager::quoteDataSourceChanged, nullptr);
  settleAfterEdit();
  EXPECT_EQ(prices->queries.size(), 3 * each) << "of another source";

  on(day(2020, 12, 1));
  const auto rows = record({deposit("5")});
  settleAfterEdit();
  EXPECT_EQ(prices->queries.size(), 4 * each);
  EXPECT_EQ(presetLabels().back(), "2020");

  const auto other = manager->createPortfolio(Currency::cad());
  manager->recordTransactions({deposit("1")}, other, nullptr);
  MainLoop::drain();
  EXPECT_FALSE(screen->isFetching()) << "another portfolio is none of its business";
}

TEST_F(PortfolioViewControllerTest, ShowsTheRowsOfAnEditBeforeThePricesCome) {
  buySomeOfEach();
  show();
  on(day(2021, 3, 8));
  record({deposit("5")});
  MainLoop::drain();
  EXPECT_EQ(screen->transactions->numberOfRows(), 5U);
  EXPECT_THAT(screen->transactions->selectedRows(), ElementsAre(4U));
  screen->transactions->setSelectedRows({0});
  settle();
  EXPECT_THAT(screen->transactions->selectedRows(), ElementsAre(0U))
      << "the prices must not take away what the user has selected meanwhile";
}

TEST_F(PortfolioViewControllerTest, WarnsOfWhatCouldNotBePriced) {
  buySomeOfEach();
  closes.erase("XYZ");
  closes.erase(prices->exchangeRateEquity(Currency::usd(), Currency::cad())->id());
  const LogCapture capture;
  show();
  const std::string log = capture.text();
  EXPECT_THAT(log, HasSubstr("Failed to fetch past performance for XYZ: "));
  EXPECT_THAT(log, HasSubstr("Failed to fetch exchange rates for USD: "));
  EXPECT_EQ(screen->warning(),
            "⚠️ Past performance is unavailable for symbol (XYZ) and currency (USD). Graphed "
            "totals may be understated.");
  EXPECT_THAT(errors, IsEmpty());
  EXPECT_THAT(series(), ElementsAre("CAD 950", "ABC 1020", "Net Deposits 1000", "XYZ 1020"));
  const auto other = manager->createPortfolio(Currency::cad());
  screen->setPortfolio(other);
  EXPECT_EQ(screen->warning(), "");
  settle();
}

TEST_F(PortfolioViewControllerTest, ShowsWhatTheCacheHasWhileTheMarketCannotBeReached) {
  const auto chain =
      std::make_shared<SwitchableQuoteProvider>(prices, folder.path() / "cache.sqlite3");
  manager->quoteProvider = chain;
  const auto make = [&](const char* id) {
    const EquityPointer equity = chain->equityWithId(id);
    equity->currency = Currency::cad();
    equity->calendar = manager->calendar;
    chain->smartQuoteProvider->cacheProvider->storeEquity(equity);
    return equity;
  };
  const EquityPointer kept = make("KEPT");
  const EquityPointer unknown = make("NEW");
  bool isOnline = true;
  prices->script = [&](const QuoteQuery& query) -> ScriptedQuoteProvider::Answer {
    if (!isOnline || query.equity == unknown) {
      return failure(URLError(URLError::Code::cannotFindHost, "https://nowhere", ""));
    }
    Quote bar;
    bar.open = bar.close = 7;
    auto answer = ScriptedQuoteProvider::quotes(
        ScriptedQuoteProvider::dailyBars(query, [&](YearMonthDay) { return std::optional(bar); }));
    answer->durableDateRange = {query.dateRange.lower(),
                                std::min(query.dateRange.upper(), day(2021, 3, 8))};
    return answer;
  };
  on(day(2021, 3, 1));
  record({deposit("1000"), Ledger::make(BasicTransaction::Trade{
                               kept, {Currency::cad(), dec("50")}, dec("50"), dec("10")})});
  MainLoop::drain();
  show();
  EXPECT_EQ(screen->warning(), "");
  const auto online = series();
  EXPECT_THAT(online, ElementsAre("CAD 950", "Net Deposits 1000", "KEPT 1020"));

  isOnline = false;
  screen->setPortfolio(portfolio);
  settle();
  EXPECT_EQ(series(), online);
  EXPECT_THAT(screen->warning(), StartsWith("⚠️ The market cannot be reached. Prices from the "
                                            "cache, up to March 7, 2021 at 4:00:00"));
  // A price of two days later was refreshed before the network went, and is final with the next
  // day.
  kept->recentPrice = 8;
  kept->recentDate = day(2021, 3, 9);
  screen->reload(PortfolioViewController::DatesChanged{});
  settle();
  EXPECT_THAT(series(), ElementsAre("CAD 950", "Net Deposits 1000", "KEPT 1030"));
  EXPECT_THAT(screen->warning(), HasSubstr("cache, up to March 9, 2021 at 12:00:00"));
  record({Ledger::make(
      BasicTransaction::Trade{unknown, {Currency::cad(), dec("50")}, dec("50"), dec("10")})});
  settleAfterEdit();
  EXPECT_THAT(screen->warning(),
              HasSubstr(". ⚠️ Past performance is unavailable for symbol (NEW)"));
  chain->dataSource = SwitchableQuoteProvider::DataSource::sourceOnly;
  screen->reload(PortfolioViewController::DatesChanged{});
  settle();
  EXPECT_THAT(screen->warning(), HasSubstr("unavailable for symbols (KEPT, NEW)"))
      << "who wants the network alone gets nothing else";

  chain->dataSource = SwitchableQuoteProvider::DataSource::sourceAndCache;
  screen->reload(PortfolioViewController::DatesChanged{});
  settle();
  isOnline = true;
  NotificationCenter::defaultCenter().post(WatchlistManager::didRefreshPortfolioEquities, nullptr,
                                           {portfolio});
  settleAfterEdit();
  EXPECT_THAT(screen->warning(),
              StartsWith("⚠️ Past performance is unavailable for symbol (NEW). "));
}

TEST(PerformanceWarning, CountsWhatIsTooMuchToName) {
  EXPECT_EQ(performanceWarning({}, {}), "");
  EXPECT_THAT(performanceWarning({"E", "D", "C", "B", "A"}, {}),
              HasSubstr("for symbols (A, B, C, D, E). "));
  EXPECT_THAT(performanceWarning({"F", "E", "D", "C", "B", "A"}, {"USD", "EUR"}),
              HasSubstr("for 6\u00A0symbols and currencies (EUR, USD). "));
}

TEST_F(PortfolioViewControllerTest, PresentsALedgerThatDoesNotAddUpAndKeepsThePrices) {
  buySomeOfEach();
  show();
  rows()[2]->sharesNet = 999;
  screen->datesPicker.chooseStartDate({2021, 3, 4});
  settle();
  EXPECT_THAT(errors, SizeIs(1));
  EXPECT_FALSE(screen->chart.isEmpty()) << "the last snapshots stay";
}

TEST_F(PortfolioViewControllerTest, IgnoresPricesOfAPortfolioThatIsNoLongerShown) {
  buySomeOfEach();
  screen->setPortfolio(portfolio);
  const auto other = manager->createPortfolio(Currency::cad());
  screen->setPortfolio(other);
  settle();
  EXPECT_THAT(assetTitles(), ElementsAre("All"));
  EXPECT_TRUE(screen->holdings->assetEntries().empty());

  // Nobody waits for the prices of a screen that is gone.
  screen->setPortfolio(portfolio);
  const std::weak_ptr<PortfolioViewController> gone = screen;
  screen.reset();
  EXPECT_TRUE(gone.expired());
  record({deposit("1")});
  MainLoop::drain();
}

TEST_F(PortfolioViewControllerTest, RemembersTheTabAndOpensForms) {
  EXPECT_EQ(screen->selectedTabIndex(), 0U);
  screen->selectTab(2);
  EXPECT_EQ(PortfolioViewController::make(surroundings)->selectedTabIndex(), 2U);
  EXPECT_EQ(defaults.integer("portfolioDetail.lastTabIndex"), 2);
  defaults.set("portfolioDetail.lastTabIndex", JSONValue(std::int64_t{7}));
  EXPECT_EQ(screen->selectedTabIndex(), 0U);

  std::vector<std::string> opened;
  screen->performSegue = [&](const auto& segue) { opened.emplace_back(segueIdentifier(segue)); };
  screen->createTransactionAction();
  EXPECT_THAT(opened, IsEmpty());
  EXPECT_EQ(screen->makeEditPortfolioForm(), nullptr);
  show();
  screen->createTransactionAction();
  screen->editPortfolioAction();
  EXPECT_THAT(opened, ElementsAre("CreateTransaction", "EditPortfolio"));
  const auto form = screen->makeEditPortfolioForm();
  form->load();
  form->nameField.text = "Savings";
  form->completionHandler = [](const PortfolioPointer&) {};
  form->performAction(EditPortfolioViewController::Sender::goButton);
  settleAfterEdit();
  EXPECT_EQ(screen->heading().name, "Savings");
}

TEST_F(PortfolioViewControllerTest, SendsCommandsToTheSelectedTabOnly) {
  record({on(day(2021, 3, 1)).deposit("1")});
  show();
  screen->transactions->setSelectedRows({0});
  EXPECT_FALSE(screen->transactions->canModifyAndDelete()) << "the holdings are shown";
  screen->selectTab(1);
  EXPECT_TRUE(screen->transactions->canModifyAndDelete());
  screen->selectTab(2);
  EXPECT_FALSE(screen->transactions->canModifyAndDelete());
}

TEST_F(PortfolioViewControllerTest, OpensTheFormForACopyOfARow) {
  record({on(day(2021, 3, 1)).deposit("17")});
  show();
  screen->selectTab(1);
  std::unique_ptr<EditTransactionViewController> form;
  screen->performSegue = [&](const PortfolioViewController::Segue& segue) {
    form = screen->makeCreateTransactionForm(
        std::get<PortfolioViewController::CreateTransaction>(segue));
  };
  screen->transactions->setSelectedRows({0});
  screen->transactions->duplicateTransactionAction();
  ASSERT_NE(form, nullptr);
  form->load();
  EXPECT_EQ(form->totalAmountField.value(), 17);
  EXPECT_EQ(form->transactionDatePicker.day(), (YearMonthDay{2021, 3, 10}));
}

TEST_F(PortfolioViewControllerTest, PlacesWhatAFormHasMade) {
  EXPECT_FALSE(screen->placeOrder({Order::Deposit{cad("1")}}, portfolio));
  EXPECT_FALSE(screen->placeOrder({Order::Record{withdrawal("1")}}, portfolio));
  EXPECT_THAT(errors, SizeIs(2));
  EXPECT_TRUE(screen->placeOrder({Order::Record{deposit("1")}}, portfolio));
  EXPECT_EQ(undo->undoActionName(), "New Transaction");
  EXPECT_THAT(rows(), SizeIs(1));
}

}  // namespace
}  // namespace corvane::testing
