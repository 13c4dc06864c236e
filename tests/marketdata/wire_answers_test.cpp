// The records of the service's answers: what must be there, what may be absent, and of what type.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <set>

#include "marketdata/yahoo/wire/yahoo_finance_api.h"
#include "marketdata/yahoo_answers.h"

namespace corvane {
namespace {

using namespace YahooFinanceAPI;
using corvane::testing::chartAnswer;
using corvane::testing::chartAnswerWith;
using corvane::testing::edited;
using corvane::testing::number;
using ::testing::ElementsAre;

using Decode = std::function<void(const std::string&)>;

/// The path of the value that `decode` refuses in `json`; empty where it accepts all of them.
std::string refusedPath(const Decode& decode, const std::string& json) {
  try {
    decode(json);
    return "";
  } catch (const JSONError& error) {
    EXPECT_NE(error.reason, "");
    return error.path;
  }
}

/// The paths of all values in objects, in the form of edited(); `root` is the path of `value`.
void collectPaths(const JSONValue& value, const std::string& root, std::set<std::string>& paths) {
  const std::string prefix = root.empty() ? "" : root + ".";
  value.visit([&](const auto& content) {
    using Content = std::decay_t<decltype(content)>;
    if constexpr (std::same_as<Content, JSONValue::Object>) {
      for (const auto& [key, child] : content) {
        paths.insert(prefix + key);
        collectPaths(child, prefix + key, paths);
      }
    } else if constexpr (std::same_as<Content, JSONValue::Array>) {
      for (std::size_t i = 0; i < content.size(); ++i) {
        collectPaths(content[i], prefix + std::to_string(i), paths);
      }
    }
  });
}

/// "chart.result.0.meta" as errors write it: "chart.result[0].meta".
std::string asErrorPath(const std::string& path) {
  std::string text;
  for (std::size_t i = 0; i < path.size(); ++i) {
    const bool isIndex = path[i] == '.' && i + 1 < path.size() && path[i + 1] == '0';
    text += isIndex ? std::string("[0]") : std::string(1, path[i]);
    i += isIndex ? 1 : 0;
  }
  return text;
}

/// Of the keys of `answer` those `required` must be there, those `wanted` may be absent, and both
/// have a type. Whatever stands under any other key, or nothing, refuses no answer.
void expectPresence(const std::string& answer, const Decode& decode,
                    const std::set<std::string>& required, const std::set<std::string>& wanted) {
  const JSONValue document = JSONValue::parse(answer);
  ASSERT_EQ(refusedPath(decode, answer), "");
  std::set<std::string> paths;
  collectPaths(document, "", paths);
  for (const std::string& path : paths) {
    const auto refused = [&](const std::optional<JSONValue>& value) {
      return refusedPath(decode, edited(document, path, value).text());
    };
    const std::string ifAbsent = required.contains(path) ? asErrorPath(path) : "";
    EXPECT_EQ(refused(std::nullopt), ifAbsent) << path;
    EXPECT_EQ(refused(JSONValue()), ifAbsent) << path;
    if (required.contains(path) || wanted.contains(path)) {
      // A text where none is wanted, or a number where one is.
      const bool takesText = refused(JSONValue("seven")).empty();
      EXPECT_EQ(refused(takesText ? JSONValue(7) : JSONValue("seven")), asErrorPath(path));
      continue;
    }
    for (const char* other : {"7", "7.5", "\"-Infinity\"", "1e999", "[{}]", R"({"a":[1]})"}) {
      EXPECT_EQ(refusedPath(decode, edited(document, path, JSONValue::parse(other)).text()), "")
          << path << " is " << other;
    }
  }
  for (const std::string& path : required) {
    EXPECT_TRUE(paths.contains(path)) << path;
  }
  for (const std::string& path : wanted) {
    EXPECT_TRUE(paths.contains(path)) << path;
  }
}

TEST(WireAnswers, ChartsHaveTheirRequiredKeysAndNoOthers) {
  const std::string result = "chart.result.0.";
  std::set<std::string> required = {"chart", result + "indicators", result + "indicators.quote",
                                    result + "meta"};
  std::set<std::string> wanted = {"chart.result", result + "events", result + "timestamp",
                                  result + "meta.tradingPeriods",
                                  result + "meta.tradingPeriods.regular"};
  for (const char* key : {"close", "high", "low", "open", "volume"}) {
    wanted.insert(result + "indicators.quote.0." + key);
  }
  for (const char* key : {"currency", "currentTradingPeriod", "firstTradeDate",
                          "regularMarketPrice", "regularMarketTime"}) {
    required.insert(result + "meta." + key);
  }
  const std::string current = result + "meta.currentTradingPeriod.regular";
  required.insert(current);
  for (const char* key : {".end", ".start"}) {
    required.insert(current + key);
    required.insert(result + "meta.tradingPeriods.regular.0.0" + key);
  }
  const std::string split = result + "events.splits.1700000000";
  const std::string dividend = result + "events.dividends.1690000000";
  for (const char* key : {".date", ".denominator", ".numerator"}) {
    required.insert(split + key);
  }
  required.insert({dividend + ".date", dividend + ".amount"});

  // The entries of the two maps may be absent, but not null.
  JSONValue document = JSONValue::parse(chartAnswer);
  const Decode decode = [](const std::string& json) { (void)ChartResponse::decode(json); };
  EXPECT_EQ(refusedPath(decode, edited(document, split, JSONValue()).text()), asErrorPath(split));
  EXPECT_EQ(refusedPath(decode, edited(document, split, std::nullopt).text()), "");
  EXPECT_NE(
      refusedPath(decode,
                  edited(document, result + "events.splits.noNumber", document.at("chart")).text()),
      "");
  document = edited(document, result + "events.splits", std::nullopt);
  document = edited(document, result + "events.dividends", std::nullopt);
  std::erase_if(required, [&](const std::string& path) {
    return path.starts_with(split) || path.starts_with(dividend);
  });
  expectPresence(document.text(), decode, required, wanted);
}

TEST(WireAnswers, DetailsHaveTheirRequiredKeysAndTheTypesOfWhatIsUsed) {
  JSONValue::Object fields;
  for (const char* key : {"ask",
                          "bid",
                          "bookValue",
                          "epsCurrentYear",
                          "epsForward",
                          "epsTrailingTwelveMonths",
                          "fiftyDayAverage",
                          "fiftyDayAverageChange",
                          "fiftyDayAverageChangePercent",
                          "fiftyTwoWeekHigh",
                          "fiftyTwoWeekHighChange",
                          "fiftyTwoWeekHighChangePercent",
                          "fiftyTwoWeekLow",
                          "fiftyTwoWeekLowChange",
                          "fiftyTwoWeekLowChangePercent",
                          "forwardPE",
                          "marketCap",
                          "priceEpsCurrentYear",
                          "priceToBook",
                          "regularMarketChange",
                          "regularMarketChangePercent",
                          "regularMarketDayHigh",
                          "regularMarketDayLow",
                          "regularMarketOpen",
                          "regularMarketPreviousClose",
                          "regularMarketPrice",
                          "twoHundredDayAverage",
                          "twoHundredDayAverageChange",
                          "twoHundredDayAverageChangePercent",
                          "trailingAnnualDividendRate",
                          "trailingAnnualDividendYield",
                          "regularMarketTime"}) {
    fields.emplace_back(key, number("1.5"));
  }
  for (const char* key :
       {"askSize", "averageDailyVolume10Day", "averageDailyVolume3Month", "bidSize",
        "earningsTimestamp", "earningsTimestampEnd", "earningsTimestampStart",
        "exchangeDataDelayedBy", "firstTradeDateMilliseconds", "priceHint", "regularMarketVolume",
        "sharesOutstanding", "sourceInterval"}) {
    fields.emplace_back(key, 7);
  }
  for (const char* key : {"averageAnalystRating", "customPriceAlertConfidence", "fiftyTwoWeekRange",
                          "financialCurrency", "language", "longName", "messageBoardId",
                          "quoteSourceName", "regularMarketDayRange", "typeDisp"}) {
    fields.emplace_back(key, "text");
  }
  for (const char* key : {"cryptoTradeable", "esgPopulated", "tradeable", "triggerable"}) {
    fields.emplace_back(key, true);
  }
  fields.emplace_back("somethingNew", 1);

  const std::string result = "quoteResponse.result.0.";
  const Decode decode = [](const std::string& json) { (void)YahooFinanceAPI::Quote::decode(json); };
  const std::string answer =
      corvane::testing::quoteAnswer({corvane::testing::details("ABC", fields)});
  std::set<std::string> required = {"quoteResponse"};
  for (const char* key :
       {"currency", "exchange", "exchangeTimezoneName", "quoteType", "shortName", "symbol"}) {
    required.insert(result + key);
  }
  std::set<std::string> wanted = {"quoteResponse.result"};
  for (const char* key : {"firstTradeDateMilliseconds", "longName", "regularMarketPreviousClose",
                          "regularMarketPrice", "regularMarketTime"}) {
    wanted.insert(result + key);
  }
  expectPresence(answer, decode, required, wanted);
  EXPECT_EQ(refusedPath(decode, edited(JSONValue::parse(answer),
                                       result + "firstTradeDateMilliseconds", number("7.5"))
                                    .text()),
            asErrorPath(result + "firstTradeDateMilliseconds"));
  // What is by the way is read all the same.
  const auto read = YahooFinanceAPI::Quote::decode(answer).quoteResponse.result->front();
  EXPECT_EQ(read.bookValue, Decimal::fromString("1.5"));
  EXPECT_EQ(read.askSize, 7);
  EXPECT_EQ(read.typeDisp, "text");
  EXPECT_EQ(read.tradeable, true);
}

TEST(WireAnswers, SearchesHaveTheirRequiredKeysAndNoOthers) {
  const std::string answer = R"({"quotes":[{"exchange":"NMS","shortname":"A","quoteType":"EQUITY",
      "symbol":"ABC","index":"quotes","score":20001,"typeDisp":"equity","longname":"A B C",
      "exchDisp":"NASDAQ","sector":"Tech","industry":"Chips","dispSecIndFlag":true,
      "isYahooFinance":true,"logoUrl":"u"}],"news":[]})";
  expectPresence(answer,
                 [](const std::string& json) { (void)Search::ResponseContainer::decode(json); }, {},
                 {"quotes"});
  const auto found = Search::ResponseContainer::decode(
      R"({"quotes":[{"index":"x","name":"A private company"},{"quoteType":"ETF","symbol":"F"}]})");
  EXPECT_EQ(found.quotes->at(0).symbol, std::nullopt);
  EXPECT_EQ(found.quotes->at(1).symbol, "F");
}

