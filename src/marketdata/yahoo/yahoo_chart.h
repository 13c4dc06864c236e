// From the service's raw chart to bars and events, and to the exact extent of what is final in it.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "core/market/equity_info.h"
#include "core/market/quote_fetch_result.h"
#include "core/market/quote_interval.h"
#include "marketdata/yahoo/wire/yahoo_finance_api.h"

namespace corvane {

/// The regular trading periods that a chart tells.
class YahooTradingPeriods {
 public:
  /// Periods of the past that end before they start are left out. Throws
  /// QuoteProviderError::DataInconsistency where the current one does.
  explicit YahooTradingPeriods(const YahooFinanceAPI::Meta& meta);

  /// The last one that had ended when the current one began; the current one where there is none.
  [[nodiscard]] const DateRange& recent() const { return recent_; }

  /// The first of the chart's periods that `date` falls in; null where there is none.
  [[nodiscard]] const DateRange* containing(Date date) const;

  /// Whether one of the chart's periods, or the recent one, ends at `date`.
  [[nodiscard]] bool endAt(Date date) const;

 private:
  std::vector<DateRange> periods_;  ///< in the order of the chart
  bool areInOrder_ = false;         ///< each begins when the one before it has ended
  std::vector<Date> ends_;          ///< ascending, with that of the recent one
  DateRange recent_;
};

/// What a chart was asked for, and what its equity was when it arrived.
struct YahooChartRequest {
  std::optional<QuoteInterval> interval;  ///< none where only events are sought
  std::optional<DateRange> dates;         ///< none for the recent period
  Calendar calendar;
  Currency currency;
};

/// Sets the session and the price of `equity` that a chart tells; where no refresh has told them
/// yet, also its currency and time zone. Main queue only.
void applyChart(EquityInfo& equity, const YahooFinanceAPI::Meta& meta,
                const YahooTradingPeriods& periods);

/// The bars, the events and the durable range of `chart`, which has a series of quotes. Bars start
/// at the service's timestamps, end with their trading period, and are partial where the data may
/// still change. Throws QuoteProviderError::CurrencyMismatch, and DataInconsistency for a split
/// whose ratio is none of whole numbers. Any thread.
[[nodiscard]] QuoteFetchResult fetchResult(const YahooFinanceAPI::ChartResult& chart,
                                           const YahooTradingPeriods& periods,
                                           const YahooChartRequest& request);

}  // namespace corvane
