// The source list and the frame around it.

#include "presentation/frame/main_split_view_controller.h"

#include "platform/net/url_request.h"
#include "platform/text/formats/date_formatter.h"
#include "presentation/portfolio_screen_world.h"
#include "presentation/screen/segue.h"
#include "storage/application/watchlist_manager.h"

namespace corvane::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using DetailTab = MainSplitViewController::DetailTab;

class MainSplitViewControllerTest : public PortfolioScreenWorld {
 protected:
  MainSplitViewControllerTest() {
    list.changeHandler = [this](const auto& update) { updates.push_back(update); };
    model->portfolioManagers = {manager};
    for (const char* symbol : {"AA", "BB", "CC"}) {
      const EquityPointer equity = prices->equityWithId(symbol);
      equity->calendar = manager->calendar;
      equity->currency = Currency::usd();
      model->watchlistEquities.push_back(equity);
    }
    prices->script = [this](const QuoteQuery&) {
      Quote bar;
      bar.fromDate = now - 60;
      bar.toDate = now;
      bar.close = 5;
      return ScriptedQuoteProvider::quotes({bar});
    };
  }

  void open() { frame->setDocumentModel(model); }
  std::string symbols() const {
    std::string text;
    for (const auto& equity : model->watchlistEquities) {
      text += equity->symbol + " ";
    }
    return text;
  }
  template <typename Payload>
  static void post(const Topic<Payload>& topic, std::type_identity_t<Payload> payload) {
    NotificationCenter::defaultCenter().post(topic, nullptr, std::move(payload));
    MainLoop::drain();
  }
  /// Gives an equity a price and the session that it was paid in.
  void quote(const EquityPointer& equity) {
    equity->isAuthoritative = true;
    equity->recentPrice = dec("10.125");
    equity->previousClosePrice = 8;
    equity->recentDate = now;
    equity->recentTradingPeriod = DateRange(now - 3600, now + 3600);
  }

  std::shared_ptr<WorkspaceModel> model = std::make_shared<WorkspaceModel>();
  std::shared_ptr<MainSplitViewController> frame = MainSplitViewController::make(surroundings);
  MasterSourceViewController& list = *frame->masterSourceViewController;
  std::vector<MasterSourceViewController::Update> updates;
};

TEST_F(MainSplitViewControllerTest, ShowsPricesAndSessionsOfTheWatchlist) {
  const EquityPointer first = model->watchlistEquities[0];
  first->name = "Aardvarks";
  open();
  EXPECT_EQ(list.numberOfWatchlistRows(), 3U);
  EXPECT_EQ(list.watchlistRow(0).price, "");
  EXPECT_TRUE(list.watchlistRow(0).change.isEmpty());
  EXPECT_THAT(prices->queries, IsEmpty()) << "no currency is known yet";

  quote(first);
  post(WatchlistManager::didRefreshWatchlistEquities, {first, abc});
  EXPECT_THAT(updates.back().reloadedWatchlistRows, ElementsAre(0U));
  waitUntil([&] { return !list.watchlistRow(0).thumbnail->isEmpty(); });
  EXPECT_EQ(prices->queries.back(), QuoteQuery::currentPeriod(first, true));
  EXPECT_EQ(list.watchlistRow(0).accessibleText(), "AA, Aardvarks, $10.125, +26.56% ▲ +$2.125");
  EXPECT_EQ(list.watchlistRow(0).thumbnail->openingValue(), 8);
  EXPECT_TRUE(list.watchlistRow(1).thumbnail->isEmpty());

  // The refresh of a newly opened workspace tells of its portfolios alone.
  quote(model->watchlistEquities[1]);
  post(WatchlistManager::didRefreshPortfolioEquities, {portfolio});
  waitUntil([&] { return !list.watchlistRow(1).thumbnail->isEmpty(); });
  EXPECT_THAT(prices->queries, SizeIs(2)) << "the first session has been fetched already";

  post(WatchlistManager::didRefreshWatchlistEquities, {first, model->watchlistEquities[1]});
  EXPECT_THAT(prices->queries, SizeIs(2)) << "nothing has been traded since";

  prices->script = [](const QuoteQuery&) { return ScriptedQuoteProvider::refusal(); };
  first->recentDate = now + 30;
  post(WatchlistManager::didRefreshWatchlistEquities, {first});
  waitUntil([&] { return list.watchlistRow(0).thumbnail->isEmpty(); });
  EXPECT_THAT(errors, IsEmpty()) << "one message a row would help nobody";
  EXPECT_THAT(prices->queries, SizeIs(3));
  post(WatchlistManager::didRefreshWatchlistEquities, {first});
  waitUntil([&] { return prices->queries.size() == 4U; });  // What failed is asked for again.

  first->refreshProblem = "AA is no longer traded.";
  EXPECT_EQ(list.watchlistRow(0).accessibleText(),
            "AA, Aardvarks, $10.125, +26.56% ▲ +$2.125, AA is no longer traded.");
}

