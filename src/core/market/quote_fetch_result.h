// The answer of a quote provider.
#pragma once

#include <optional>
#include <vector>

#include "core/market/equity_event.h"
#include "core/market/quote.h"
#include "core/market/quote_query.h"
#include "platform/time/date.h"

namespace corvane {

/// What a provider found. An absent list is not an empty one: it says that nothing was sought or
/// that the source kept silent.
struct QuoteFetchResult {
  std::optional<std::vector<Quote>> quotes;  ///< ascending; none when no quotes were sought
  std::optional<PriceAdjustment> prices;     ///< the basis of the quotes and of dividend amounts
  std::optional<std::vector<EquityEvent>> events;  ///< none when the source said nothing of events
  /// The part of the query's range whose answer is final and may be recorded as covered; empty
  /// where nothing may be stored.
  DateRange durableDateRange;

  friend bool operator==(const QuoteFetchResult&, const QuoteFetchResult&) = default;
};

}  // namespace corvane
