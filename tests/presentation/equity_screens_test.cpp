// The screen of an equity and its tabs: what they ask of the market, and what they say.

#include <algorithm>
#include <numeric>
#include <random>

#include "marketdata/cache/cache_quote_provider.h"
#include "marketdata/chain/switchable_quote_provider.h"
#include "marketdata/yahoo/yahoo_provider_error.h"
#include "platform/async/notification_center.h"
#include "platform/net/url_request.h"
#include "presentation/equity/equity_view_controller.h"
#include "presentation/portfolio_screen_world.h"
#include "presentation/scenario/scenario_detail_view_controller.h"
#include "storage/application/app_delegate.h"
#include "storage/application/watchlist_manager.h"

namespace corvane::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::testing::StartsWith;
using Quotes = QuoteQuery::Quotes;

Date at(YearMonthDay day, double hours) {
  return day.startIn(Calendar(*TimeZone::withIdentifier("America/Toronto"))) + hours * 3600;
}

Quote bar(Date from, double seconds, int open, int close) {
  Quote made;
  made.fromDate = from;
  made.toDate = from + seconds;
  made.open = open;
  made.close = close;
  made.low = std::min(open, close) - 1;
  made.high = std::max(open, close) + 1;
  made.volume = 1234567;
  return made;
}

/// `text` with plain spaces: locales write narrow ones before AM and PM.
std::string plainSpaces(std::string text) {
  constexpr std::string_view narrow = "\u202F";
  for (auto at = text.find(narrow); at != std::string::npos; at = text.find(narrow)) {
    text.replace(at, narrow.size(), " ");
  }
  return text;
}

Result<QuoteFetchResult> wantOfNetwork() {
  return failure(URLError(URLError::Code::cannotFindHost, "https://market.test", ""));
}

/// Holds fetches back until a test answers them, in the order that the test wants.
class HeldMarket : public QuoteProvider {
 public:
  struct Fetch {
    QuoteQuery query;
    std::shared_ptr<QuoteCompletion> completion;
  };
  std::vector<Fetch> fetches;
  std::set<QuoteInterval> intervals = {QuoteInterval::oneHour, QuoteInterval::oneDay};
  int refreshes = 0;
  std::optional<Date> pauseEnd;

  [[nodiscard]] std::optional<Date> nextRequestDate() const override { return pauseEnd; }
  void fetchQuotes(QuoteQuery query, std::shared_ptr<PriceAdjuster> /*adjuster*/,
                   QuoteCompletion completion) override {
    fetches.push_back({query, std::make_shared<QuoteCompletion>(std::move(completion))});
  }
  void refreshEquities(std::vector<EquityPointer> /*equities*/,
                       RefreshCompletion completion) override {
    ++refreshes;
    completion(nullptr);
  }
  [[nodiscard]] std::set<QuoteInterval> availableIntervals(
      const EquityPointer& /*equity*/, const DateRange& /*range*/) const override {
    return intervals;
  }

  void answer(std::size_t index, const Result<QuoteFetchResult>& result) {
    const auto completion = std::exchange(fetches.at(index).completion, nullptr);
    ASSERT_NE(completion, nullptr) << "answered before";
    (*completion)(result);
    MainLoop::drain();
  }
  static Result<QuoteFetchResult> quotes(std::vector<Quote> bars) {
    return ScriptedQuoteProvider::quotes(std::move(bars));
  }
  static Result<QuoteFetchResult> events(std::vector<EquityEvent> events) {
    return QuoteFetchResult{.quotes = std::nullopt,
                            .prices = PriceAdjustment::marketNominal,
                            .events = std::move(events),
                            .durableDateRange = {Date(), Date()}};
  }
};

/// It is 14:30 in Toronto on 2021-03-10, a Wednesday, in the middle of a session.
class EquityScreensTest : public PortfolioScreenWorld {
 protected:
  EquityScreensTest() {
    now = at({2021, 3, 10}, 14.5);
    equity = fill(market->equityWithId("NOR"));
    model->watchlistEquities = {equity};
    screen->setDocumentModel(model);
  }

