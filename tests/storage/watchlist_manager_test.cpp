#include "storage/application/watchlist_manager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <tuple>

#include "support/ledger_builder.h"

namespace corvane::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using namespace std::chrono_literals;

/// Answers refreshes on a background queue, with an error where it is told to.
class RefreshingProvider : public QuoteProvider {
 public:
  std::vector<std::set<std::string>> refreshes;  ///< the ids of each call
  bool fails = false;
  bool isSlow = false;  ///< keeps its answers
  std::vector<DispatchQueue::Work> answers;

  std::optional<Date> pauseEnd;

  [[nodiscard]] std::optional<Date> nextRequestDate() const override { return pauseEnd; }

  std::function<void()> atRefresh = [] {};

  void refreshEquities(std::vector<EquityPointer> equities, RefreshCompletion completion) override {
    atRefresh();
    auto& ids = refreshes.emplace_back();
    for (const auto& equity : equities) {
      ids.insert(equity->id());
    }
    auto answer = [fails = fails, completion = std::move(completion)]() mutable {
      completion(fails ? QuoteProviderError(QuoteProviderError::NotAvailable{}).copy() : nullptr);
    };
    if (isSlow) {
      answers.emplace_back(std::move(answer));
    } else {
      DispatchQueue::global()->async(std::move(answer));
    }
  }
};

/// A workspace with one portfolio that holds "HELD" and "BOTH" and a watchlist of "BOTH" and
/// "WATCHED", and a count of what is posted.
class WatchlistManagerTest : public ::testing::Test {
 protected:
  using WatchedIds = std::set<std::string>;

  WatchlistManagerTest() {
    model->portfolioManagers = {portfolioManager};
    portfolio = portfolioManager->createPortfolio(Currency::cad());
    portfolioManager->recordTransactions(
        {make.deposit("1000"), purchase(equity("HELD")), purchase(equity("BOTH"))}, portfolio,
        nullptr);
    model->watchlistEquities = {equity("BOTH"), equity("WATCHED")};
    auto& center = NotificationCenter::defaultCenter();
    watchlistObserver = center.addObserver(
        WatchlistManager::didRefreshWatchlistEquities, nullptr,
        [this](const EquitySet& equities) {
          WatchedIds ids;
          for (const auto& each : equities) {
            ids.insert(each->id());
          }
          watchlistNews.push_back(ids);
        },
        DispatchQueue::main());
    portfolioObserver = center.addObserver(
        WatchlistManager::didRefreshPortfolioEquities, nullptr,
        [this](const auto& portfolios) { portfolioNews.push_back(portfolios); },
        DispatchQueue::main());
  }

  EquityPointer equity(const std::string& id) {
    const auto found = provider->equityWithId(id);
    found->currency = Currency::cad();
    found->recentPrice = Decimal(10);
    return found;
  }

  std::shared_ptr<WatchlistManager> start(WatchlistManager::Intervals intervals = {
                                              .watchlistRefreshInterval = 1h,
                                              .portfolioRefreshInterval = 1h}) {
    return WatchlistManager::start([this] { return openModels; }, intervals);
  }

  static void waitFor(const std::function<bool()>& holds) {
    ASSERT_TRUE(MainLoop::runUntil(holds, 20s));
  }

  BasicTransaction purchase(const EquityPointer& what) {
    return make.make(BasicTransaction::Trade{what, Ledger::cad("10"), dec("10"), dec("1")});
  }

  Ledger make;
  std::shared_ptr<RefreshingProvider> provider = std::make_shared<RefreshingProvider>();
  std::shared_ptr<PortfolioManager> portfolioManager = std::make_shared<PortfolioManager>(provider);
  std::shared_ptr<WorkspaceModel> model = std::make_shared<WorkspaceModel>();
  std::vector<std::shared_ptr<WorkspaceModel>> openModels = {model};
  PortfolioPointer portfolio;
  std::vector<WatchedIds> watchlistNews;
  std::vector<std::vector<PortfolioPointer>> portfolioNews;
  Subscription watchlistObserver;
  Subscription portfolioObserver;
};

