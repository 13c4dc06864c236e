// Counting with the days of reports, without a time zone.
#pragma once

#include <cstdint>
#include <string>

#include "core/money/year_month_day.h"
#include "platform/time/civil_day.h"

namespace corvane {

/// The running count of `day`; 1970-01-01 is 0.
[[nodiscard]] constexpr std::int64_t dayNumber(const YearMonthDay& day) {
  return dayCount(day.year, day.month, day.day);
}

/// The day with this running count.
[[nodiscard]] constexpr YearMonthDay dayNumbered(std::int64_t number) {
  const CivilDay day = civilDay(number);
  return {static_cast<int>(day.year), day.month, day.day};
}

/// The day `count` days after `day`, or before it where `count` is negative.
[[nodiscard]] constexpr YearMonthDay daysAfter(const YearMonthDay& day, std::int64_t count) {
  return dayNumbered(dayNumber(day) + count);
}

/// The number of days from `from` to `to`; negative where `to` is earlier.
[[nodiscard]] constexpr int daysBetween(const YearMonthDay& from, const YearMonthDay& to) {
  return static_cast<int>(dayNumber(to) - dayNumber(from));
}

/// "2024-03-09", the form of exports and of notes.
[[nodiscard]] std::string isoText(const YearMonthDay& day);

}  // namespace corvane