TEST(WireAnswers, KeepEveryDigitAndEveryPlaceInAList) {
  const std::string json =
      edited(JSONValue::parse(chartAnswerWith(
                 "chart.result.0.indicators.quote.0.close",
                 JSONValue::parse("[185.63999938964844, null, 0.1, 12345678901234567890.12345]"))),
             "chart.result.0.indicators.quote.0.volume",
             JSONValue::parse("[9007199254740993, null, 12.0, 3e3]"))
          .text();
  const auto answer = ChartResponse::decode(json);
  const auto& series = answer.chart.result->front().indicators.quote.front();
  EXPECT_THAT(*series.close, ElementsAre(Decimal::fromString("185.63999938964844"), std::nullopt,
                                         Decimal::fromString("0.1"),
                                         Decimal::fromString("12345678901234567890.12345")));
  EXPECT_THAT(*series.volume, ElementsAre(9007199254740993, std::nullopt, 12, 3000));
}

TEST(WireAnswers, SayWhichKeyIsWrongAndWhy) {
  const auto reason = [](const std::string& path, const JSONValue& value) {
    try {
      (void)ChartResponse::decode(chartAnswerWith("chart.result.0." + path, value));
      return std::string();
    } catch (const JSONError& error) {
      return *error.description();
    }
  };
  EXPECT_EQ(reason("meta.firstTradeDate", JSONValue()),
            "chart.result[0].meta.firstTradeDate: expected a number, found null");
  EXPECT_EQ(reason("indicators.quote.0.volume", JSONValue::parse("[1.5]")),
            "chart.result[0].indicators.quote[0].volume[0]: expected a whole number, found 1.5");
  EXPECT_EQ(reason("indicators.quote.0.volume", JSONValue::parse("[1, 1e40]")),
            "chart.result[0].indicators.quote[0].volume[1]: the number 1e40 is too large");
  EXPECT_EQ(reason("indicators.quote.0.open", JSONValue::parse("[1e999]")),
            "chart.result[0].indicators.quote[0].open[0]: the number 1e999 is too large");
  EXPECT_EQ(reason("timestamp", JSONValue::parse("[1e999]")),
            "chart.result[0].timestamp[0]: the number 1e999 is too large");
}