TEST_F(MainSplitViewControllerTest, ShowsTheSessionThatTheFirstAnswerTellsOf) {
  model->watchlistEquities.resize(1);
  model->watchlistEquities[0]->isAuthoritative = true;
  prices->script = [this, script = prices->script](const QuoteQuery& query) {
    quote(query.equity);
    return script(query);
  };
  open();
  waitUntil([&] { return !list.watchlistRow(0).thumbnail->isEmpty(); });
  EXPECT_THAT(prices->queries, SizeIs(2)) << "the first one knew of no session";
}

TEST_F(MainSplitViewControllerTest, TellsTheAgeOfThePrices) {
  EXPECT_EQ(list.priceStatus(), "");
  open();
  const auto tell = [&](const WatchlistManager::Status& status) {
    updates.clear();
    post(WatchlistManager::statusDidChange, status);
    EXPECT_THAT(updates, SizeIs(1));
    return list.priceStatus();
  };
  const auto clock = [](Date date, DateFormatter::Style time,
                        DateFormatter::Style day = DateFormatter::Style::none) {
    return DateFormatter{.dateStyle = day, .timeStyle = time}.string(date);
  };
  using enum DateFormatter::Style;
  const std::string noon = clock(now, shortStyle);
  const std::string next = clock(now + 30, mediumStyle);
  EXPECT_EQ(tell({.isRefreshing = true}), "Refreshing prices…");
  EXPECT_EQ(tell({.refreshedAt = now, .nextAt = now + 30}),
            "Prices refreshed at " + noon + ". Next at " + next + ".");
  const ErrorPointer offline =
      URLError(URLError::Code::cannotFindHost, "https://nowhere", "no such host").copy();
  EXPECT_EQ(tell({.failure = offline, .failedAt = now, .nextAt = now + 30}),
            "No prices yet. Refresh failed at " + noon +
                ": The quote service cannot be reached. Next at " + next + ".");

  quote(model->watchlistEquities[0]);
  model->watchlistEquities[0]->recentDate = now - 86400;
  model->watchlistEquities[2]->refreshProblem = "CC is no longer traded.";
  EXPECT_EQ(tell({.refreshedAt = now - 60, .failure = offline, .failedAt = now}),
            "Latest price of " + clock(now - 86400, shortStyle, mediumStyle) +
                ". Refresh failed at " + noon +
                ": The quote service cannot be reached. CC is no longer traded.");
  model->watchlistEquities[1]->refreshProblem = "BB is no longer traded.";
  EXPECT_EQ(tell({.refreshedAt = now}),
            "Prices refreshed at " + noon + ". BB is no longer traded. 1 more without a price.");
}

