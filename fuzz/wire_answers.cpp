// Any bytes as answers of the market-data service: whatever decodes is read into bars and events
// that keep their promises, whatever does not is refused with a reason.

#include <cstdint>
#include <cstdlib>

#include "core/market/quote_provider.h"
#include "marketdata/yahoo/wire/yahoo_finance_api.h"
#include "marketdata/yahoo/yahoo_chart.h"
#include "marketdata/yahoo/yahoo_equity_details.h"
#include "marketdata/yahoo/yahoo_response.h"
#include "platform/data/json_error.h"

namespace {

using namespace corvane;

void require(bool holds) {
  if (!holds) {
    std::abort();
  }
}

/// Runs `read`, which may refuse what it reads, but only with an Error that says something.
template <typename Read>
void tryTo(Read read) {
  try {
    read();
  } catch (const Error& error) {
    require(error.description().has_value() && !error.description()->empty());
  }
}

void readChart(const YahooFinanceAPI::ChartResult& chart, QuoteInterval interval) {
  if (chart.indicators.quote.empty()) {
    return;
  }
  const YahooTradingPeriods periods(chart.meta);
  EquityInfo equity("ABC", {});
  equity.firstTradeDate = chart.meta.firstTradeDate;
  applyChart(equity, chart.meta, periods);
  (void)equity.fullDateRange();
  const auto zone = TimeZone::withIdentifier(chart.meta.exchangeTimezoneName);
  const YahooChartRequest request{interval, std::nullopt, Calendar(zone.value_or(TimeZone())),
                                  Currency::usd()};
  const QuoteFetchResult result = fetchResult(chart, periods, request);
  for (const Quote& quote : *result.quotes) {
    require(!periods.endAt(quote.fromDate));
  }
  for (std::size_t i = 1; i < result.events->size(); ++i) {
    require((*result.events)[i - 1].date <= (*result.events)[i].date);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const HTTPResponse response{
      .url = "", .statusCode = 200, .headers = {}, .body = std::string(text)};
  tryTo([&] {
    const auto answer =
        decodeVerified<YahooFinanceAPI::ChartResponse>(verifyResponse(response, "chart"));
    for (const auto& chart : answer.chart.result.value()) {
      for (const QuoteInterval interval : {QuoteInterval::oneMinute, QuoteInterval::oneDay}) {
        tryTo([&] { readChart(chart, interval); });
      }
    }
  });
  tryTo([&] {
    const auto answer =
        decodeVerified<YahooFinanceAPI::Quote>(verifyResponse(response, "quoteResponse"));
    for (const auto& details : answer.quoteResponse.result.value()) {
      EquityInfo equity("ABC", {});
      tryTo([&] { applyQuoteResult(equity, details); });
      (void)equity.fullDateRange();
    }
  });
  tryTo([&] { (void)YahooFinanceAPI::Search::ResponseContainer::decode(text); });
  return 0;
}
