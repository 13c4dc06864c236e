// The provider against the sample market: real requests, real answers, real failures.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "core/market/price_adjuster.h"
#include "marketdata/yahoo/yahoo_provider_error.h"
#include "marketdata/yahoo/yahoo_quote_provider.h"
#include "platform/async/dispatch_queue.h"
#include "platform/net/url_request.h"
#include "samplemarket/market_client.h"
#include "samplemarket/sample_market.h"

namespace corvane {
namespace {

using corvane::testing::at;
using corvane::testing::deadline;
using corvane::testing::TestClock;
using ::testing::ElementsAre;
using ::testing::SizeIs;
using enum PriceAdjustment;
using Fault = SampleMarketFault;

constexpr double day = 86400;

// A Tuesday, 90 minutes before New York closes.
const Date now = at("America/New_York", 2026, 3, 10, 14, 30, 20);
const Date opening = at("America/New_York", 2026, 3, 10, 9, 30);

class ServiceChainTest : public ::testing::Test {
 protected:
  void TearDown() override {
    provider.reset();
    market.releaseSlowAnswers();
    MainLoop::drain();
    for (const auto& count : completions) {
      EXPECT_EQ(*count, 1) << "each completion runs once";
    }
  }

  /// What to give as a completion, and where its outcome will be.
  template <typename Outcome>
  struct Expected {
    std::shared_ptr<std::atomic<int>> count = std::make_shared<std::atomic<int>>(0);
    std::shared_ptr<Outcome> outcome = std::make_shared<Outcome>();

    auto completion() {
      return [*this](auto result) {
        *outcome = std::move(result);
        ++*count;
      };
    }
  };
  template <typename Outcome>
  Outcome& awaited(Expected<Outcome>& expected) {
    if (!MainLoop::runUntil([&] { return *expected.count > 0; }, deadline)) {
      ADD_FAILURE() << "no answer came";
      std::abort();
    }
    return *expected.outcome;
  }
  using Found = Result<std::vector<EquityPointer>>;
  template <typename Outcome>
  Expected<Outcome> expecting() {
    Expected<Outcome> expected;
    completions.push_back(expected.count);
    return expected;
  }

  std::vector<std::string> search(const std::string& text) {
    auto expected = expecting<std::optional<Found>>();
    provider->searchEquities(text, expected.completion());
    std::vector<std::string> names;
    for (const EquityPointer& equity : awaited(expected)->value()) {
      held.push_back(equity);
      EXPECT_TRUE(equity->isAuthoritative);
      names.push_back(equity->id() + " " + equity->name.value());
    }
    return names;
  }
  ErrorPointer refresh(std::vector<EquityPointer> equities) {
    auto expected = expecting<ErrorPointer>();
    provider->refreshEquities(std::move(equities), expected.completion());
    return awaited(expected);
  }
  Expected<std::optional<Result<QuoteFetchResult>>> start(const QuoteQuery& query) {
    auto expected = expecting<std::optional<Result<QuoteFetchResult>>>();
    provider->fetchQuotes(query, std::make_shared<PriceAdjuster>(provider), expected.completion());
    return expected;
  }
  Result<QuoteFetchResult> fetch(const QuoteQuery& query) {
    auto started = start(query);
    return *awaited(started);
  }
  Result<QuoteFetchResult> fetch(const EquityPointer& equity, Date from, Date to,
                                 QuoteInterval interval,
                                 PriceAdjustment prices = adjustedForSplits) {
    return fetch({equity, {from, to}, QuoteQuery::Quotes{interval, prices}});
  }
  /// An equity with its details.
  EquityPointer refreshed(const std::string& id) {
    EquityPointer equity = provider->equityWithId(id);
    EXPECT_EQ(refresh({equity}), nullptr) << id;
    EXPECT_TRUE(equity->isAuthoritative) << id;
    return equity;
  }

  [[nodiscard]] std::shared_ptr<YahooQuoteProvider> newProvider() const {
    return std::make_shared<YahooQuoteProvider>(
        YahooService{.scheme = "http",
                     .apiHost = market.host(),
                     .webHost = market.host(),
                     .port = market.port(),
                     .userAgent = "Test/1",
                     .pauses = {.first = 0.02, .longest = 0.1, .untilRequestsEndThem = 0.05}});
  }