TEST_F(WatchlistManagerTest, WhatIsWatchedIsNotRefreshedAgainForThePortfolios) {
  const auto manager = start();
  waitFor([&] { return !watchlistNews.empty() && !portfolioNews.empty(); });
  EXPECT_THAT(provider->refreshes, ElementsAre(WatchedIds{"BOTH", "WATCHED"}, WatchedIds{"HELD"}));
  EXPECT_THAT(watchlistNews, ElementsAre(WatchedIds{"BOTH", "WATCHED"}));
  EXPECT_THAT(portfolioNews, ElementsAre(ElementsAre(portfolio)));
}

TEST_F(WatchlistManagerTest, TheTimersGoOnThroughFailuresAndWithoutDocuments) {
  provider->fails = true;
  const auto manager = start({.watchlistRefreshInterval = 10ms, .portfolioRefreshInterval = 10ms});
  waitFor([&] { return provider->refreshes.size() >= 6 && portfolioNews.size() >= 2; });
  EXPECT_THAT(watchlistNews, IsEmpty());

  openModels.clear();
  portfolioNews.clear();
  waitFor([&] { return !portfolioNews.empty() && portfolioNews.back().empty(); });
  const std::size_t before = provider->refreshes.size();
  portfolioNews.clear();
  waitFor([&] { return portfolioNews.size() >= 2; });
  EXPECT_EQ(provider->refreshes.size(), before);
}

TEST_F(WatchlistManagerTest, EachProviderIsAskedOnceAndToldOfOnSuccess) {
  const auto other = std::make_shared<RefreshingProvider>();
  const auto failing = std::make_shared<RefreshingProvider>();
  failing->fails = true;
  auto lost = std::make_shared<QuoteProvider>();
  for (const auto& [source, id] :
       {std::pair<std::shared_ptr<QuoteProvider>, std::string>(other, "O"),
        {failing, "F"},
        {lost, "L"}}) {
    model->watchlistEquities.push_back(source->equityWithId(id));
  }
  lost.reset();
  const auto manager = start();
  waitFor([&] { return watchlistNews.size() >= 2 && !portfolioNews.empty(); });
  EXPECT_THAT(other->refreshes, ElementsAre(WatchedIds{"O"}));
  EXPECT_THAT(failing->refreshes, ElementsAre(WatchedIds{"F"}));
  const WatchedIds all = {"BOTH", "WATCHED", "O", "F", "L"};
  EXPECT_THAT(watchlistNews, ElementsAre(all, all));
}

TEST_F(WatchlistManagerTest, AChangeOfTheDataSourceAndANewDocumentRefreshAtOnce) {
  const auto manager = start();
  waitFor([&] { return !watchlistNews.empty() && !portfolioNews.empty(); });
  NotificationCenter::defaultCenter().post(WatchlistManager::quoteDataSourceChanged, nullptr);
  waitFor([&] { return watchlistNews.size() == 2 && portfolioNews.size() == 2; });

  provider->refreshes.clear();
  manager->refreshModel(model);
  waitFor([&] { return portfolioNews.size() == 3; });
  EXPECT_THAT(provider->refreshes, ElementsAre(WatchedIds{"HELD"}));

  // What has just been refreshed for a document counts as fresh in the pass for the portfolios.
  provider->refreshes.clear();
  manager->refreshPortfolios();
  waitFor([&] { return portfolioNews.size() == 4; });
  EXPECT_THAT(provider->refreshes, ElementsAre(WatchedIds{"BOTH"}));
}

TEST_F(WatchlistManagerTest, RefreshesEverythingWhenTheUserAsks) {
  const auto manager = start();
  waitFor([&] { return !watchlistNews.empty() && !portfolioNews.empty(); });
  provider->refreshes.clear();
  provider->isSlow = true;
  manager->refreshNow();
  manager->refreshNow();
  EXPECT_THAT(provider->refreshes, ElementsAre(WatchedIds{"BOTH", "WATCHED"}, WatchedIds{"HELD"},
                                               WatchedIds{"BOTH", "WATCHED"}))
      << "impatience starts no second refresh of the portfolios beside the first";
  for (auto& answer : provider->answers) {
    answer();
  }
  waitFor([&] { return portfolioNews.size() == 2; });
}

