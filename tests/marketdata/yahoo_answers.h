// Answers of the market-data service, whole and changed.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/data/json.h"

namespace corvane::testing {

/// A chart answer with every key, of a Tuesday in New York with a bar and a half.
inline constexpr std::string_view chartAnswer = R"({"chart":{"result":[{
  "meta":{"currency":"USD","symbol":"ABC","exchangeName":"NMS","instrumentType":"EQUITY",
    "firstTradeDate":345479400,"regularMarketTime":1709649090,"gmtoffset":-18000,"timezone":"EST",
    "exchangeTimezoneName":"America/New_York","regularMarketPrice":10.23,
    "chartPreviousClose":9.5,"previousClose":9.5,"scale":3,"priceHint":2,
    "currentTradingPeriod":{
      "pre":{"timezone":"EST","start":1709629200,"end":1709649000,"gmtoffset":-18000},
      "regular":{"timezone":"EST","start":1709649000,"end":1709672400,"gmtoffset":-18000},
      "post":{"timezone":"EST","start":1709672400,"end":1709686800,"gmtoffset":-18000}},
    "tradingPeriods":{
      "pre":[[{"timezone":"EST","start":1709629200,"end":1709649000,"gmtoffset":-18000}]],
      "regular":[[{"timezone":"EST","start":1709649000,"end":1709672400,"gmtoffset":-18000}]],
      "post":[[{"timezone":"EST","start":1709672400,"end":1709686800,"gmtoffset":-18000}]]},
    "dataGranularity":"1m","range":"1d","validRanges":["1d","5d"]},
  "timestamp":[1709649000,1709649060],
  "events":{"splits":{"1700000000":{"date":1700000000,"numerator":3,"denominator":2,
                                    "splitRatio":"3:2"}},
            "dividends":{"1690000000":{"date":1690000000,"amount":0.24}}},
  "indicators":{"quote":[{"open":[10.1,10.2],"close":[10.2,null],"low":[10.05,10.2],
                          "high":[10.25,10.23],"volume":[1200,34]}],
                "adjclose":[{"adjclose":[10.2,null]}]}}],
  "error":null}})";

/// `document` with the value at `path` ("chart.result.0.meta") replaced, or without it where there
/// is no `value`.
inline JSONValue edited(const JSONValue& document, std::string_view path,
                        const std::optional<JSONValue>& value) {
  const auto dot = path.find('.');
  const std::string_view key = path.substr(0, dot);
  const auto edit = [&](const JSONValue& child) {
    return dot == path.npos ? *value : edited(child, path.substr(dot + 1), value);
  };
  const bool removes = dot == path.npos && !value;
  return document.visit([&](const auto& content) -> JSONValue {
    using Content = std::decay_t<decltype(content)>;
    if constexpr (std::same_as<Content, JSONValue::Array>) {
      JSONValue::Array copy = content;
      const auto index = static_cast<std::size_t>(std::stoul(std::string(key)));
      if (removes) {
        copy.erase(copy.begin() + static_cast<std::ptrdiff_t>(index));
      } else {
        copy.at(index) = edit(copy.at(index));
      }
      return copy;
    } else {
      JSONValue copy = document;
      if (removes) {
        copy.remove(key);
      } else {
        copy.set(key, edit(dot == path.npos ? JSONValue() : document.at(key)));
      }
      return copy;
    }
  });
}

inline std::string chartAnswerWith(std::string_view path, const std::optional<JSONValue>& value) {
  return edited(JSONValue::parse(chartAnswer), path, value).text();
}

/// The details of an equity with what the service always tells; `fields` are set on top of them.
inline JSONValue details(const std::string& symbol, const JSONValue::Object& fields = {}) {
  JSONValue result = JSONValue::parse(
      R"({"currency":"USD","exchange":"NMS","exchangeTimezoneName":"America/New_York",
      "exchangeTimezoneShortName":"EST","fullExchangeName":"Nasdaq","gmtOffSetMilliseconds":-18000000,
      "market":"us_market","marketState":"REGULAR","quoteType":"EQUITY","region":"US",
      "shortName":"A B C"})");
  result.set("symbol", symbol);
  for (const auto& [key, value] : fields) {
    result.set(key, value);
  }
  return result;
}

inline std::string quoteAnswer(JSONValue::Array results) {
  JSONValue response;
  response.set("result", std::move(results));
  response.set("error", JSONValue());
  JSONValue answer;
  answer.set("quoteResponse", std::move(response));
  return answer.text();
}

inline JSONNumber number(std::string_view text) {
  return JSONNumber::fromText(text).value();
}

}  // namespace corvane::testing