TEST_F(MainSplitViewControllerTest, ShowsWhatPortfoliosAreWorth) {
  open();
  portfolio->name = "Savings";
  record({deposit("1000"), buy("10", "100")});
  MainLoop::drain();
  EXPECT_THAT(updates.back().reloadedPortfolioRows, ElementsAre(0U));
  EXPECT_EQ(list.portfolioRow(0).value, "⚠️");
  EXPECT_TRUE(list.portfolioRow(0).gain.isEmpty());
  EXPECT_EQ(list.portfolioRow(0).accessibleText(),
            "Savings, Current portfolio value is indeterminate");
  abc->recentPrice = 9;
  post(WatchlistManager::didRefreshPortfolioEquities, {portfolio});
  EXPECT_THAT(updates.back().reloadedPortfolioRows, ElementsAre(0U));
  EXPECT_EQ(list.portfolioRow(0).accessibleText(), "Savings, CA$990.00, ▼ -CA$10.00");
  // A name from right to left leaves the amounts behind it.
  portfolio->name = "חסכונות";
  EXPECT_EQ(list.portfolioRow(0).accessibleText(), "\u2068חסכונות\u2069, CA$990.00, ▼ -CA$10.00");
  EXPECT_EQ(list.portfolioRow(0).name, "חסכונות");
}

TEST_F(MainSplitViewControllerTest, ShowsOneSelectedObjectAtATime) {
  open();
  list.setCurrentDetailObject({});
  EXPECT_EQ(frame->currentDetailTab(), DetailTab::emptyState);
  EXPECT_EQ(frame->emptyStateMessage(), "No equity or portfolio selected.");
  list.selectWatchlistRows({1});
  EXPECT_EQ(frame->currentDetailTab(), DetailTab::equity);
  EXPECT_EQ(frame->equityViewController->currentEquity(), model->watchlistEquities[1]);
  list.selectPortfolioRow(0);
  EXPECT_EQ(frame->currentDetailTab(), DetailTab::portfolio);
  EXPECT_THAT(list.selectedWatchlistRows(), IsEmpty());
  EXPECT_EQ(frame->portfolioViewController->currentData().portfolio, portfolio);
  list.selectPortfolioRow(std::nullopt);
  EXPECT_EQ(list.selectedPortfolioRow(), 0U) << "a portfolio stays selected";
  list.selectWatchlistRows({0, 2});
  EXPECT_FALSE(list.selectedPortfolioRow());
  EXPECT_EQ(frame->currentDetailTab(), DetailTab::portfolio) << "two rows show nothing new";
  list.selectWatchlistRows({2});
  EXPECT_EQ(frame->portfolioViewController->currentData().portfolio, nullptr)
      << "a hidden screen fetches nothing";

  model->watchlistEquities.clear();
  model->portfolioManagers.clear();
  EXPECT_EQ(frame->emptyStateMessage(),
            "Search for an equity or create a portfolio to get started!");
}

TEST_F(MainSplitViewControllerTest, OpensWithWhatWasShownLast) {
  open();
  EXPECT_EQ(frame->portfolioViewController->currentData().portfolio, portfolio)
      << "the first time the first portfolio";
  list.selectWatchlistRows({1});
  waitUntil([&] {
    return defaults.stringList(MainSplitViewController::lastShownUserDefaultsKey).has_value();
  });
  const auto again = MainSplitViewController::make(surroundings);
  again->setDocumentModel(model);
  EXPECT_EQ(again->currentDetailTab(), DetailTab::equity);
  EXPECT_EQ(again->equityViewController->currentEquity(), model->watchlistEquities[1]);
  EXPECT_THAT(again->masterSourceViewController->selectedWatchlistRows(), ElementsAre(1U));

  // Another workspace knows nothing of it.
  const auto other = std::make_shared<WorkspaceModel>();
  other->watchlistEquities = {abc};
  again->setDocumentModel(other);
  EXPECT_EQ(again->equityViewController->currentEquity(), abc);
  other->watchlistEquities.clear();
  again->setDocumentModel(other);
  EXPECT_EQ(again->currentDetailTab(), DetailTab::emptyState);
}

