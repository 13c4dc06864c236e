// Over which days, at which spacing of prices and with how much money a strategy is tried out.
#pragma once

#include <optional>
#include <string_view>

#include "core/decimal/decimal.h"
#include "core/market/quote_interval.h"
#include "platform/data/json.h"
#include "platform/time/calendar.h"

namespace corvane {

/// The setting of a back-test. It names no equity: the same scenario runs against any of them, and
/// its days become moments only with the calendar of the equity under test.
struct InvestmentScenario {
  /// The first and the last day, both part of the period. Only year, month and day are set.
  DateComponents fromDateComponents;
  DateComponents toDateComponents;
  QuoteInterval quoteInterval = QuoteInterval::oneMinute;
  /// The cash deposited at the start, in the equity's currency.
  Decimal initialInvestment;

  /// The 30 days up to today by the user's calendar, in bars of a minute, with 1000. Today is the
  /// day on which the program first asked; it stays that day for as long as the program runs.
  [[nodiscard]] static const InvestmentScenario& defaultScenario();

  /// From the start of the first day to the end of the last one, in `calendar`. None where the
  /// calendar has no such dates, or the first day lies after the last.
  [[nodiscard]] std::optional<DateRange> dateRange(const Calendar& calendar) const;

  friend bool operator==(const InvestmentScenario&, const InvestmentScenario&) = default;
};

/// `scenario` as a JSON object of all its fields. Throws JSONError for a NaN.
[[nodiscard]] JSONValue json(const InvestmentScenario& scenario, std::string_view path = "");

/// The scenario that `value` holds, read at `path` of a document. Every field is required, others
/// are ignored. Throws JSONError or QuoteIntervalDecodingError.
[[nodiscard]] InvestmentScenario investmentScenario(const JSONValue& value,
                                                    std::string_view path = "");

}  // namespace corvane
