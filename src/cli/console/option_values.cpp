#include "cli/console/option_values.h"

#include <algorithm>
#include <charconv>
#include <string>

#include "platform/text/unicode/letter_case.h"
#include "platform/time/calendar.h"
#include "platform/time/time_zone.h"

namespace corvane::cli {
namespace {

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
  const YearMonthDay named{static_cast<int>(*year), static_cast<int>(*month),
                           static_cast<int>(*day)};
  return YearMonthDay::normalised(named.year, named.month, named.day, calendar) == named
             ? std::optional(named)
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

std::optional<std::size_t> wholeNumber(std::string_view text) {
  std::size_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  return error == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

EquityPointer equityNamed(std::string_view symbol, QuoteProvider& provider,
                          const std::function<bool(const EquityInfo&)>& isKnown) {
  constexpr std::string_view blanks = " \t\r\n";
  const std::size_t first = std::min(symbol.find_first_not_of(blanks), symbol.size());
  const std::string_view named = symbol.substr(first, symbol.find_last_not_of(blanks) - first + 1);
  if (named.empty() || named.find_first_of(blanks.substr(1)) != named.npos) {
    throw UsageError("“" + std::string(symbol) + "” is not a symbol such as AAPL.");
  }
  const EquityPointer equity = provider.equityWithId(std::string(named));
  return isKnown(*equity) ? equity : provider.equityWithId(uppercased(named));
}

Currency currencyNamed(const std::string& code) {
  const auto found = Currency::byCode().find(code);
  if (found == Currency::byCode().end()) {
    throw UsageError("“" + code + "” is not the code of a currency, such as CAD or EUR.");
  }
  return found->second;
}

}  // namespace corvane::cli