  EquityPointer fill(const EquityPointer& filled) {
    filled->isAuthoritative = true;
    filled->name = "Northern Lights";
    filled->calendar = Calendar(*TimeZone::withIdentifier("America/Toronto"));
    filled->currency = Currency::cad();
    filled->firstTradeDate = at({1995, 1, 3}, 9.5);
    filled->recentTradingPeriod = DateRange(at({2021, 3, 10}, 9.5), at({2021, 3, 10}, 16));
    filled->recentPrice = dec("41.125");
    filled->previousClosePrice = 40;
    filled->recentDate = now;
    return filled;
  }
  void show(const EquityPointer& shown) {
    screen->setCurrentEquity(shown);
    screen->setShown(true);
  }
  /// What has been asked but for events, since `first`.
  std::vector<QuoteQuery> quoteQueries(std::size_t first = 0) const {
    std::vector<QuoteQuery> queries;
    for (std::size_t i = first; i < market->fetches.size(); ++i) {
      if (!std::holds_alternative<QuoteQuery::EventsOnly>(market->fetches[i].query.seeking)) {
        queries.push_back(market->fetches[i].query);
      }
    }
    return queries;
  }
  /// Answers the latest question for quotes, and that for events before it.
  void answerQuotes(std::vector<Quote> bars) { answerLatest(HeldMarket::quotes(std::move(bars))); }
  void answerLatest(const Result<QuoteFetchResult>& result) {
    for (std::size_t i = market->fetches.size(); i-- > 0;) {
      if (!std::holds_alternative<QuoteQuery::EventsOnly>(market->fetches[i].query.seeking)) {
        market->answer(i, result);
        return;
      }
    }
    FAIL() << "nothing was asked";
  }
  void answerEvents(const Result<QuoteFetchResult>& result) {
    for (std::size_t i = market->fetches.size(); i-- > 0;) {
      if (std::holds_alternative<QuoteQuery::EventsOnly>(market->fetches[i].query.seeking)) {
        market->answer(i, result);
        return;
      }
    }
    FAIL() << "no events were asked";
  }
  static void postRefresh() {
    NotificationCenter::defaultCenter().post(WatchlistManager::didRefreshWatchlistEquities, nullptr,
                                             {});
    MainLoop::drain();
  }
  static void postNewSource() {
    NotificationCenter::defaultCenter().post(AppDelegate::quoteDataSourceChanged, nullptr);
    MainLoop::drain();
  }

  std::shared_ptr<HeldMarket> market = std::make_shared<HeldMarket>();
  std::shared_ptr<WorkspaceModel> model = std::make_shared<WorkspaceModel>();
  std::shared_ptr<EquityViewController> screen = EquityViewController::make(surroundings);
  OverviewViewController& overview = *screen->overview;
  HistoryViewController& history = *screen->history;
  EquityPointer equity;
};

TEST_F(EquityScreensTest, HeadingTellsOfTheSession) {
  const auto summary = [&] {
    return plainSpaces(equityHeading(equity, now, defaults).summary.plainText());
  };
  EXPECT_EQ(equityHeading(equity, now, defaults).price, "CA$41.125");
  EXPECT_EQ(summary(),
            "(+2.81% ▲ +CA$1.125) as of March 10, 2021 at 2:30:00 PM EST. Market opened 5 hours "
            "ago; closing in 1 hour.");
  now = at({2021, 3, 10}, 18.5);
  EXPECT_THAT(summary(), HasSubstr(" EST. Market closed 2 hours ago."));
  now = at({2021, 3, 10}, 7.5);
  EXPECT_THAT(summary(), HasSubstr("Market opens in 2 hours."));
  equity->previousClosePrice.reset();
  equity->recentTradingPeriod.reset();
  EXPECT_EQ(summary(), "As of March 10, 2021 at 2:30:00 PM EST. ");
  defaults.set("preferLocalTimeZone", JSONValue(true));
  if (TimeZone::current().identifier() != "America/Toronto") {
    EXPECT_THAT(summary(), Not(HasSubstr("EST")));
  }
  equity->recentPrice.reset();
  EXPECT_EQ(summary(), "");
  EXPECT_EQ(equityHeading(nullptr, now, defaults).symbol, "");
}