TEST_F(MainSplitViewControllerTest, ShowsFoundEquitiesAndAddsThem) {
  const auto& shown = [&] { return frame->equityViewController->currentEquity(); };
  const auto find = [&](const EquityPointer& equity) {
    list.equityComboBox.setDefaultEquities({equity});
    list.equityComboBox.changeText(equity->symbol);
    list.equityComboBox.finishEditing();
  };
  open();
  list.selectWatchlistRows({0});
  find(abc);
  EXPECT_EQ(shown(), abc);
  EXPECT_THAT(list.selectedWatchlistRows(), IsEmpty());
  EXPECT_EQ(symbols(), "AA BB CC ");
  EXPECT_TRUE(list.canAddToWatchlist());
  EXPECT_FALSE(frame->equityViewController->isWatchlistButtonHidden());
  list.addToWatchlistAction();
  EXPECT_EQ(symbols(), "AA BB CC ABC ");
  EXPECT_THAT(list.selectedWatchlistRows(), ElementsAre(3U)) << "what is shown is selected";
  EXPECT_EQ(undo->undoActionName(), "Watch “ABC”");
  EXPECT_FALSE(list.canAddToWatchlist()) << "it is watched now";
  EXPECT_TRUE(frame->equityViewController->isWatchlistButtonHidden());

  find(xyz);
  frame->equityViewController->addToWatchlistAction();
  EXPECT_EQ(symbols(), "AA BB CC ABC XYZ ");
  undo->undo();
  EXPECT_FALSE(frame->equityViewController->isWatchlistButtonHidden());
  find(model->watchlistEquities[2]);
  EXPECT_THAT(list.selectedWatchlistRows(), ElementsAre(2U));
  frame->portfolioViewController->openEquityHandler(abc);
  EXPECT_EQ(shown(), abc) << "a row of a portfolio's table leads here";
}

TEST_F(MainSplitViewControllerTest, EditsTheWatchlistUndoably) {
  open();
  list.selectWatchlistRows({0, 2});
  list.removeSelectedAction();
  EXPECT_EQ(symbols(), "BB ");
  EXPECT_THAT(list.selectedWatchlistRows(), IsEmpty());
  EXPECT_EQ(undo->undoActionName(), "Unwatch 2 Symbols");
  undo->undo();
  EXPECT_EQ(symbols(), "AA BB CC ");
  undo->redo();
  EXPECT_EQ(symbols(), "BB ");
  undo->undo();

  list.selectWatchlistRows({0});
  list.moveWatchlistRows({0}, 2);
  EXPECT_EQ(symbols(), "BB AA CC ");
  EXPECT_EQ(undo->undoActionName(), "Move “AA”");
  EXPECT_THAT(list.selectedWatchlistRows(), ElementsAre(1U));
  EXPECT_TRUE(updates.back().watchlistRowsChanged);
  list.moveWatchlistRows({2, 1}, 0);
  EXPECT_EQ(symbols(), "AA CC BB ");
  EXPECT_EQ(undo->undoActionName(), "Move 2 Symbols");
  list.moveWatchlistRows({1}, 2);
  EXPECT_EQ(undo->undoActionName(), "Move 2 Symbols") << "a row that stays is no edit";
  list.selectWatchlistRows({1, 2});
  list.moveSelectionDown();
  EXPECT_EQ(symbols(), "AA CC BB ") << "at the end already";
  list.moveSelectionUp();
  EXPECT_EQ(symbols(), "CC BB AA ");
  EXPECT_THAT(list.selectedWatchlistRows(), ElementsAre(0U, 1U));
  list.moveSelectionUp();
  list.moveSelectionDown();
  EXPECT_EQ(symbols(), "AA CC BB ");
  list.selectWatchlistRows({0});
  list.removeSelectedAction();
  EXPECT_EQ(undo->undoActionName(), "Unwatch “AA”");
}

