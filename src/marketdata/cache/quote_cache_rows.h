// How market records stand in the rows of the cache file.
//
// Dates are seconds since 1970. Prices are kept as doubles and come back as the shortest decimals
// that read as these. Ratios of splits and amounts of dividends are kept as pairs of integers.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "core/market/equity_event.h"
#include "core/market/quote.h"
#include "core/market/quote_provider.h"
#include "platform/data/sqlite.h"

namespace corvane {

[[nodiscard]] SQLiteValue storedDate(std::optional<Date> date);
[[nodiscard]] SQLiteValue storedDecimal(const std::optional<Decimal>& value);

[[nodiscard]] std::optional<Date> dateIn(const SQLiteStatement& row, int column);
[[nodiscard]] std::optional<Decimal> decimalIn(const SQLiteStatement& row, int column);

/// Reads the bars of a result of the table `quotes`. To be made on its first row. Throws
/// QuoteProviderError for a bar without dates.
class QuoteRowReader {
 public:
  explicit QuoteRowReader(const SQLiteStatement& row);
  [[nodiscard]] Quote quoteIn(const SQLiteStatement& row) const;

 private:
  int fromDate_, toDate_, open_, close_, low_, high_, volume_;
};

/// An event as the columns eventType, value1 and value2 hold it.
struct StoredEventKind {
  std::int64_t type;
  std::int64_t value1;
  std::int64_t value2;

  /// The amount of a dividend that has more digits than fit the columns is rounded to 18. Throws
  /// QuoteProviderError for one that is no number.
  [[nodiscard]] static StoredEventKind of(const EquityEvent::Kind& kind);
  /// Throws QuoteProviderError for an unknown type.
  [[nodiscard]] EquityEvent::Kind kind() const;
};

/// Reads the event on which a result of the table `events` stands. Throws QuoteProviderError where
/// it is incomplete.
[[nodiscard]] EquityEvent eventIn(const SQLiteStatement& row, PriceAdjustment prices);

/// The error for data that contradicts itself.
[[nodiscard]] QuoteProviderError dataInconsistency(std::string description);

}  // namespace corvane