  TestClock clock{now};
  SampleMarket market{{.clock = clock.reader()}};
  std::shared_ptr<YahooQuoteProvider> provider = newProvider();
  std::vector<std::shared_ptr<std::atomic<int>>> completions;
  std::vector<EquityPointer> held;
};

TEST_F(ServiceChainTest, FindsSharesFundsAndPairs) {
  EXPECT_THAT(search("corrin"),
              ElementsAre("ALLUS Corrin Total America Fund", "BNDUS Corrin Bond Income Fund",
                          "ALLCA.TO Corrin Canadian Equity Fund",
                          "CWRLD.TO Corrin World Equity Fund", "CUKEQ.L Corrin UK Equity Fund"));
  EXPECT_EQ(market.requestCount("/v7/"), 1) << "the details of all in one request";
  EXPECT_THAT(search("thrale"), ElementsAre("THRAL.L Thrale & Mossop plc"));
  EXPECT_THAT(search("eur/cad"), ElementsAre("EURCAD=X EUR → CAD"));
  EXPECT_THAT(search("new york hundred"), SizeIs(0)) << "an index cannot be held";
  EXPECT_THAT(search("dunvale"), ElementsAre("DUNVL.L Dunvale Stores plc"));
}

TEST_F(ServiceChainTest, ReadsTheDetailsOfEquities) {
  const auto tokyo = refreshed("0417.T");
  EXPECT_EQ(tokyo->currency.code, "JPY");
  EXPECT_EQ(tokyo->calendar.timeZone().identifier(), "Asia/Tokyo");
  EXPECT_EQ(tokyo->exchange, "JPX");
  EXPECT_EQ(tokyo->firstTradeDate, at("Asia/Tokyo", 1990, 1, 4, 9));
  EXPECT_EQ(tokyo->recentDate, at("Asia/Tokyo", 2026, 3, 10, 15, 30));
  EXPECT_GT(tokyo->recentPrice, tokyo->previousClosePrice.value() / 2);

  const auto unknown = provider->equityWithId("NONE");
  EXPECT_EQ(refresh({unknown}), nullptr);
  EXPECT_FALSE(unknown->isAuthoritative);

  // Prices in pence are read in pounds, those of charts too.
  const auto pence = refreshed("HARKS.L");
  EXPECT_EQ(pence->currency.code, "GBP");
  const auto told = fetch(pence, now - 9 * day, now, QuoteInterval::oneDay).value();
  EXPECT_EQ(told.quotes->back().close, pence->recentPrice);
  EXPECT_LT(pence->recentPrice, Decimal(100));
}

TEST_F(ServiceChainTest, FetchesBarsOfEveryLength) {
  const std::vector<std::pair<QuoteInterval, double>> daysBack = {
      {QuoteInterval::oneMinute, 6},      {QuoteInterval::twoMinutes, 20},
      {QuoteInterval::fiveMinutes, 40},   {QuoteInterval::fifteenMinutes, 59},
      {QuoteInterval::thirtyMinutes, 59}, {QuoteInterval::ninetyMinutes, 59},
      {QuoteInterval::oneHour, 700},      {QuoteInterval::oneDay, 9000},
      {QuoteInterval::fiveDays, 9000},    {QuoteInterval::oneWeek, 9000},
      {QuoteInterval::oneMonth, 9000},    {QuoteInterval::threeMonths, 9000}};
  for (const auto* id : {"PELLR", "ALPTC.F", "0582.T", "GBPCAD=X"}) {
    const auto equity = refreshed(id);
    for (const auto& [interval, days] : daysBack) {
      const Date from = now - days * day;
      const auto result = fetch(equity, from, now, interval);
      ASSERT_TRUE(result) << *result.error();
      const auto& quotes = result->quotes.value();
      const auto& durable = result->durableDateRange;
      ASSERT_GT(quotes.size(), 50U);
      EXPECT_TRUE(std::ranges::is_sorted(quotes, {}, &Quote::fromDate));
      bool isEmpty = true;
      for (const Quote& quote : quotes) {
        EXPECT_LE(quote.fromDate, quote.toDate);
        EXPECT_FALSE(quote.close && *quote.high < *quote.low);
        isEmpty = isEmpty && quote.isPartial;
        EXPECT_TRUE(quote.isPartial || interval == QuoteInterval::fiveDays ||
                    interval == QuoteInterval::threeMonths ||
                    (quote.fromDate >= durable.lower() && quote.toDate <= durable.upper()));
      }
      EXPECT_FALSE(isEmpty);
      const bool isNeverFinal =
          interval == QuoteInterval::fiveDays || interval == QuoteInterval::threeMonths;
      EXPECT_EQ(durable.lower() == durable.upper(), isNeverFinal) << id;
    }
  }
}

TEST_F(ServiceChainTest, TellsTheRunningDayApart) {
  const auto equity = refreshed("PELLR");
  const auto daily = fetch(equity, now - 20 * day, now, QuoteInterval::oneDay).value();
  const Quote& running = daily.quotes->back();
  EXPECT_EQ(running.fromDate, opening);
  EXPECT_TRUE(running.isPartial);
  EXPECT_EQ(running.close, equity->recentPrice);
  EXPECT_FALSE((daily.quotes->end() - 2)->isPartial);
  EXPECT_EQ(daily.durableDateRange.upper(), (daily.quotes->end() - 2)->toDate);

  const auto current = fetch(QuoteQuery::currentPeriod(equity, false)).value();
  EXPECT_EQ(equity->recentTradingPeriod,
            DateRange(opening, at("America/New_York", 2026, 3, 10, 16)));
  std::optional<Decimal> high;
  for (const Quote& minute : current.quotes.value()) {
    if (minute.fromDate >= opening && minute.high) {
      high = std::max(high.value_or(0), *minute.high);
    }
  }
  EXPECT_EQ(high, running.high);
  EXPECT_EQ(current.quotes->back().close.value_or(*running.close), running.close);

  // In the evening all of the day is final, but for a bar that would end tomorrow morning.
  clock.set(at("America/New_York", 2026, 3, 10, 21));
  const auto evening =
      fetch(equity, opening - 2 * day, clock.now(), QuoteInterval::oneHour).value();
  EXPECT_EQ(evening.durableDateRange.upper(), at("America/New_York", 2026, 3, 10, 16));
}

TEST_F(ServiceChainTest, FindsThePricesAsTheyWereTraded) {
  const auto equity = refreshed("NIMBR");
  market.addSplit("NIMBR", opening - 700 * day, 4, 1);
  const Date from = equity->firstTradeDate.value();
  const auto restated = fetch(equity, from, now, QuoteInterval::oneDay).value();
  const auto traded = fetch(equity, from, now, QuoteInterval::oneDay, marketNominal).value();
  const auto invested =
      fetch(equity, from, now, QuoteInterval::oneDay, adjustedForSplitsAndDividends).value();
  ASSERT_EQ(restated.quotes->size(), traded.quotes->size());
  const auto splits = std::ranges::count_if(*restated.events, [](const EquityEvent& event) {
    return std::holds_alternative<EquityEvent::Split>(event.kind);
  });
  EXPECT_GE(splits, 4);
  const Decimal tolerance = Decimal::fromString("0.00005").value();
  for (std::size_t i = 0; i < traded.quotes->size(); ++i) {
    const auto& close = (*traded.quotes)[i].close;
    if (close) {
      EXPECT_LT(abs(*close - rounded(*close, 2, RoundingMode::plain)), tolerance)
          << "trades are in whole cents: " << (*traded.quotes)[i].fromDate.description();
    }
  }
  EXPECT_EQ(traded.quotes->back().close, restated.quotes->back().close);
  EXPECT_GT(traded.quotes->front().close, restated.quotes->front().close.value() * 4);
  EXPECT_LT(invested.quotes->front().close, restated.quotes->front().close);
}

/// A chart of few bars tells few dividends.
TEST_F(ServiceChainTest, FetchesTheDividendsOfEveryMonth) {
  const auto fund = refreshed("BNDUS");
  const Date from = at("America/New_York", 2015, 1, 1);
  const auto answer = fetch({fund, {from, now}, QuoteQuery::EventsOnly{adjustedForSplits}}).value();
  std::set<std::pair<int, int>> months;
  for (const EquityEvent& event : answer.events.value()) {
    months.insert({fund->calendar.component(CalendarUnit::year, event.date),
                   fund->calendar.component(CalendarUnit::month, event.date)});
  }
  EXPECT_GE(months.size(), 11U * 12);
}

TEST_F(ServiceChainTest, FetchesTheRatesOfCurrencies) {
  for (const auto* code : {"USD", "EUR", "GBP", "JPY", "KWD"}) {
    const Currency& other = Currency::byCode().find(code)->second;
    const auto there = provider->exchangeRateEquity(Currency::cad(), other);
    const auto back = provider->exchangeRateEquity(other, Currency::cad());
    ASSERT_EQ(refresh({there, back}), nullptr);
    EXPECT_EQ(there->currency, other);
    const auto closes = [&](const EquityPointer& pair) {
      const auto result = fetch(pair, now - 300 * day, now, QuoteInterval::oneDay).value();
      std::vector<Decimal> prices;
      for (const Quote& quote : result.quotes.value()) {
        prices.push_back(quote.close.value());
      }
      return prices;
    };
    const auto rates = closes(there);
    const auto inverses = closes(back);
    ASSERT_EQ(rates.size(), inverses.size());
    for (std::size_t i = 0; i < rates.size(); ++i) {
      EXPECT_LT(abs(rates[i] * inverses[i] - 1), Decimal::fromString("0.00001").value())
          << there->id();
    }
  }
}

YahooProviderError httpResponse(int statusCode) {
  return YahooProviderError(YahooProviderError::HTTPResponse{statusCode});
}
const YahooProviderError incompleteData(YahooProviderError::IncompleteData{});

TEST_F(ServiceChainTest, SaysWhatWentWrong) {
  const auto equity = refreshed("CASTR");
  const std::vector<std::pair<Fault, YahooProviderError>> expected = {
      {Fault::unauthorized, httpResponse(401)},
      {Fault::tooManyRequests, httpResponse(429)},
      {Fault::serverError, httpResponse(500)},
      {Fault::truncatedJSON, incompleteData},
      {Fault::malformedJSON, incompleteData}};
  const auto fetchDays = [&] { return fetch(equity, now - 30 * day, now, QuoteInterval::oneDay); };
  for (const auto& [fault, error] : expected) {
    market.addFault({.fault = fault, .pathPrefix = "/v8/"});
    EXPECT_EQ(*fetchDays().error(), error);
    market.addFault({.fault = fault, .pathPrefix = "/v7/"});
    EXPECT_EQ(*refresh({equity}), error);
    EXPECT_TRUE(fetchDays()) << "the next request is served";
    EXPECT_EQ(refresh({equity}), nullptr);
  }
  for (const std::string path : {"/v8/", "/v7/"}) {
    market.addFault({.fault = Fault::droppedConnection, .pathPrefix = path});
    const ErrorPointer dropped = path == "/v8/" ? fetchDays().error() : refresh({equity});
    ASSERT_NE(dropped, nullptr);
    EXPECT_EQ(dynamic_cast<const URLError&>(*dropped).code, URLError::Code::connectionLost);
  }
  market.addFault({.fault = Fault::nullBars, .pathPrefix = "/v8/"});
  const auto holed = fetchDays().value();
  EXPECT_EQ(holed.quotes->front().close, std::nullopt);
  EXPECT_NE(holed.quotes->at(1).close, std::nullopt);

  const auto unknown = fetch(provider->equityWithId("NONE"), now - day, now, QuoteInterval::oneDay);
  const auto& refusal = dynamic_cast<const YahooProviderError&>(*unknown.error());
  EXPECT_EQ(std::get<YahooProviderError::APIError>(refusal.which()).code, "Not Found");
  const auto tooOld = fetch(equity, now - 100 * day, now - 99 * day, QuoteInterval::oneMinute);
  EXPECT_EQ(tooOld.error()->description(), "Bars of 1m reach back 30 days only");
}

TEST_F(ServiceChainTest, PausesWhenItIsAskedTo) {
  const auto equity = refreshed("CASTR");
  const auto fetchDays = [&](int days) {
    return fetch(equity, now - days * day, now, QuoteInterval::oneDay);
  };
  market.addFault({.fault = Fault::tooManyRequests, .pathPrefix = "/v8/"});
  const auto asked = std::chrono::steady_clock::now();
  EXPECT_EQ(*fetchDays(30).error(), httpResponse(429));
  EXPECT_EQ(refresh({equity}), nullptr) << "other requests wait too";
  EXPECT_GT(std::chrono::steady_clock::now() - asked, std::chrono::milliseconds(500));

  market.addFault(
      {.fault = Fault::tooManyRequests, .pathPrefix = "/v8/", .retryAfterSeconds = 600});
  EXPECT_EQ(*fetchDays(31).error(), httpResponse(429));
  const int before = market.requestCount();
  EXPECT_EQ(*fetchDays(32).error(), httpResponse(429));
  EXPECT_EQ(*refresh({equity}), httpResponse(429));
  EXPECT_EQ(market.requestCount(), before) << "nobody waits for long";
  const double pause = provider->nextRequestDate().value().timeIntervalSince(Date::now());
  EXPECT_GT(pause, 590);
  EXPECT_LE(pause, 600);
}

TEST_F(ServiceChainTest, SaysWhyASearchFailed) {
  for (const auto& [fault, status] :
       {std::pair{Fault::tooManyRequests, 429}, {Fault::serverError, 500}}) {
    market.addFault({.fault = fault, .pathPrefix = "/v1/finance/"});
    auto expected = expecting<std::optional<Found>>();
    provider->searchEquities("corrin", expected.completion());
    EXPECT_EQ(*awaited(expected)->error(), httpResponse(status));
  }
  market.addFault({.fault = Fault::malformedJSON, .pathPrefix = "/v1/finance/"});
  auto expected = expecting<std::optional<Found>>();
  provider->searchEquities("corrin", expected.completion());
  EXPECT_FALSE(awaited(expected)->has_value());
}

TEST_F(ServiceChainTest, AsksForAccessUntilItIsGiven) {
  (void)refreshed("SKERR.L");  // the first provider's own asking uses up none of the faults below
  for (const auto& [path, fault] : {std::pair{"/ ", Fault::droppedConnection},
                                    {"/v1/test/getcrumb", Fault::unauthorized},
                                    {"/v1/test/getcrumb", Fault::serverError},
                                    {"/v1/test/getcrumb", Fault::droppedConnection}}) {
    provider.reset();
    market.addFault({.fault = fault, .pathPrefix = path, .count = 2});
    provider = newProvider();
    const int before = market.requestCount("/v7/");
    (void)refreshed("BOREA.TO");
    EXPECT_EQ(market.requestCount("/v7/"), before + 1) << "not before there is a crumb";
  }
}

TEST_F(ServiceChainTest, ChartsDoNotWaitForAccess) {
  (void)refreshed("SKERR.L");  // the first provider's own asking does not use up the fault below
  provider.reset();
  market.addFault({.fault = Fault::slowAnswer, .pathPrefix = "/ ", .delay = std::chrono::hours(1)});
  const int before = market.requestCount("/ ");
  provider = newProvider();
  ASSERT_TRUE(market.waitForRequests(before + 1, "/ "));
  const auto equity = provider->equityWithId("TAMRK.TO");
  auto refreshing = expecting<ErrorPointer>();
  provider->refreshEquities({equity}, refreshing.completion());
  EXPECT_TRUE(fetch(equity, now - 9 * day, now, QuoteInterval::oneDay));
  EXPECT_EQ(*refreshing.count, 0);
  EXPECT_EQ(equity->currency, Currency::cad()) << "a chart tells it as well";
  EXPECT_EQ(equity->calendar.timeZone().identifier(), "America/Toronto");
  market.releaseSlowAnswers();
  EXPECT_EQ(awaited(refreshing), nullptr);
}

TEST_F(ServiceChainTest, AsksForAnotherCrumbOnceInAWhile) {
  const auto equity = refreshed("SKERR.L");
  const auto other = refreshed("THRAL.L");
  market.expireCrumb();
  const int before = market.requestCount("/v1/test/getcrumb");
  auto together = expecting<ErrorPointer>();
  provider->refreshEquities({other}, together.completion());
  EXPECT_EQ(refresh({equity}), nullptr);
  EXPECT_EQ(awaited(together), nullptr);
  EXPECT_EQ(market.requestCount("/v1/test/getcrumb"), before + 1);

  market.expireCrumb();
  equity->isAuthoritative = false;
  const auto error = refresh({equity});
  ASSERT_NE(error, nullptr);
  EXPECT_EQ(*error, httpResponse(401));
  EXPECT_FALSE(equity->isAuthoritative);
  EXPECT_TRUE(fetch(equity, now - 9 * day, now, QuoteInterval::oneDay)) << "charts need no crumb";
}

TEST_F(ServiceChainTest, AnswersEveryFetchOfARandomlyFailingService) {
  const auto equity = refreshed("VESTM");
  SampleMarket faulty({.clock = clock.reader(), .faultsPerThousand = 400, .faultSeed = 11});
  provider = std::make_shared<YahooQuoteProvider>(YahooService{
      .scheme = "http", .apiHost = faulty.host(), .webHost = faulty.host(), .port = faulty.port()});
  const auto same = provider->equityWithId("VESTM");
  same->currency = equity->currency;
  same->calendar = equity->calendar;
  std::vector<Expected<std::optional<Result<QuoteFetchResult>>>> started;
  for (int i = 1; i <= 60; ++i) {
    started.push_back(start({same,
                             {now - i * day, now},
                             QuoteQuery::Quotes{QuoteInterval::oneDay, adjustedForSplits}}));
  }
  int failures = 0;
  for (auto& fetching : started) {
    const bool hasCome = MainLoop::runUntil(
        [&] {
          faulty.releaseSlowAnswers();
          return *fetching.count > 0;
        },
        deadline);
    ASSERT_TRUE(hasCome);
    const auto& result = **fetching.outcome;
    failures += result ? 0 : 1;
    EXPECT_TRUE(result || result.error()->description()) << "an error says what it is";
  }
  EXPECT_GT(failures, 5);
  EXPECT_LT(failures, 40);
  provider.reset();  // before the service that it talks to
}

}  // namespace
}  // namespace corvane
