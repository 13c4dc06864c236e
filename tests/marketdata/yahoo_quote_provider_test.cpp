// The provider against a service on the loopback interface.

#include "marketdata/yahoo/yahoo_quote_provider.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "core/market/price_adjuster.h"
#include "marketdata/yahoo/yahoo_provider_error.h"
#include "marketdata/yahoo_answers.h"
#include "marketdata/yahoo_loopback_service.h"
#include "platform/async/dispatch_queue.h"
#include "platform/data/json_error.h"
#include "platform/net/url_request.h"

namespace corvane {
namespace {

using corvane::testing::chartAnswer;
using corvane::testing::chartAnswerWith;
using corvane::testing::deadline;
using corvane::testing::details;
using corvane::testing::number;
using corvane::testing::quoteAnswer;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::SizeIs;
using Service = corvane::testing::YahooLoopbackService;

const Date sessionStart = Date::since1970(1709649000);

class YahooQuoteProviderTest : public ::testing::Test {
 protected:
  /// Starts something that completes with an `Outcome`, and waits for that.
  template <typename Outcome, typename Start>
  static Outcome await(Start start) {
    auto outcome = std::make_shared<std::optional<Outcome>>();
    auto isDone = std::make_shared<std::atomic<int>>(0);
    auto isStarting = std::make_shared<bool>(true);
    const auto caller = std::this_thread::get_id();
    start([isStarting, caller, outcome, isDone](auto result) {
      EXPECT_EQ(isDone->load(), 0) << "completed twice";
      EXPECT_FALSE(std::this_thread::get_id() == caller && *isStarting)
          << "completed before the call returned";
      *outcome = std::move(result);
      ++*isDone;
    });
    *isStarting = false;
    if (!MainLoop::runUntil([&] { return isDone->load() > 0; }, deadline)) {
      ADD_FAILURE() << "no answer came";
      std::abort();
    }
    return *std::move(*outcome);
  }

  Result<std::vector<EquityPointer>> search(const std::string& text) {
    return await<Result<std::vector<EquityPointer>>>(
        [&](auto completion) { provider->searchEquities(text, std::move(completion)); });
  }
  ErrorPointer refresh(std::vector<EquityPointer> equities) {
    return await<ErrorPointer>([&](auto completion) {
      provider->refreshEquities(std::move(equities), std::move(completion));
    });
  }
  Result<QuoteFetchResult> fetch(const QuoteQuery& query) {
    return await<Result<QuoteFetchResult>>([&](auto completion) {
      provider->fetchQuotes(query, std::make_shared<PriceAdjuster>(provider),
                            std::move(completion));
    });
  }
  /// An American equity whose details are known.
  EquityPointer equity(const std::string& id = "ABC") {
    EquityPointer made = provider->equityWithId(id);
    made->currency = Currency::usd();
    made->calendar = Calendar(TimeZone::withIdentifier("America/New_York").value());
    made->isAuthoritative = true;
    return made;
  }
  QuoteQuery minutes(const EquityPointer& of, double hours = 1) {
    return {of,
            {sessionStart, sessionStart + 3600 * hours},
            QuoteQuery::Quotes{QuoteInterval::oneMinute, PriceAdjustment::adjustedForSplits}};
  }

