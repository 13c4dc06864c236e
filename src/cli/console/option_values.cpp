#include "cli/console/option_values.h"

#include <charconv>
#include <string>

#include "platform/time/calendar.h"
#include "platform/time/time_zone.h"

namespace corvane::cli {
namespace {

std::optional<int> wholeNumber(std::string_view text) {
  int number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size() ? std::optional(number)
                                                                  : std::nullopt;
}

std::optional<YearMonthDay> dayOf(std::string_view text) {
  if (text.size() != 10 || text[4] != '-' || text[7] != '-') {
    return std::nullopt;
  }
  const auto year = wholeNumber(text.substr(0, 4));
  const auto month = wholeNumber(text.substr(5, 2));
  const auto day = wholeNumber(text.substr(8, 2));
  if (!year || !month || !day || *year < 1) {
    return std::nullopt;
  }
  // A day that the calendar does not have rolls over into another.
  const Calendar calendar(TimeZone::withSecondsFromGMT(0).value());
  const YearMonthDay named{*year, *month, *day};
  return YearMonthDay::normalised(*year, *month, *day, calendar) == named ? std::optional(named)
                                                                          : std::nullopt;
}

}  // namespace

std::optional<YearMonthDay> dayOption(const CommandLine& line, std::string_view option) {
  const auto text = line.value(option);
  if (!text) {
    return std::nullopt;
  }
  const auto day = dayOf(*text);
  if (!day) {
    throw UsageError("“" + *text + "” is not a day such as 2024-02-29.");
  }
  return day;
}

std::optional<Decimal> numberOption(const CommandLine& line, std::string_view option) {
  const auto text = line.value(option);
  if (!text) {
    return std::nullopt;
  }
  const auto number = Decimal::fromWholeString(*text);
  if (!number || number->isNaN() || *number < Decimal(0)) {
    throw UsageError("“" + *text + "” is not a number such as 0.05.");
  }
  return number;
}

}  // namespace corvane::cli