TEST_F(EquityScreensTest, OnlyTheTabOnTheScreenAsks) {
  screen->setCurrentEquity(equity);
  EXPECT_THAT(market->fetches, IsEmpty());
  screen->setShown(true);
  EXPECT_EQ(quoteQueries().back(), QuoteQuery::currentPeriod(equity, false));
  EXPECT_THAT(market->fetches, SizeIs(2)) << "quotes and events";
  screen->selectTab(1);
  EXPECT_THAT(market->fetches, SizeIs(4));
  screen->selectTab(0);
  screen->selectTab(1);
  EXPECT_THAT(market->fetches, SizeIs(4)) << "what has been asked need not be asked again";

  const EquityPointer other = fill(market->equityWithId("LUM"));
  screen->setCurrentEquity(other);
  EXPECT_THAT(market->fetches, SizeIs(6));
  postNewSource();
  EXPECT_THAT(market->fetches, SizeIs(8)) << "another source may say other things";
  screen->setShown(false);
  screen->setCurrentEquity(equity);
  EXPECT_THAT(market->fetches, SizeIs(8));
}

TEST_F(EquityScreensTest, AnEquityOfWhichNothingIsKnownYetIsNoFailure) {
  const EquityPointer unknown = market->equityWithId("NEW");
  model->watchlistEquities.push_back(unknown);
  show(unknown);
  const std::size_t asked = market->fetches.size();
  answerLatest(failure(QuoteProviderError(QuoteProviderError::CurrencyMismatch{"XXX", "CAD"})));
  EXPECT_THAT(errors, IsEmpty());
  postRefresh();
  EXPECT_THAT(market->fetches, SizeIs(asked)) << "nothing has become known";
  fill(unknown);
  postRefresh();
  EXPECT_THAT(market->fetches, SizeIs(asked + 2)) << "quotes and events";
  postRefresh();
  EXPECT_THAT(market->fetches, SizeIs(asked + 2));
  answerLatest(failure(QuoteProviderError(QuoteProviderError::CurrencyMismatch{"USD", "CAD"})));
  EXPECT_THAT(errors, SizeIs(1));
}

TEST_F(EquityScreensTest, PeriodsEndNowAndBeginOnADayOfTheExchange) {
  show(equity);
  now = now + 0.75;
  defaults.set(AppDelegate::priceAdjustmentUserDefaultsKey, JSONValue(std::int64_t{3}));
  std::vector<std::string> firstDays;
  for (std::size_t segment = 1; segment < OverviewViewController::periodPresets.size(); ++segment) {
    overview.selectPeriod(segment);
    const QuoteQuery query = quoteQueries().back();
    const auto* sought = std::get_if<Quotes>(&query.seeking);
    ASSERT_NE(sought, nullptr);
    EXPECT_EQ(sought->interval, OverviewViewController::periodPresets[segment].interval);
    EXPECT_EQ(sought->prices, PriceAdjustment::adjustedForSplitsAndDividends);
    EXPECT_EQ(query.dateRange.upper(), now - 0.75) << "whole seconds";
    firstDays.push_back(query.dateRange.lower().description());
  }
  EXPECT_THAT(firstDays, ElementsAre("2021-03-04 05:00:00 +0000", "2021-02-11 05:00:00 +0000",
                                     "2020-12-11 05:00:00 +0000", "2020-09-11 04:00:00 +0000",
                                     "2020-03-11 04:00:00 +0000", "2019-03-11 04:00:00 +0000",
                                     "2016-03-11 05:00:00 +0000", "2011-03-11 05:00:00 +0000",
                                     HasSubstr("-11-30")));
}

