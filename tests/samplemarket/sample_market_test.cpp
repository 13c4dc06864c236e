// Access, details, search, and failures on demand.

#include "samplemarket/sample_market.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

#include "samplemarket/market_client.h"

namespace corvane::testing {
namespace {

using Fault = SampleMarketFault;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::SizeIs;

const Date now = at("America/New_York", 2026, 3, 10, 14, 30, 20);

class SampleMarketTest : public ::testing::Test {
 protected:
  Result<HTTPResponse> chart(const std::string& symbol = "HOLVK") {
    return client.getChart(symbol, now - 86400 * 30, now, "1d");
  }
  std::vector<std::string> found(const std::string& text) {
    const JSONValue answer =
        JSONValue::parse(client.get("/v1/finance/search", {{"q", text}})->body);
    std::vector<std::string> symbols;
    for (const JSONValue& quote : answer.at("quotes").array()) {
      symbols.push_back(quote.at("symbol").string());
    }
    return symbols;
  }

  SampleMarket market{{.clock = TestClock(now).reader()}};
  MarketClient client{market};
};

TEST_F(SampleMarketTest, DemandsACookieForTheCrumbAndBothForDetails) {
  const auto refused = client.get("/v1/test/getcrumb");
  EXPECT_EQ(refused->statusCode, 401);
  EXPECT_NE(refused->body.find(' '), std::string::npos) << "must not pass for a crumb";
  (void)client.get("/ ");
  EXPECT_THAT(client.session().cookies(), SizeIs(1));
  const std::string crumb = client.get("/v1/test/getcrumb")->body;
  EXPECT_THAT(crumb, SizeIs(11));
  EXPECT_EQ(client.getDetails("HOLVK", crumb)->statusCode, 200);
  EXPECT_EQ(client.getDetails("HOLVK", crumb + "x")->statusCode, 401);
  EXPECT_EQ(client.getDetails("HOLVK", "")->statusCode, 401);
  EXPECT_EQ(MarketClient(market).getDetails("HOLVK", crumb)->statusCode, 401) << "no cookie";

  market.expireCrumb();
  EXPECT_EQ(client.getDetails("HOLVK", crumb)->statusCode, 401);
  const std::string newCrumb = client.get("/v1/test/getcrumb")->body;
  EXPECT_NE(newCrumb, crumb);
  EXPECT_EQ(client.getDetails("HOLVK", newCrumb)->statusCode, 200);
}

TEST_F(SampleMarketTest, TellsTheDetailsOfWhatExists) {
  const auto answer =
      JSONValue::parse(client.getDetails("THRAL.L,NONE,EURUSD=X,DUNVL.L", client.crumb())->body);
  const auto& results = answer.at("quoteResponse").at("result").array();
  ASSERT_THAT(results, SizeIs(3));
  EXPECT_EQ(results[0].at("symbol").string(), "THRAL.L");
  EXPECT_EQ(results[0].at("longName").string(), "Thrale &amp; Mossop plc");
  EXPECT_EQ(results[0].at("currency").string(), "GBP");
  EXPECT_EQ(results[0].at("marketState").string(), "CLOSED");
  EXPECT_EQ(results[1].at("quoteType").string(), "CURRENCY");
  EXPECT_EQ(results[1].at("shortName").string(), "EUR/USD");
  EXPECT_EQ(results[1].at("marketState").string(), "REGULAR");
  EXPECT_EQ(results[2].at("currency").string(), "GBp");

  const Chart daily = client.chart("THRAL.L", now - 86400 * 5, now, "1d");
  EXPECT_EQ(decimalOf(results[0].at("regularMarketPrice")), daily.bars.back().close);
  EXPECT_EQ(decimalOf(results[0].at("regularMarketPreviousClose")), (daily.bars.end() - 2)->close);
  EXPECT_EQ(results[0].at("regularMarketTime"), daily.meta.at("regularMarketTime"));
}

TEST_F(SampleMarketTest, FindsBySymbolByNameAndByPair) {
  EXPECT_THAT(found("tamrk"), ElementsAre("TAMRK.TO"));
  EXPECT_THAT(found("Corrin"), ElementsAre("ALLUS", "BNDUS", "ALLCA.TO", "CWRLD.TO", "CUKEQ.L"));
  EXPECT_THAT(found("hundred"), ElementsAre("^CNY100"));
  EXPECT_THAT(found("eur/usd"), ElementsAre("EURUSD=X"));
  EXPECT_THAT(found("CADJPY=X"), ElementsAre("CADJPY=X"));
  EXPECT_THAT(found("thrale & mossop"), SizeIs(0)) << "names hold XML entities, as the real ones";
  EXPECT_THAT(found("orrin"), SizeIs(0));
  EXPECT_THAT(found(""), SizeIs(0));
}

TEST_F(SampleMarketTest, FailsAsItIsTold) {
  const std::string right = chart()->body;
  const auto withFault = [&](Fault fault) {
    market.addFault({.fault = fault, .pathPrefix = "/v8/"});
    return chart();
  };
  EXPECT_EQ(withFault(Fault::unauthorized)->statusCode, 401);
  const auto throttled = withFault(Fault::tooManyRequests);
  EXPECT_EQ(throttled->statusCode, 429);
  EXPECT_EQ(headerValue(throttled->headers, "Retry-After"), "1");
  EXPECT_EQ(withFault(Fault::serverError)->statusCode, 500);
  const auto truncated = withFault(Fault::truncatedJSON);
  EXPECT_EQ(truncated->statusCode, 200);
  EXPECT_EQ(truncated->body, right.substr(0, right.size() / 2));
  const auto malformed = withFault(Fault::malformedJSON);
  EXPECT_THROW((void)JSONValue::parse(malformed->body), JSONError);
  EXPECT_EQ(malformed->body.size(), right.size());
  const auto dropped = withFault(Fault::droppedConnection);
  ASSERT_FALSE(dropped);
  EXPECT_EQ(dynamic_cast<const URLError&>(*dropped.error()).code, URLError::Code::connectionLost);
  const Chart holed = MarketClient::chartIn(withFault(Fault::nullBars)->body);
  const Chart whole = MarketClient::chartIn(right);
  ASSERT_EQ(holed.bars.size(), whole.bars.size());
  EXPECT_EQ(holed.bars[0].close, std::nullopt);
  EXPECT_EQ(holed.bars[1], whole.bars[1]);
  EXPECT_EQ(chart()->body, right) << "each rule was for one request";

  const std::string crumb = client.crumb();
  market.addFault({.fault = Fault::staleCrumb, .pathPrefix = "/v7/"});
  EXPECT_EQ(client.getDetails("HOLVK", crumb)->statusCode, 401);
  EXPECT_EQ(client.getDetails("HOLVK", crumb)->statusCode, 401) << "the crumb stays stale";
  EXPECT_EQ(client.getDetails("HOLVK", client.crumb())->statusCode, 200);
}

TEST_F(SampleMarketTest, AnswersSlowlyUntilItIsReleased) {
  market.addFault(
      {.fault = Fault::slowAnswer, .symbol = "CASTR", .count = 2, .delay = std::chrono::hours(1)});
  const auto items = MarketClient::chartItems(now - 86400, now, "1d");
  auto slow = client.start("/v8/finance/chart/CASTR", items);
  ASSERT_TRUE(market.waitForRequests(1, "/v8/", "CASTR"));
  EXPECT_EQ(chart()->statusCode, 200) << "others are served meanwhile";
  EXPECT_EQ(slow.wait_for(std::chrono::seconds(0)), std::future_status::timeout);
  market.releaseSlowAnswers();
  ASSERT_EQ(slow.wait_for(deadline), std::future_status::ready);
  EXPECT_EQ(slow.get()->statusCode, 200);
  // One more that only ends with the market, which must not wait an hour for it.
  auto last = client.start("/v8/finance/chart/CASTR", items);
  EXPECT_TRUE(market.waitForRequests(2, "/v8/", "CASTR"));
}

TEST_F(SampleMarketTest, PicksRequestsByRule) {
  market.addFault({.fault = Fault::serverError, .symbol = "NIMBR", .count = 2});
  market.addFault({.fault = Fault::unauthorized, .symbol = "NIMBR"});
  EXPECT_EQ(chart("HOLVK")->statusCode, 200);
  EXPECT_EQ(chart("NIMBR")->statusCode, 500);
  EXPECT_EQ(chart("NIMBR")->statusCode, 500);
  EXPECT_EQ(chart("NIMBR")->statusCode, 401);
  EXPECT_EQ(chart("NIMBR")->statusCode, 200);
  market.addFault({.fault = Fault::serverError, .count = 1000});
  market.clearFaults();
  EXPECT_EQ(chart("HOLVK")->statusCode, 200);
}

TEST_F(SampleMarketTest, CountsWhatItWasAskedFor) {
  const std::string crumb = client.crumb();
  (void)client.getDetails("HOLVK,NIMBR", crumb);
  (void)chart("HOLVK");
  market.addFault({.fault = Fault::droppedConnection});
  (void)chart("HOLVK");
  EXPECT_EQ(market.requestCount(), 5);
  EXPECT_EQ(market.requestCount("/v8/finance/chart/"), 2);
  EXPECT_EQ(market.requestCount("/v7/", "NIMBR"), 1);
  EXPECT_EQ(market.requestCount({}, "HOLVK"), 3);
  const auto requests = market.requests();
  ASSERT_THAT(requests, SizeIs(5));
  EXPECT_EQ(requests[2].symbols, (std::vector<std::string>{"HOLVK", "NIMBR"}));
  EXPECT_EQ(requests[2].status, 200);
  EXPECT_THAT(requests[3].query, HasSubstr("interval=1d"));
  EXPECT_EQ(requests[4].status, 0);
  EXPECT_FALSE(market.waitForRequests(6, {}, {}, std::chrono::milliseconds(0)));
}

TEST_F(SampleMarketTest, FailsAtRandomInTheSameWayForTheSameSeed) {
  const auto outcomes = [&](std::uint64_t seed) {
    SampleMarket faulty(
        {.clock = TestClock(now).reader(), .faultsPerThousand = 300, .faultSeed = seed});
    MarketClient itsClient(faulty);
    std::vector<std::string> texts;
    for (int i = 0; i < 60; ++i) {
      auto answer = itsClient.start("/v8/finance/chart/HOLVK",
                                    MarketClient::chartItems(now - 86400, now, "1d"));
      (void)faulty.waitForRequests(i + 1);
      // A slow answer is let go as often as it takes: it may not have begun to wait.
      while (answer.wait_for(std::chrono::milliseconds(1)) != std::future_status::ready) {
        faulty.releaseSlowAnswers();
      }
      const auto result = answer.get();
      texts.push_back(result ? std::to_string(result->statusCode) + result->body : "none");
    }
    return texts;
  };
  const auto first = outcomes(7);
  EXPECT_THAT(first, Contains("none"));
  EXPECT_THAT(first, Contains(HasSubstr("Too Many")));
  EXPECT_GT(std::ranges::count(first, first.back()), 30);
  EXPECT_EQ(outcomes(7), first);
  EXPECT_NE(outcomes(8), first);
}

TEST_F(SampleMarketTest, ServesManyAtOnce) {
  std::vector<std::future<Result<HTTPResponse>>> answers;
  for (int i = 0; i < 40; ++i) {
    const auto* symbol = i % 2 == 0 ? "CADCHF=X" : "LAURV.TO";
    answers.push_back(client.start(std::string("/v8/finance/chart/") + symbol,
                                   MarketClient::chartItems(now - 86400 * 900, now, "1wk")));
  }
  for (std::size_t i = 0; i < answers.size(); ++i) {
    ASSERT_EQ(answers[i].wait_for(deadline), std::future_status::ready);
    const auto answer = answers[i].get();
    ASSERT_TRUE(answer);
    EXPECT_THAT(MarketClient::chartIn(answer->body).bars, SizeIs(::testing::Ge(128U)));
  }
}

TEST_F(SampleMarketTest, RefusesAPortThatIsTaken) {
  EXPECT_THROW(SampleMarket({.port = market.port()}), SampleMarketError);
  EXPECT_EQ(market.baseURL(), "http://127.0.0.1:" + std::to_string(market.port()));
}

}  // namespace
}  // namespace corvane::testing
