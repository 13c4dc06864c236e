#include "core/quote_interval.h"

#include <algorithm>
#include <charconv>
#include <string_view>
#include <utility>

namespace corvane {
namespace {

/// The date components that an interval may have, by their names in JSON.
constexpr std::array<std::pair<std::string_view, CalendarUnit>, 7> unitNames = {{
    {"year", CalendarUnit::year},
    {"month", CalendarUnit::month},
    {"weekOfYear", CalendarUnit::weekOfYear},
    {"day", CalendarUnit::day},
    {"hour", CalendarUnit::hour},
    {"minute", CalendarUnit::minute},
    {"second", CalendarUnit::second},
}};

int wholeNumber(const JSONNumber& number, std::string_view key) {
  const std::string& text = number.text();
  int value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) {
    throw JSONError(std::string(key), "expected a whole number, found " + text);
  }
  return value;
}

}  // namespace

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
  const auto found = std::ranges::find(allQuoteIntervals, components, dateComponents);
  if (found == allQuoteIntervals.end()) {
    throw QuoteIntervalDecodingError({components});
  }
  return *found;
}

JSONValue json(QuoteInterval interval) {
  const DateComponents components = dateComponents(interval);
  JSONValue value{JSONValue::Object()};
  for (const auto& [name, unit] : unitNames) {
    if (const auto count = components.get(unit)) {
      value.set(name, *count);
    }
  }
  return value;
}

QuoteInterval quoteInterval(const JSONValue& value) {
  DateComponents components;
  for (const auto& [key, field] : value.object()) {
    const auto unit =
        std::ranges::find(unitNames, key, [](const auto& name) { return name.first; });
    if (unit != unitNames.end()) {
      components.set(unit->second, wholeNumber(field.number(key), key));
    }
  }
  return quoteInterval(components);
}

std::optional<std::string> QuoteIntervalDecodingError::description() const {
  return "The length of a price bar is none of those that can be had.";
}

}  // namespace corvane
