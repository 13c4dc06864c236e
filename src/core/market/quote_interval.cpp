#include "core/market/quote_interval.h"

#include <algorithm>

#include "core/decimal/json_coding.h"

namespace corvane {
DateComponents dateComponents(QuoteInterval interval) {
  switch (interval) {
    case QuoteInterval::oneMinute:
      return {{CalendarUnit::minute, 1}};
    case QuoteInterval::twoMinutes:
      return {{CalendarUnit::minute, 2}};
    case QuoteInterval::fiveMinutes:
      return {{CalendarUnit::minute, 5}};
    case QuoteInterval::fifteenMinutes:
      return {{CalendarUnit::minute, 15}};
    case QuoteInterval::thirtyMinutes:
      return {{CalendarUnit::minute, 30}};
    case QuoteInterval::ninetyMinutes:
      return {{CalendarUnit::minute, 90}};
    case QuoteInterval::oneHour:
      return {{CalendarUnit::hour, 1}};
    case QuoteInterval::oneDay:
      return {{CalendarUnit::day, 1}};
    case QuoteInterval::fiveDays:
      return {{CalendarUnit::day, 5}};
    case QuoteInterval::oneWeek:
      return {{CalendarUnit::weekOfYear, 1}};
    case QuoteInterval::oneMonth:
      return {{CalendarUnit::month, 1}};
    case QuoteInterval::threeMonths:
      return {{CalendarUnit::month, 3}};
  }
  __builtin_unreachable();
}

QuoteInterval quoteInterval(const DateComponents& components) {
  const auto found = std::ranges::find_if(allQuoteIntervals, [&](QuoteInterval interval) {
    return dateComponents(interval) == components;
  });
  if (found == allQuoteIntervals.end()) {
    throw QuoteIntervalDecodingError({components});
  }
  return *found;
}

JSONValue json(QuoteInterval interval) {
  return json(dateComponents(interval));
}

QuoteInterval quoteInterval(const JSONValue& value, std::string_view path) {
  return quoteInterval(dateComponents(value, path));
}

std::optional<std::string> QuoteIntervalDecodingError::description() const {
  return "The length of a price bar is none of those that can be had.";
}

}  // namespace corvane