TEST_F(WatchlistManagerTest, AskingByHandLeavesOneTimer) {
  const auto manager = start({.watchlistRefreshInterval = 1h, .portfolioRefreshInterval = 200ms});
  for (std::size_t i = 1; i <= 5; ++i) {
    waitFor([&] { return portfolioNews.size() >= i; });
    manager->refreshNow();
  }
  waitFor([&] { return portfolioNews.size() >= 6; });
  const std::size_t before = portfolioNews.size();
  const auto start = std::chrono::steady_clock::now();
  std::ignore = MainLoop::runUntil([] { return false; }, 500ms);
  const auto rounds = (std::chrono::steady_clock::now() - start) / 200ms + 1;
  EXPECT_LE(portfolioNews.size(), before + static_cast<std::size_t>(rounds));
}

TEST_F(WatchlistManagerTest, TellsHowTheRefreshesGo) {
  std::vector<WatchlistManager::Status> told;
  const Subscription observer = NotificationCenter::defaultCenter().addObserver(
      WatchlistManager::statusDidChange, nullptr,
      [&](const WatchlistManager::Status& status) { told.push_back(status); },
      DispatchQueue::main());
  const Date begin = Date::now();
  const auto manager = start();
  EXPECT_TRUE(manager->status().isRefreshing);
  EXPECT_FALSE(manager->status().refreshedAt);
  waitFor([&] { return !told.empty() && !told.back().isRefreshing && portfolioNews.size() == 1; });
  EXPECT_GE(manager->status().refreshedAt, begin);
  EXPECT_EQ(manager->status().failure, nullptr);
  EXPECT_GE(manager->status().nextAt, begin + 3600);
  EXPECT_LE(manager->status().nextAt, Date::now() + 3600);

  provider->pauseEnd = begin + 86400;
  manager->refreshNow();
  waitFor([&] { return portfolioNews.size() == 2 && !manager->status().isRefreshing; });
  EXPECT_EQ(manager->status().nextAt, begin + 86400) << "the service has asked for a pause";
  provider->pauseEnd.reset();

  provider->fails = true;
  model->watchlistEquities.clear();
  manager->refreshNow();
  EXPECT_FALSE(manager->status().nextAt) << "the portfolios' follows the end of this one";
  waitFor([&] { return portfolioNews.size() == 3 && !manager->status().isRefreshing; });
  EXPECT_EQ(*manager->status().failure, QuoteProviderError(QuoteProviderError::NotAvailable{}));
  EXPECT_GE(manager->status().failedAt, manager->status().refreshedAt);
  EXPECT_TRUE(manager->status().nextAt);
}

TEST_F(WatchlistManagerTest, ADocumentGetsTheRatesThatItsEquitiesTurnOutToNeed) {
  openModels.clear();
  const auto manager = start();
  waitFor([&] { return portfolioNews.size() == 1; });
  const EquityPointer held = equity("HELD");
  provider->atRefresh = [&] { held->currency = Currency::usd(); };
  manager->refreshModel(model);
  waitFor([&] { return portfolioNews.size() == 3; });
  const EquityPointer rate = provider->exchangeRateEquity(Currency::usd(), Currency::cad());
  EXPECT_THAT(provider->refreshes,
              ElementsAre(WatchedIds{"HELD", "BOTH", "WATCHED"}, WatchedIds{rate->id()}));
}

TEST_F(WatchlistManagerTest, NothingIsPostedOnceTheManagerIsGone) {
  provider->isSlow = true;
  auto manager = start();
  manager.reset();
  for (auto& answer : provider->answers) {
    answer();
  }
  NotificationCenter::defaultCenter().post(WatchlistManager::quoteDataSourceChanged, nullptr);
  MainLoop::drain();
  EXPECT_EQ(provider->refreshes.size(), 2U);
  EXPECT_THAT(watchlistNews, IsEmpty());
  EXPECT_THAT(portfolioNews, IsEmpty());
}

}  // namespace
}  // namespace corvane::testing