TEST_F(MainSplitViewControllerTest, CreatesAPortfolioAndShowsIt) {
  EXPECT_FALSE(frame->canCreatePortfolio());
  EXPECT_EQ(frame->makeCreatePortfolioForm([] {}, false), nullptr);
  open();
  std::vector<std::string> segues;
  frame->performSegue = [&](const auto& segue) { segues.emplace_back(segueIdentifier(segue)); };
  frame->createPortfolioAction();
  EXPECT_THAT(segues, ElementsAre("CreatePortfolio"));
  int closed = 0;
  const auto form = frame->makeCreatePortfolioForm([&] { ++closed; }, false);
  form->load();
  form->performAction(EditPortfolioViewController::Sender::cancelButton);
  EXPECT_EQ(closed, 1);
  EXPECT_EQ(documentChanges, 0);
  form->performAction(EditPortfolioViewController::Sender::goButton);
  EXPECT_EQ(closed, 2);
  EXPECT_EQ(documentChanges, 1);
  EXPECT_EQ(list.numberOfPortfolioRows(), 2U);
  EXPECT_EQ(list.selectedPortfolioRow(), 1U);
  EXPECT_EQ(frame->portfolioViewController->currentData().portfolio, manager->portfolios()[1]);
}

TEST_F(MainSplitViewControllerTest, DeletesAPortfolioOnlyWhenTheUserAgrees) {
  open();
  portfolio->name = "Savings";
  list.selectPortfolioRow(0);
  pressedButton = 1;
  frame->portfolioViewController->deletePortfolioAction();
  EXPECT_THAT(alerts,
              ElementsAre(DocumentAlert{
                  "Are you sure you wish to delete “Savings”?",
                  "All transaction data will be permanently removed. This action cannot be undone.",
                  {"Delete", "Cancel"}}));
  EXPECT_THAT(manager->portfolios(), SizeIs(1));
  EXPECT_EQ(frame->currentDetailTab(), DetailTab::portfolio);
  EXPECT_EQ(documentChanges, 0);
  pressedButton = 0;
  frame->portfolioViewController->deletePortfolioAction();
  EXPECT_THAT(manager->portfolios(), IsEmpty());
  EXPECT_EQ(list.numberOfPortfolioRows(), 0U);
  EXPECT_EQ(frame->currentDetailTab(), DetailTab::emptyState);
  EXPECT_EQ(documentChanges, 1);
}

TEST_F(MainSplitViewControllerTest, DropsTheUndoStepsWithAPortfolio) {
  open();
  const auto rows = record({deposit("1000"), deposit("500")});
  manager->deleteTransactions({rows.back()}, portfolio, undo);
  list.selectPortfolioRow(0);
  pressedButton = 0;
  frame->portfolioViewController->deletePortfolioAction();
  const auto other = manager->createPortfolio(Currency::cad());
  EXPECT_FALSE(undo->undo());
  EXPECT_FALSE(undo->canRedo());
  EXPECT_THAT(other->transactions(), IsEmpty());
}

TEST_F(MainSplitViewControllerTest, ShowsAnewWhenASettingSaysSo) {
  open();
  list.setCurrentDetailObject(model->watchlistEquities.front());
  MainLoop::drain();
  int changes = 0;
  frame->equityViewController->changeHandler = [&] { ++changes; };
  surroundings.defaults->set("somethingElse", true);
  MainLoop::drain();
  EXPECT_EQ(changes, 0);
  for (const char* setting : {"preferLocalTimeZone", "indicateFetchedRows"}) {
    changes = 0;
    surroundings.defaults->set(setting, true);
    MainLoop::drain();
    EXPECT_GE(changes, 1) << setting;
  }
}

TEST_F(MainSplitViewControllerTest, ShowsAPortfolioWhoseRandomLedgerWasRefused) {
  open();
  for (const EquityPointer& equity : model->watchlistEquities) {
    equity->quoteProvider = manager->quoteProvider;
  }
  const auto form = frame->makeCreatePortfolioForm([] {}, true);
  form->load();
  form->trackCashAccountsButton.isOn = false;
  form->populateRandomlyButton.isOn = true;
  form->performAction(EditPortfolioViewController::Sender::goButton);
  EXPECT_THAT(errors, SizeIs(1));
  EXPECT_THAT(manager->portfolios(), SizeIs(2));
  EXPECT_FALSE(updates.empty());
  EXPECT_TRUE(updates.back().portfolioRowsChanged);
  EXPECT_EQ(documentChanges, 1);
}

}  // namespace
}  // namespace corvane::testing