/// A user who goes from one period to the next, and answers that come when they like.
class SwitchingThroughPeriods : public EquityScreensTest {
 protected:
  /// Chooses the next of `periods` where `step` is beyond the answers that are due, and else lets
  /// that one arrive. No step may leave anything on the screen but the last answer that came while
  /// its period was the chosen one.
  void take(std::size_t step) {
    if (step < due.size()) {
      const auto [fetch, period] = due[step];
      due.erase(due.begin() + static_cast<std::ptrdiff_t>(step));
      const int price = priceIn(period);
      market->answer(fetch, HeldMarket::quotes({bar(at({2021, 3, 9 + (period == 0 ? 1 : 0)}, 9.5),
                                                    60, price, price)}));
      if (period == overview.selectedPeriod()) {
        shown = price;
      }
    } else {
      overview.selectPeriod(left.front());
      due.emplace_back(market->fetches.size() - 1, left.front());
      left.erase(left.begin());
    }
    ASSERT_EQ(overview.currentQuotes().empty(), !shown);
    if (shown) {
      ASSERT_EQ(overview.currentQuotes().front().close, *shown);
      ASSERT_EQ(overview.chart.interactiveDataSet->entries.front().y, *shown);
    }
    ASSERT_EQ(overview.isFetching(), shown != priceIn(overview.selectedPeriod()));
  }
  void begin(std::vector<std::size_t> periods) {
    screen->setCurrentEquity(nullptr);
    show(equity);
    answerEvents(HeldMarket::events({}));
    due.clear();
    shown.reset();
    left = std::move(periods);
  }
  /// How many steps may be taken now.
  std::size_t choices() const { return due.size() + (left.empty() ? 0 : 1); }
  static int priceIn(std::size_t period) { return 10 * static_cast<int>(period + 1); }

  std::vector<std::pair<std::size_t, std::size_t>> due;  ///< the fetch, and its period
  std::vector<std::size_t> left;
  std::optional<int> shown;
};

TEST_F(SwitchingThroughPeriods, LeavesNoStaleAnswerInWhateverOrderTheyCome) {
  for (const auto& periods : {std::vector<std::size_t>{0, 1, 2, 3, 4}, {9, 8, 7, 6, 5}}) {
    // All ways of choosing five periods and answering them, as numbers with a digit a step.
    std::vector<std::size_t> steps;
    std::size_t ways = 0;
    do {
      begin(periods);
      std::vector<std::size_t> choicesAt;
      for (std::size_t i = 0; choices() > 0; ++i) {
        steps.resize(std::max(steps.size(), i + 1));
        choicesAt.push_back(choices());
        take(steps[i]);
        ASSERT_FALSE(HasFatalFailure());
      }
      ASSERT_FALSE(overview.isFetching());
      ++ways;
      while (!steps.empty() && ++steps.back() == choicesAt[steps.size() - 1]) {
        steps.pop_back();
      }
    } while (!steps.empty());
    EXPECT_EQ(ways, 945U);
  }
  // Of the ways through all ten there are too many.
  std::mt19937_64 random(1);
  for (int way = 0; way < 300; ++way) {
    std::vector<std::size_t> periods(OverviewViewController::periodPresets.size());
    std::iota(periods.begin(), periods.end(), 0);
    std::ranges::shuffle(periods, random);
    begin(periods);
    while (choices() > 0) {
      take(random() % choices());
      ASSERT_FALSE(HasFatalFailure());
    }
    ASSERT_FALSE(overview.isFetching());
  }
}

TEST_F(EquityScreensTest, AnAnswerAboutAnotherEquityShowsNothing) {
  show(equity);
  answerQuotes({bar(at({2021, 3, 10}, 9.5), 60, 40, 42)});
  overview.selectPeriod(6);
  const std::size_t pending = market->fetches.size() - 1;
  show(fill(market->equityWithId("LUM")));
  EXPECT_THAT(overview.currentQuotes(), IsEmpty()) << "its chart goes at once";
  EXPECT_TRUE(overview.chart.isEmpty());
  market->answer(pending, HeldMarket::quotes({bar(now, 60, 1, 1)}));
  EXPECT_THAT(overview.currentQuotes(), IsEmpty());
}