TEST(WireAddresses, HaveTheirQueryItemsInOrderAndEncoded) {
  const YahooService service{.apiHost = "api.example", .webHost = "web.example"};
  EXPECT_EQ(searchURL(service, "A&B c+d"), "https://api.example/v1/finance/search?q=A%26B%20c%2Bd");
  EXPECT_EQ(quoteURL(service, {"ABC", "^GSPC", "CADUSD=X"}),
            "https://api.example/v7/finance/quote?symbols=ABC,%5EGSPC,CADUSD%3DX");
  EXPECT_EQ(chartURL(service, "^GSPC", "1d", Date::since1970(100.9), Date::since1970(-200.9)),
            "https://api.example/v8/finance/chart/%5EGSPC?period1=100&period2=-200&interval=1d"
            "&includePrePost=true&events=split%7Cdiv");
  EXPECT_THAT(chartURL(service, "ABC", "1m", std::nullopt, std::nullopt).value(),
              ::testing::HasSubstr("?period1=-1&period2=-1&"));
  EXPECT_EQ(crumbURL(service), "https://api.example/v1/test/getcrumb");
  EXPECT_EQ(cookiesURL(service), "https://web.example/%20");
  EXPECT_EQ(searchURL({.apiHost = "not a host"}, "A"), std::nullopt);
}

}  // namespace
}  // namespace corvane
