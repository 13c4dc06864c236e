#include "marketdata/cache/quote_cache_rows.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "platform/overloaded.h"

namespace corvane {
namespace {

constexpr std::int64_t splitType = 1;
constexpr std::int64_t dividendType = 2;

/// Every number of this many digits fits a column.
constexpr int digitsOfInteger = 18;

bool fitsInteger(const Decimal& value) {
  return value.mantissa() <=
         static_cast<Decimal::Mantissa>(std::numeric_limits<std::int64_t>::max());
}

int digitCount(Decimal::Mantissa mantissa) {
  int count = 0;
  for (; mantissa > 0; mantissa /= 10) {
    ++count;
  }
  return count;
}

Decimal fittingInteger(const Decimal& amount) {
  if (fitsInteger(amount)) {
    return amount;
  }
  const int excess = digitCount(amount.mantissa()) - digitsOfInteger;
  return rounded(amount, -(amount.exponent() + excess), RoundingMode::bankers);
}

}  // namespace

SQLiteValue storedDate(std::optional<Date> date) {
  return date ? SQLiteValue(date->timeIntervalSince1970()) : nullptr;
}

SQLiteValue storedDecimal(const std::optional<Decimal>& value) {
  return value ? SQLiteValue(value->doubleValue()) : nullptr;
}

std::optional<Date> dateIn(const SQLiteStatement& row, int column) {
  return row.real(column).transform(&Date::since1970);
}

std::optional<Decimal> decimalIn(const SQLiteStatement& row, int column) {
  return row.real(column).transform(&Decimal::fromDouble);
}

QuoteRowReader::QuoteRowReader(const SQLiteStatement& row)
    : fromDate_(row.column("fromDate")),
      toDate_(row.column("toDate")),
      open_(row.column("open")),
      close_(row.column("close")),
      low_(row.column("low")),
      high_(row.column("high")),
      volume_(row.column("volume")) {}

Quote QuoteRowReader::quoteIn(const SQLiteStatement& row) const {
  const auto fromDate = dateIn(row, fromDate_);
  const auto toDate = dateIn(row, toDate_);
  if (!fromDate || !toDate) {
    throw dataInconsistency("Missing dates in quote row.");
  }
  return {.fromDate = *fromDate,
          .toDate = *toDate,
          .open = decimalIn(row, open_),
          .close = decimalIn(row, close_),
          .low = decimalIn(row, low_),
          .high = decimalIn(row, high_),
          .volume = row.integer(volume_),
          .isPartial = false,
          .isCached = true};
}

StoredEventKind StoredEventKind::of(const EquityEvent::Kind& kind) {
  return std::visit(
      Overloaded{
          [](const EquityEvent::Split& split) {
            return StoredEventKind{splitType, split.ratio.numerator, split.ratio.denominator};
          },
          [](const EquityEvent::Dividend& dividend) {
            if (dividend.amount.isNaN()) {
              throw dataInconsistency("The amount of a dividend is not a number.");
            }
            const Decimal amount = fittingInteger(dividend.amount);
            const auto significand = static_cast<std::int64_t>(amount.mantissa());
            return StoredEventKind{dividendType,
                                   amount.sign() == Sign::minus ? -significand : significand,
                                   amount.exponent()};
          }},
      kind);
}

EquityEvent::Kind StoredEventKind::kind() const {
  if (type == splitType) {
    return EquityEvent::Split{{.numerator = value1, .denominator = value2}};
  }
  if (type == dividendType) {
    const Decimal significand(value1);
    // An exponent that no Decimal has makes NaN or zero of it.
    const auto exponent = static_cast<int>(std::clamp<std::int64_t>(value2, -1000, 1000));
    return EquityEvent::Dividend{
        Decimal::fromParts(significand.sign(), exponent, abs(significand))};
  }
  throw dataInconsistency("Unknown event type (" + std::to_string(type) + ").");
}

EquityEvent eventIn(const SQLiteStatement& row, PriceAdjustment prices) {
  const auto date = dateIn(row, row.column("date"));
  const auto type = row.integer("eventType");
  const auto value1 = row.integer("value1");
  const auto value2 = row.integer("value2");
  if (!date || !type || !value1 || !value2) {
    throw dataInconsistency("Missing columns in events result.");
  }
  return {*date, StoredEventKind{*type, *value1, *value2}.kind(), prices};
}

QuoteProviderError dataInconsistency(std::string description) {
  return QuoteProviderError(QuoteProviderError::DataInconsistency{std::move(description)});
}

}  // namespace corvane