TEST_F(EquityScreensTest, OverviewNamesItsDaysAndValues) {
  show(equity);
  answerQuotes({bar(at({2021, 3, 10}, 9.5), 60, 40, 42), bar(at({2021, 3, 10}, 9.6), 60, 42, 41)});
  EXPECT_EQ(overview.dateRangeText(), "March 10, 2021");
  EXPECT_EQ(plainSpaces(overview.chart.tooltipProvider(0).plainText()),
            "CA$42.00 (+5.00% ▲ +CA$2.00)\nMarch 10, 2021 at 9:31 AM")
      << "measured against the close before";
  EXPECT_EQ(overview.chart.tooltipProvider(9).plainText(), "");

  overview.selectPeriod(5);
  answerQuotes(
      {bar(at({2020, 3, 11}, 9.5), 3600, 50, 60), bar(at({2021, 3, 10}, 9.5), 3600, 1, 45)});
  EXPECT_EQ(overview.dateRangeText(), "March 11, 2020 – March 10, 2021");
  EXPECT_THAT(overview.chart.tooltipProvider(1).plainText(), HasSubstr("(-10.00% ▼ -CA$5.00)"))
      << "measured against the first price";
  EXPECT_THAT(overview.statusText(), HasSubstr("As of Mar 1")) << "by the clocks of the user";

  overview.selectPeriod(9);
  equity->firstTradeDate = at({1999, 5, 3}, 9.5);
  answerQuotes({bar(at({1999, 5, 3}, 9.5), 23400, 50, 60)});
  EXPECT_EQ(overview.dateRangeText(), "May 3, 1999 – March 10, 2021")
      << "not the year before the first";
  overview.selectPeriod(1);
  answerQuotes({});
  EXPECT_EQ(overview.chart.noDataText, "No prices in this period.");
  equity->recentDate = at({2021, 3, 9}, 16);
  overview.selectPeriod(0);
  answerQuotes({bar(at({2021, 3, 9}, 9.5), 60, 40, 42)});
  EXPECT_TRUE(overview.chart.isEmpty()) << "the session has not begun";
  EXPECT_EQ(overview.chart.noDataText, "No prices of a session yet.");
  EXPECT_THAT(errors, IsEmpty());
}

TEST_F(EquityScreensTest, ASessionThatTheAnswerTellsOfIsShownAtOnce) {
  const auto session = std::exchange(equity->recentTradingPeriod, std::nullopt);
  show(equity);
  const std::size_t asked = quoteQueries().size();
  equity->recentTradingPeriod = session;
  answerQuotes({});
  ASSERT_EQ(quoteQueries().size(), asked + 1);
  EXPECT_TRUE(overview.isFetching());
  answerQuotes({bar(at({2021, 3, 10}, 9.5), 60, 40, 42)});
  EXPECT_FALSE(overview.chart.isEmpty());
  EXPECT_EQ(quoteQueries().size(), asked + 1);
}

TEST_F(EquityScreensTest, EventsPassTwoFilters) {
  show(equity);
  answerQuotes({bar(at({2021, 3, 10}, 9.5), 60, 40, 42)});
  const auto on = [](int month) { return at({2021, month, 1}, 9.5); };
  answerEvents(HeldMarket::events(
      {{on(1), EquityEvent::Dividend{dec("0.25")}, PriceAdjustment::marketNominal},
       {on(2), EquityEvent::Split{{3, 2}}, PriceAdjustment::marketNominal},
       {on(4), EquityEvent::Split{{2, 1}}, PriceAdjustment::marketNominal}}));
  const EquityEventsTable& table = overview.eventsTable();
  ASSERT_EQ(table.numberOfRows(), 3U);
  EXPECT_THAT(cells(table, 1),
              ElementsAre(std::pair("amount", "3:2"), std::pair("date", "Feb 1, 2021"),
                          std::pair("event", "Split")));
  EXPECT_EQ(cells(table, 2).at("amount"), "CA$0.25");
  EXPECT_EQ(overview.priceAdjustmentText(), "Prices adjusted for splits.")
      << "a split after the first price";
  overview.setShowsSplits(false);
  EXPECT_EQ(table.numberOfRows(), 1U);
  overview.setShowsDividends(false);
  EXPECT_EQ(table.numberOfRows(), 0U);
  postNewSource();
  answerEvents(
      HeldMarket::events({{on(1), EquityEvent::Dividend{1}, PriceAdjustment::marketNominal}}));
  EXPECT_EQ(table.numberOfRows(), 0U) << "a new answer turns nothing on";
}

