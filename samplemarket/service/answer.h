// What the service says to one request.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "samplemarket/service/market_data.h"

namespace corvane::samplemarket {

struct Answer {
  int status = 200;
  std::string body;
  std::string contentType = "application/json;charset=utf-8";
  std::vector<std::pair<std::string, std::string>> headers = {};
};

/// The parameters of a chart request as they were sent; empty where one was left out.
struct ChartRequest {
  std::string symbol;
  std::string period1;
  std::string period2;
  std::string interval;
  std::string events;
  bool includesPrePost = false;
};

/// Bars, and the events that the request wants. A range of -1 to -1 is that of the last day on
/// which trading has begun. `omitsBars` makes every second bar empty.
[[nodiscard]] Answer chartAnswer(MarketData& market, const ChartRequest& request, std::int64_t now,
                                 bool omitsBars);

/// Details of the instruments named, without those that do not exist.
[[nodiscard]] Answer quoteAnswer(MarketData& market, const std::vector<std::string>& symbols,
                                 std::int64_t now);

/// The instruments whose symbol, or a word of whose name, begins with the text, and the pair of
/// currencies that it names, such as "eur/usd".
[[nodiscard]] Answer searchAnswer(std::string_view text);

/// An answer with nothing but an error under the root key `container`.
[[nodiscard]] Answer errorAnswer(int status, std::string_view container, std::string_view code,
                                 std::string_view description);

/// "EQUITY"
[[nodiscard]] std::string_view quoteType(InstrumentKind kind);

}  // namespace corvane::samplemarket
