// The lengths that a price bar can have.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "platform/data/json.h"
#include "platform/error.h"
#include "platform/time/date_components.h"

namespace corvane {

/// The length of a price bar, in the order from the shortest to the longest.
///
/// A length is a span of the calendar, never a fixed number of seconds: a bar ends where its start
/// plus the span falls in the equity's calendar, so that a day across a clock change stays a day.
enum class QuoteInterval {
  oneMinute,
  twoMinutes,
  fiveMinutes,
  fifteenMinutes,
  thirtyMinutes,
  ninetyMinutes,
  oneHour,
  oneDay,
  fiveDays,
  oneWeek,
  oneMonth,
  threeMonths
};

inline constexpr std::array allQuoteIntervals = {
    QuoteInterval::oneMinute,      QuoteInterval::twoMinutes,    QuoteInterval::fiveMinutes,
    QuoteInterval::fifteenMinutes, QuoteInterval::thirtyMinutes, QuoteInterval::ninetyMinutes,
    QuoteInterval::oneHour,        QuoteInterval::oneDay,        QuoteInterval::fiveDays,
    QuoteInterval::oneWeek,        QuoteInterval::oneMonth,      QuoteInterval::threeMonths};

/// The span of `interval`: one field, such as weekOfYear 1. It is both the step in calendar
/// arithmetic and the form in which an interval is written in JSON.
[[nodiscard]] DateComponents dateComponents(QuoteInterval interval);

/// The interval whose span is exactly `components`. Throws QuoteIntervalDecodingError.
[[nodiscard]] QuoteInterval quoteInterval(const DateComponents& components);

/// The interval as JSON: its span as an object, such as {"weekOfYear":1}.
[[nodiscard]] JSONValue json(QuoteInterval interval);

/// The interval that json() has written, read at `path` of a document. Throws
/// QuoteIntervalDecodingError for other spans, and JSONError where `value` is no object of whole
/// numbers.
[[nodiscard]] QuoteInterval quoteInterval(const JSONValue& value, std::string_view path = "");

/// The span of no known interval.
class QuoteIntervalDecodingError : public ErrorValue<QuoteIntervalDecodingError> {
 public:
  struct InvalidDateComponents {
    DateComponents components;
    friend bool operator==(const InvalidDateComponents&, const InvalidDateComponents&) = default;
  };

  explicit QuoteIntervalDecodingError(InvalidDateComponents what) : what_(what) {}

  [[nodiscard]] const InvalidDateComponents& invalidDateComponents() const { return what_; }
  [[nodiscard]] std::optional<std::string> description() const override;
  [[nodiscard]] bool hasSameValues(const QuoteIntervalDecodingError& other) const {
    return what_ == other.what_;
  }

 private:
  InvalidDateComponents what_;
};

}  // namespace corvane