  Service server;
  std::shared_ptr<YahooQuoteProvider> provider =
      std::make_shared<YahooQuoteProvider>(server.service());
};

YahooProviderError httpResponse(int statusCode) {
  return YahooProviderError(YahooProviderError::HTTPResponse{statusCode});
}
const YahooProviderError incompleteData(YahooProviderError::IncompleteData{});

TEST_F(YahooQuoteProviderTest, RefreshesTheDetailsOfEquities) {
  const auto share = provider->equityWithId("ABC");
  share->firstTradeDate = Date::since1970(1);
  const auto old = provider->equityWithId("OLD.TO");
  const auto pair = provider->equityWithId("USDCAD=X");
  const auto unknown = provider->equityWithId("NONE");
  server.script(Service::quotePath,
                {{.body = quoteAnswer(
                      {details("ABC", {{"longName", "A &amp; B &#169; &nbsp; R&D"},
                                       {"regularMarketPrice", number("10.50")},
                                       {"regularMarketTime", 1709649090},
                                       {"regularMarketPreviousClose", number("10.25")}}),
                       details("OLD.TO", {{"currency", "CAD"},
                                          {"exchange", "TOR"},
                                          {"exchangeTimezoneName", "America/Toronto"},
                                          {"shortName", "OLD &lt;CO&gt;"},
                                          {"firstTradeDateMilliseconds", number("-252322200999")}}),
                       details("USDCAD=X", {{"quoteType", "CURRENCY"},
                                            {"shortName", "USD/CAD"},
                                            {"longName", "not used"},
                                            {"currency", "CAD"}}),
                       details("STRANGER")})}});
  pair->recentPrice = 1;
  EXPECT_EQ(refresh({share, old, pair, unknown}), nullptr);
  EXPECT_THAT(server.requests(Service::quotePath).front().target,
              HasSubstr("symbols=ABC,OLD.TO,USDCAD%3DX,NONE"));

  EXPECT_EQ(share->name, "A & B © &nbsp; R&D");
  EXPECT_EQ(share->exchange, "NMS");
  EXPECT_EQ(share->currency, Currency::usd());
  EXPECT_EQ(share->calendar.timeZone().identifier(), "America/New_York");
  EXPECT_EQ(share->recentPrice, Decimal::fromString("10.5"));
  EXPECT_EQ(share->recentDate, Date::since1970(1709649090));
  EXPECT_EQ(share->previousClosePrice, Decimal::fromString("10.25"));
  EXPECT_EQ(share->firstTradeDate, Date::since1970(1)) << "kept where the answer has none";
  EXPECT_TRUE(share->isAuthoritative);

  EXPECT_EQ(old->name, "OLD <CO>");
  EXPECT_EQ(old->firstTradeDate, Date::since1970(-252322200));
  EXPECT_EQ(pair->name, "USD → CAD");
  EXPECT_EQ(pair->currency, Currency::cad());
  EXPECT_EQ(pair->recentPrice, std::nullopt) << "cleared where the answer has none";
  EXPECT_FALSE(unknown->isAuthoritative);
}

/// The service calls the pair of the US dollar with another currency by the other's code at times.
TEST_F(YahooQuoteProviderTest, KnowsPairsByTheirShortNamesAndAsksForNoneThatNobodyTrades) {
  const auto pair = provider->equityWithId("USDCAD=X");
  const auto none = provider->exchangeRateEquity(Currency::noCurrency(), Currency::usd());
  server.script(
      Service::quotePath,
      {{.body = quoteAnswer({details("CAD=X", {{"quoteType", "CURRENCY"},
                                               {"shortName", "USD/CAD"},
                                               {"currency", "CAD"},
                                               {"regularMarketPrice", number("1.37")}})})}});
  EXPECT_EQ(refresh({pair, none}), nullptr);
  EXPECT_EQ(pair->recentPrice, Decimal::fromString("1.37"));
  EXPECT_THAT(server.requests(Service::quotePath).front().target, HasSubstr("symbols=USDCAD%3DX"));
  EXPECT_EQ(refresh({none}), nullptr);
  EXPECT_FALSE(fetch(minutes(none)));
  EXPECT_THAT(server.requests(Service::quotePath), SizeIs(1));
  EXPECT_THAT(server.requests(Service::chartPath), SizeIs(0));
}

TEST_F(YahooQuoteProviderTest, EndsARefreshAtTheFirstEquityThatItCannotRead) {
  struct Case {
    std::string key;
    std::string value;
    QuoteProviderError::Case expected;
  };
  const std::vector<Case> cases = {
      {"exchangeTimezoneName", "Mars/Olympus",
       QuoteProviderError::UnrecognizedTimeZone{"Mars/Olympus"}},
      {"currency", "GBq", QuoteProviderError::UnsupportedCurrency{"GBq"}},
      {"shortName", "A long name/CAD", QuoteProviderError::UnsupportedCurrency{"A long name"}}};
  for (const Case& wrong : cases) {
    const auto first = provider->equityWithId("FIRST");
    const auto failing = provider->equityWithId("FAILING");
    const auto last = provider->equityWithId("LAST");
    JSONValue result =
        details("FAILING", {{"quoteType", wrong.key == "shortName" ? "CURRENCY" : "ETF"}});
    result.set(wrong.key, wrong.value);
    server.script(Service::quotePath,
                  {{.body = quoteAnswer({details("FIRST"), result, details("LAST")})}});
    const auto error = refresh({first, failing, last});
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(*error, QuoteProviderError(wrong.expected));
    EXPECT_TRUE(first->isAuthoritative);
    EXPECT_FALSE(failing->isAuthoritative);
    EXPECT_EQ(failing->calendar, Calendar::current()) << "changed in part";
    EXPECT_FALSE(last->isAuthoritative);
  }
}

TEST_F(YahooQuoteProviderTest, SaysWhyAnAnswerIsNone) {
  const auto api = [](std::optional<std::string> code, std::string text) {
    return YahooProviderError(YahooProviderError::APIError{std::move(code), std::move(text)});
  };
  const std::string refusal =
      R"({"chart":{"result":null,"error":{"code":"Not Found","description":"No data found"}}})";
  const std::vector<std::pair<Service::Answer, YahooProviderError>> cases = {
      {{.body = refusal, .status = 404}, api("Not Found", "No data found")},
      {{.body = R"({"chart":{"error":{"code":7}}})"},
       api(std::nullopt, "no description available")},
      {{.body = R"({"finance":{"error":{"code":"Unauthorized"}}})", .status = 401},
       httpResponse(401)},
      {{.body = "Too Many Requests", .status = 429}, httpResponse(429)},
      {{.body = "", .status = 500}, httpResponse(500)},
      {{.body = R"({"chart":{"result":null,"error":null}})"}, incompleteData},
      {{.body = R"({"chart":{"result":[],"error":null}})"}, incompleteData},
      {{.body = R"([1])"}, incompleteData},
      {{.body = ""}, incompleteData},
      {{.body = std::string(chartAnswer.substr(0, chartAnswer.size() / 2))}, incompleteData},
      {{.body = std::string(chartAnswer.substr(0, chartAnswer.size() - 1))}, incompleteData},
      {{.body = chartAnswerWith("chart.result.0.indicators.quote", JSONValue::Array())},
       incompleteData}};
  const auto abc = equity();
  for (const auto& [answer, expected] : cases) {
    server.script(Service::chartPath, {answer});
    const auto result = fetch(minutes(abc));
    ASSERT_FALSE(result) << answer.body;
    EXPECT_EQ(*result.error(), expected) << answer.body;
  }
  EXPECT_EQ(abc->recentPrice, std::nullopt);

  server.script(Service::chartPath,
                {{.body = chartAnswerWith("chart.result.0.meta.firstTradeDate", JSONValue())}});
  EXPECT_EQ(fetch(minutes(abc)).error()->description(),
            "chart.result[0].meta.firstTradeDate: expected a number, found null");
  server.script(Service::chartPath, {{.body = std::string(chartAnswer), .dropsConnection = true}});
  const auto dropped = fetch(minutes(abc));
  ASSERT_FALSE(dropped);
  EXPECT_EQ(dynamic_cast<const URLError&>(*dropped.error()).code, URLError::Code::connectionLost);

  // An answer with a result is one, whatever its status.
  server.script(Service::chartPath, {{.body = std::string(chartAnswer), .status = 500}});
  EXPECT_TRUE(fetch(minutes(abc)));
}

TEST_F(YahooQuoteProviderTest, FetchesBarsAndBringsTheEquityUpToDate) {
  const auto abc = equity();
  server.script(Service::chartPath, {{.body = std::string(chartAnswer)}});
  bool wasUpdated = false;
  const auto result = await<Result<QuoteFetchResult>>([&](auto completion) {
    provider->fetchQuotes(minutes(abc), std::make_shared<PriceAdjuster>(provider),
                          [&, completion = std::move(completion)](auto fetched) mutable {
                            wasUpdated = abc->recentPrice == Decimal::fromString("10.23");
                            completion(std::move(fetched));
                          });
  });
  ASSERT_TRUE(result);
  EXPECT_TRUE(wasUpdated);
  EXPECT_EQ(abc->recentDate, Date::since1970(1709649090));
  EXPECT_EQ(abc->recentTradingPeriod, DateRange(sessionStart, Date::since1970(1709672400)));
  EXPECT_THAT(server.requests(Service::chartPath).front().target,
              "/v8/finance/chart/ABC?period1=1709649000&period2=1709652600&interval=1m"
              "&includePrePost=true&events=split%7Cdiv");
  ASSERT_THAT(result->quotes.value(), SizeIs(2));
  EXPECT_EQ(result->quotes->front().close, Decimal::fromString("10.2"));
  EXPECT_TRUE(result->quotes->back().isPartial);
  EXPECT_THAT(result->events.value(), SizeIs(2));
  EXPECT_EQ(result->durableDateRange, DateRange(sessionStart, sessionStart + 60));

  // Prices as traded: the adjuster asks for the history of events and undoes the split of 3:2.
  auto nominal = minutes(abc);
  abc->firstTradeDate.reset();
  nominal.seeking = QuoteQuery::Quotes{QuoteInterval::oneMinute, PriceAdjustment::marketNominal};
  const JSONValue later = JSONValue::parse(
      R"({"9":{"date":1709735400,"numerator":2,"denominator":1,"splitRatio":"2:1"}})");
  server.script(Service::chartPath,
                {{.body = chartAnswerWith("chart.result.0.events.splits", later)}});
  const auto asTraded = fetch(nominal);
  ASSERT_TRUE(asTraded);
  EXPECT_EQ(asTraded->quotes->front().close, Decimal::fromString("20.4"));
  EXPECT_THAT(server.requests(Service::chartPath).back().target, HasSubstr("interval=1d"));
}

TEST_F(YahooQuoteProviderTest, AsksForTheRecentSessionWhereNoDatesAreKnown) {
  const auto abc = equity();
  server.script(Service::chartPath, {{.body = std::string(chartAnswer)}});
  EXPECT_TRUE(fetch(QuoteQuery::currentPeriod(abc, true)));
  EXPECT_THAT(server.requests(Service::chartPath).front().target,
              HasSubstr("period1=-1&period2=-1&interval=1m&"));
  // Now they are. Each fetch is followed by one of the events.
  EXPECT_TRUE(fetch(QuoteQuery::currentPeriod(abc, true)));
  EXPECT_THAT(server.requests(Service::chartPath).at(2).target,
              HasSubstr("period1=1709649000&period2=1709649090&"));
}

TEST_F(YahooQuoteProviderTest, KnowsThatNothingWasBeforeTheFirstTrade) {
  const auto abc = equity();
  abc->firstTradeDate = sessionStart + 3600;
  const auto nothing = fetch(minutes(abc));
  ASSERT_TRUE(nothing);
  EXPECT_EQ(nothing->quotes, std::vector<Quote>());
  EXPECT_EQ(nothing->events, std::vector<EquityEvent>());
  EXPECT_EQ(nothing->durableDateRange, minutes(abc).dateRange);
  EXPECT_THAT(server.requests(Service::chartPath), SizeIs(0));
  server.script(Service::chartPath, {{.body = std::string(chartAnswer)}});
  EXPECT_TRUE(fetch(minutes(abc, 1.01)));
  EXPECT_THAT(server.requests(Service::chartPath), SizeIs(1));
  EXPECT_EQ(abc->firstTradeDate, abc->recentDate) << "an equity must not end before it starts";
}

TEST_F(YahooQuoteProviderTest, LeavesTheEquityUpdatedWhenTheBarsCannotBeUsed) {
  const auto abc = equity();
  server.script(Service::chartPath,
                {{.body = chartAnswerWith("chart.result.0.meta.currency", "EUR")}});
  const auto result = fetch(minutes(abc));
  ASSERT_FALSE(result);
  EXPECT_EQ(*result.error(),
            QuoteProviderError(QuoteProviderError::CurrencyMismatch{"USD", "EUR"}));
  EXPECT_EQ(abc->recentPrice, Decimal::fromString("10.23"));
}

TEST_F(YahooQuoteProviderTest, FindsEquitiesAndLeavesOutThoseThatItCannotRead) {
  const auto known = equity("KNOWN");
  server.script(Service::searchPath, {{.body = R"({"quotes":[
      {"symbol":"KNOWN","quoteType":"EQUITY"},{"symbol":"OPTION","quoteType":"OPTION"},
      {"symbol":"FUND","quoteType":"ETF"},{"symbol":"CADUSD=X","quoteType":"CURRENCY"},
      {"symbol":"LOST","quoteType":"EQUITY"}]})"}});
  server.script(Service::quotePath,
                {{.body = quoteAnswer({details("FUND"), details("CADUSD=X")})}});
  const auto found = search("a b");
  ASSERT_TRUE(found);
  ASSERT_THAT(*found, SizeIs(3));
  EXPECT_EQ(found->at(0), known);
  EXPECT_EQ(found->at(1)->id(), "FUND");
  EXPECT_EQ(found->at(1), provider->equityWithId("FUND"));
  EXPECT_EQ(found->at(1)->quoteProvider.lock(), provider);
  EXPECT_EQ(found->at(2)->id(), "CADUSD=X");
  EXPECT_EQ(server.requests(Service::searchPath).front().target, "/v1/finance/search?q=a%20b");
  EXPECT_THAT(server.requests(Service::quotePath).front().target,
              HasSubstr("symbols=FUND,CADUSD%3DX,LOST"));

  server.script(Service::quotePath, {{.status = 500}});
  server.script(Service::searchPath,
                {{.body = R"({"quotes":[{"symbol":"NEW","quoteType":"EQUITY"}]})"}});
  EXPECT_THAT(search("new").value(), SizeIs(0)) << "a failed refresh is no failed search";
}

TEST_F(YahooQuoteProviderTest, SaysWhyASearchFailed) {
  const auto errorFor = [&](Service::Answer answer) {
    server.script(Service::searchPath, {std::move(answer)});
    return search("a").error();
  };
  EXPECT_EQ(*errorFor({.body = R"({"quotes":[]})", .status = 429}), httpResponse(429));
  EXPECT_EQ(*errorFor({.body = ""}), incompleteData);
  EXPECT_EQ(*errorFor({.body = R"({"news":[]})"}), incompleteData);
  EXPECT_EQ(dynamic_cast<const JSONError&>(*errorFor({.body = R"({"quotes":7})"})).path, "quotes");

  // Findings that cannot be held refuse no search.
  server.script(Service::searchPath,
                {{.body = R"({"quotes":[{"symbol":"A"},{"quoteType":"EQUITY"},{"symbol":7}]})"}});
  EXPECT_THAT(search("a").value(), SizeIs(0));
}

TEST_F(YahooQuoteProviderTest, FetchesSideBySideWhileTheEquityIsInUse) {
  const auto abc = equity();
  server.script(Service::chartPath, {{.body = std::string(chartAnswer)}});
  std::atomic<int> answers = 0;
  constexpr int count = 24;
  for (int i = 0; i < count; ++i) {
    provider->fetchQuotes(minutes(abc), std::make_shared<PriceAdjuster>(provider),
                          [&](const auto& result) { answers += result ? 1 : 1000; });
  }
  Decimal sum;
  EXPECT_TRUE(MainLoop::runUntil(
      [&] {
        sum += abc->recentPrice.value_or(0);
        return answers >= count;
      },
      deadline));
  EXPECT_EQ(answers, count);
}

TEST_F(YahooQuoteProviderTest, EndsWhatIsUnderWayWhenItGoes) {
  server.hold(Service::crumbPath);
  const auto abc = equity();
  const auto error = await<ErrorPointer>([&](auto completion) {
    provider->refreshEquities({abc}, std::move(completion));
    provider.reset();
  });
  ASSERT_NE(error, nullptr);
  EXPECT_EQ(dynamic_cast<const URLError&>(*error).code, URLError::Code::cancelled);
}

TEST_F(YahooQuoteProviderTest, CutsMinutesIntoWeeks) {
  const auto abc = equity();
  constexpr double day = 86400;
  const auto sizes = [&](const QuoteQuery& query) {
    std::vector<double> days;
    Date end = query.dateRange.lower();
    for (const QuoteQuery& part : provider->sourceQueries(query)) {
      EXPECT_EQ(part.dateRange.lower(), end);
      EXPECT_EQ(part.seeking, query.seeking);
      end = part.dateRange.upper();
      days.push_back(end.timeIntervalSince(part.dateRange.lower()) / day);
    }
    EXPECT_EQ(end, query.dateRange.upper());
    return days;
  };
  EXPECT_THAT(sizes(minutes(abc, 14 * 24 - 1)), ElementsAre(7 - 1.0 / 24, 7))
      << "the first week has the night in which the clocks go forward";
  QuoteQuery query = minutes(abc, 24);
  EXPECT_THAT(sizes(query), ElementsAre(1));
  query = QuoteQuery::currentPeriod(abc, false);
  EXPECT_THAT(sizes(query), ElementsAre(0));
  query = minutes(abc, 9 * 24);
  query.seeking = QuoteQuery::Quotes{QuoteInterval::twoMinutes, PriceAdjustment::marketNominal};
  EXPECT_THAT(sizes(query), ElementsAre(9));
}

TEST_F(YahooQuoteProviderTest, OffersTheShorterBarsForTheLastDaysOnly) {
  const Calendar calendar(TimeZone{});
  const Date now = Date::since1970(1709649090);
  const auto shortest = [&](double seconds) {
    const auto intervals = YahooQuoteProvider::intervalsServed(calendar, now - seconds, now);
    EXPECT_EQ(*intervals.rbegin(), QuoteInterval::threeMonths);
    EXPECT_EQ(intervals.size(), 12U - static_cast<std::size_t>(*intervals.begin()));
    return *intervals.begin();
  };
  constexpr double day = 86400;
  EXPECT_EQ(shortest(-day), QuoteInterval::oneMinute);
  EXPECT_EQ(shortest(30 * day), QuoteInterval::oneMinute);
  EXPECT_EQ(shortest(30 * day + 1), QuoteInterval::twoMinutes);
  EXPECT_EQ(shortest(60 * day), QuoteInterval::twoMinutes);
  EXPECT_EQ(shortest(60 * day + 1), QuoteInterval::oneHour);
  EXPECT_EQ(shortest(730 * day), QuoteInterval::oneHour);
  EXPECT_EQ(shortest(731 * day), QuoteInterval::oneDay);
  EXPECT_EQ(shortest(1e300), QuoteInterval::oneDay);
  const DateRange old(Date::distantPast(), now);
  EXPECT_FALSE(provider->availableIntervals(equity(), old).contains(QuoteInterval::oneHour));
}

TEST_F(YahooQuoteProviderTest, NamesItselfAndItsCurrencyPairs) {
  EXPECT_EQ(provider->providerName(), "YahooFinance");
  const auto pair = provider->exchangeRateEquity(Currency::usd(), Currency::cad());
  EXPECT_EQ(pair->id(), "USDCAD=X");
  EXPECT_EQ(pair->currency, Currency::cad());
  EXPECT_EQ(provider->exchangeRateEquity(Currency::usd(), Currency::cad()), pair);
  EXPECT_EQ(refresh({}), nullptr);
  EXPECT_THAT(server.requests(Service::quotePath), SizeIs(0));
}

}  // namespace
}  // namespace corvane