TEST_F(EquityScreensTest, FailuresAreToldOnce) {
  show(equity);
  answerLatest(ScriptedQuoteProvider::refusal());
  answerEvents(ScriptedQuoteProvider::refusal());
  EXPECT_THAT(errors, ElementsAre("Not available.")) << "the same of the events says nothing new";
  EXPECT_TRUE(overview.chart.isEmpty());
  EXPECT_EQ(overview.statusText(), "Not available.");
  overview.selectPeriod(2);
  answerLatest(HeldMarket::events({}));
  EXPECT_EQ(errors.back(), "Fetch result does not satisfy the query.");

  // A network that is away is a state, not an event: the screen says so while it is so.
  errors.clear();
  overview.selectPeriod(3);
  answerQuotes({});
  for (int i = 0; i < 2; ++i) {
    overview.selectPeriod(3);
    answerLatest(wantOfNetwork());
    EXPECT_EQ(overview.statusText(),
              "The market cannot be reached, and the cache has no prices for this. Asking again by "
              "itself.");
  }
  EXPECT_THAT(errors, IsEmpty());
  const std::size_t asked = market->fetches.size();
  postRefresh();
  EXPECT_EQ(quoteQueries(asked).size(), 1U) << "somebody got through, so it asks again";
  answerQuotes({bar(at({2021, 3, 10}, 9.5), 60, 40, 42)});
  EXPECT_THAT(overview.statusText(), HasSubstr("As of"));
  EXPECT_THAT(overview.currentQuotes(), SizeIs(1));

  // So is a pause that the service asks for, at whose end it is asked again.
  market->pauseEnd = Date::now() + 0.2;
  overview.selectPeriod(2);
  const std::size_t refused = market->fetches.size();
  answerLatest(failure(YahooProviderError(YahooProviderError::HTTPResponse{429})));
  EXPECT_THAT(overview.statusText(),
              StartsWith("The quote service asks for a pause. Asking again at "));
  EXPECT_THAT(errors, IsEmpty());
  market->pauseEnd.reset();
  waitUntil([&] { return market->fetches.size() > refused; });
  answerQuotes({bar(at({2021, 3, 10}, 9.5), 60, 40, 42)});
  EXPECT_THAT(overview.statusText(), HasSubstr("As of"));
}

TEST_F(EquityScreensTest, ASessionThatGoesOnIsFollowed) {
  show(equity);
  answerQuotes({bar(at({2021, 3, 10}, 9.5), 60, 40, 42)});
  const std::size_t asked = market->fetches.size();
  postRefresh();
  EXPECT_THAT(quoteQueries(asked), IsEmpty()) << "nothing has been traded since";
  now = now + 60;
  equity->recentDate = now;
  equity->recentPrice = 43;
  postRefresh();
  EXPECT_THAT(quoteQueries(asked), SizeIs(1));
  EXPECT_EQ(screen->heading().price, "CA$43.00");

  // An equity that nobody watches is refreshed when it is looked at.
  const EquityPointer other = fill(market->equityWithId("LUM"));
  other->recentDate = now - 3600;
  screen->setCurrentEquity(other);
  EXPECT_EQ(market->refreshes, 1);
  screen->setCurrentEquity(equity);
  EXPECT_EQ(market->refreshes, 1);
}

class HistoryTest : public EquityScreensTest {
 protected:
  HistoryTest() {
    screen->selectTab(1);
    show(equity);
  }
};

TEST_F(HistoryTest, AsksForWhatThePickerSays) {
  EXPECT_EQ(history.datesPicker.presetTitle(), "Past 30 days");
  EXPECT_EQ(std::get<Quotes>(quoteQueries().back().seeking).interval, QuoteInterval::oneHour);
  EXPECT_EQ(quoteQueries().back().dateRange, DateRange(at({2021, 2, 9}, 0), now))
      << "not beyond now";

  market->intervals = {QuoteInterval::oneDay, QuoteInterval::oneWeek};
  history.datesPicker.choosePreset(0);
  EXPECT_EQ(history.datesPicker.selectedInterval(), QuoteInterval::oneDay)
      << "the next that there is";
  EXPECT_FALSE(history.datesPicker.isIntervalEnabled(0));
  history.datesPicker.chooseEndDate({2021, 3, 12});
  EXPECT_EQ(history.datesPicker.endDate(), (YearMonthDay{2021, 3, 10})) << "days to come are none";
  history.datesPicker.choosePreset(5);
  EXPECT_EQ(quoteQueries().back().dateRange.lower(), at({2020, 3, 10}, 0));
  history.datesPicker.choosePreset(1);
  EXPECT_EQ(quoteQueries().back().dateRange, DateRange(at({2021, 3, 9}, 0), at({2021, 3, 10}, 0)));

  // A new day has begun in Tokyo.
  const EquityPointer tokyo = fill(market->equityWithId("TOK"));
  tokyo->calendar = Calendar(*TimeZone::withIdentifier("Asia/Tokyo"));
  screen->setCurrentEquity(tokyo);
  EXPECT_EQ(history.datesPicker.maximumDate(), (YearMonthDay{2021, 3, 11}));
}

