#include "marketdata/yahoo/wire/yahoo_finance_api.h"

#include <algorithm>
#include <utility>

#include "platform/net/url_components.h"

namespace corvane::YahooFinanceAPI {
namespace {

using QueryItems = std::vector<URLComponents::QueryItem>;

std::optional<std::string> url(const YahooService& service, const std::string& host,
                               std::string path, std::optional<QueryItems> items = {}) {
  return URLComponents{.scheme = service.scheme,
                       .host = host,
                       .port = service.port,
                       .path = std::move(path),
                       .queryItems = std::move(items)}
      .string();
}

std::string periodText(std::optional<Date> date) {
  if (!date) {
    return "-1";
  }
  // As far as whole numbers are exact in a Date; beyond, the service has nothing to say anyhow.
  constexpr double limit = 9007199254740992.0;
  const double seconds = std::clamp(date->timeIntervalSince1970(), -limit, limit);
  return std::to_string(static_cast<std::int64_t>(seconds));
}

}  // namespace

std::optional<DateRange> TimePeriod::range() const {
  return end < start ? std::nullopt : std::optional(DateRange(start, end));
}

std::optional<std::string> searchURL(const YahooService& service, std::string_view text) {
  return url(service, service.apiHost, "/v1/finance/search", QueryItems{{"q", std::string(text)}});
}

std::optional<std::string> quoteURL(const YahooService& service,
                                    const std::vector<std::string>& symbols) {
  std::string joined;
  for (const std::string& symbol : symbols) {
    joined += joined.empty() ? symbol : "," + symbol;
  }
  return url(service, service.apiHost, "/v7/finance/quote",
             QueryItems{{"symbols", std::move(joined)}});
}

std::optional<std::string> chartURL(const YahooService& service, std::string_view symbol,
                                    std::string_view intervalText, std::optional<Date> start,
                                    std::optional<Date> end) {
  return url(service, service.apiHost, "/v8/finance/chart/" + std::string(symbol),
             QueryItems{{"period1", periodText(start)},
                        {"period2", periodText(end)},
                        {"interval", std::string(intervalText)},
                        {"includePrePost", "true"},
                        {"events", "split|div"}});
}

std::optional<std::string> crumbURL(const YahooService& service) {
  return url(service, service.apiHost, "/v1/test/getcrumb");
}

std::optional<std::string> cookiesURL(const YahooService& service) {
  return url(service, service.webHost, "/ ");
}

}  // namespace corvane::YahooFinanceAPI