TEST_F(HistoryTest, ListsItsBars) {
  defaults.set("indicateFetchedRows", JSONValue(true));
  history.reload();
  std::vector<Quote> bars = {bar(at({2021, 3, 9}, 9.5), 23400, 40, 41),
                             bar(at({2021, 3, 10}, 9.5), 18000, 41, 50)};
  bars[0].isCached = true;
  bars[1].isPartial = true;
  bars[1].high.reset();
  answerQuotes(bars);
  const HistoryTable& table = history.table();
  EXPECT_EQ(plainSpaces(cells(table, 0).at("date")), "March 9, 2021, 9:30 AM → 4:00 PM EST");
  EXPECT_EQ(cells(table, 0).at("volume"), "1234567");
  const auto last = cells(table, 1);
  EXPECT_EQ(plainSpaces(last.at("date")), "March 10, 2021, 9:30 AM → 2:30 PM EST (incomplete)");
  EXPECT_EQ(last.at("change"), "+25.00%");
  EXPECT_EQ(last.at("close"), "CA$50.00");
  EXPECT_FALSE(last.contains("high"));
  EXPECT_EQ(table.rowBackground(0), std::nullopt);
  EXPECT_EQ(table.rowBackground(1),
            Colour(Colour::Name::alternatingRowBackground).blended(0.3, Colour::Name::systemBrown));
  EXPECT_EQ(table.rowNote(1), "Came from the network");
  EXPECT_EQ(history.rowToScrollTo(), 0U);
  EXPECT_EQ(plainSpaces(history.chart.tooltipProvider(1).plainText()),
            "CA$41.00 → CA$50.00\nMarch 10, 2021, 9:30 AM → 2:30 PM EST");
  answerEvents(ScriptedQuoteProvider::refusal());
  EXPECT_THAT(errors, IsEmpty()) << "a history without events has no note, and that is all";
  EXPECT_EQ(history.priceAdjustmentText(), std::nullopt);
}

TEST_F(HistoryTest, SelectsInChartAndTableAlike) {
  answerQuotes(
      {bar(at({2021, 3, 9}, 9.5), 3600, 40, 41), bar(at({2021, 3, 10}, 9.5), 3600, 41, 50)});
  std::vector<bool> takesKeyboard;
  history.selectionChangeHandler = [&](bool takes) { takesKeyboard.push_back(takes); };
  history.chart.clicked(1);
  EXPECT_EQ(history.selectedRow(), 1U);
  history.selectRow(0);
  EXPECT_EQ(history.selectedRow(), 0U);
  history.chart.clicked(std::nullopt);
  EXPECT_EQ(history.selectedRow(), std::nullopt);
  EXPECT_THAT(takesKeyboard, ElementsAre(true, false, false));
  history.selectRow(1);
  history.reload();
  answerQuotes({});
  EXPECT_EQ(history.selectedRow(), std::nullopt) << "its row is gone";
}

/// The chain with a real cache, in front of a source whose network can be taken away.
class OfflineTest : public PortfolioScreenWorld {
 protected:
  OfflineTest() {
    now = Date::sinceReferenceDate(std::floor(Date::now().timeIntervalSinceReferenceDate()));
    source->script = [this](const QuoteQuery& query) -> Result<QuoteFetchResult> {
      if (isOffline) {
        return wantOfNetwork();
      }
      QuoteFetchResult result{.quotes = std::nullopt,
                              .prices = PriceAdjustment::adjustedForSplits,
                              .events = std::vector<EquityEvent>(),
                              .durableDateRange = query.dateRange};
      if (std::holds_alternative<Quotes>(query.seeking)) {
        result.quotes = ScriptedQuoteProvider::dailyBars(
            query, [](YearMonthDay) { return std::optional(bar(Date(), 0, 7, 8)); });
      }
      return result;
    };
    equity = chain->equityWithId("NOR");
    equity->isAuthoritative = true;
    equity->currency = Currency::cad();
    equity->firstTradeDate = now - 400 * 86400.0;
    equity->recentDate = now;
    chain->smartQuoteProvider->cacheProvider->storeEquity(equity);
  }

  bool isOffline = false;
  std::shared_ptr<ScriptedQuoteProvider> source = std::make_shared<ScriptedQuoteProvider>();
  std::shared_ptr<SwitchableQuoteProvider> chain =
      std::make_shared<SwitchableQuoteProvider>(source, folder / "cache.sqlite3");
  std::shared_ptr<OverviewViewController> overview = OverviewViewController::make(surroundings);
  EquityPointer equity;
};

TEST_F(OfflineTest, ShowsTheCacheUntilTheNetworkIsBack) {
  overview->selectPeriod(6);
  overview->setCurrentEquity(equity);
  overview->setShown(true);
  waitUntil([&] { return !overview->isFetching(); });
  const std::size_t known = overview->currentQuotes().size();
  ASSERT_GT(known, 300U);

  isOffline = true;
  now = now + 20 * 86400.0;
  overview->selectPeriod(6);
  waitUntil([&] { return !overview->isFetching(); });
  // The period has moved on by as many days as the cache lacks at its end.
  EXPECT_NEAR(static_cast<double>(overview->currentQuotes().size()),
              static_cast<double>(known) - 20, 1);
  EXPECT_THAT(overview->statusText(), HasSubstr("Prices from the cache, up to"));
  EXPECT_THAT(overview->statusText(), HasSubstr("Asking again by itself."));
  EXPECT_THAT(errors, IsEmpty());

  isOffline = false;
  NotificationCenter::defaultCenter().post(WatchlistManager::didRefreshWatchlistEquities, nullptr,
                                           {});
  waitUntil([&] { return overview->currentQuotes().size() >= known - 1; });
  EXPECT_THAT(overview->statusText(), HasSubstr("As of"));
}

TEST_F(OfflineTest, ReplaysWhatTheCacheHasOnce) {
  const auto model = std::make_shared<WorkspaceModel>();
  const auto dayAt = [&](double days) {
    return equity->calendar.dateComponents(
        {CalendarUnit::year, CalendarUnit::month, CalendarUnit::day}, now + days * 86400);
  };
  model->tradingScenarioSettings.detailScenario =
      InvestmentScenario{dayAt(-100), dayAt(30), QuoteInterval::oneDay, 1000};
  const auto scenario = ScenarioDetailViewController::make(surroundings);
  scenario->setDocumentModel(model);
  scenario->setCurrentEquity(equity);
  scenario->setShown(true);
  waitUntil([&] { return !scenario->isBusy(); });
  ASSERT_GT(scenario->detailDataSource().numberOfRows(), 2U);

  isOffline = true;
  now = now + 20 * 86400.0;
  scenario->runAction();
  waitUntil([&] { return !scenario->isBusy(); });
  EXPECT_THAT(scenario->statusText(), HasSubstr("Prices from the cache, up to"));
  scenario->selectRow(1);
  const auto tryAgain = [&] {
    const std::size_t asked = source->queries.size();
    NotificationCenter::defaultCenter().post(WatchlistManager::didRefreshWatchlistEquities, nullptr,
                                             {});
    waitUntil([&] { return source->queries.size() > asked && !scenario->isBusy(); });
  };
  tryAgain();
  EXPECT_EQ(scenario->selectedRow(), 1U) << "the same prices are not replayed under the user";
  isOffline = false;
  tryAgain();
  EXPECT_EQ(scenario->selectedRow(), std::nullopt);
  EXPECT_THAT(scenario->statusText(), HasSubstr("As of"));
  EXPECT_THAT(errors, IsEmpty());
}

}  // namespace
}  // namespace corvane::testing
