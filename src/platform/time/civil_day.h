// Days of the Gregorian calendar as a running count, independent of any time zone.
//
// Day 0 is 1970-01-01. The rules hold for all years; year 0 is 1 BC. Pure arithmetic on 64 bits,
// valid for years of up to some nine digits.
#pragma once

#include <cstdint>

namespace corvane {

constexpr std::int64_t secondsPerDay = 86400;
/// The calendar repeats, days of the week included, after 400 years of this many days.
constexpr std::int64_t daysPerGregorianCycle = 146097;

/// Division that rounds down, for counts that may be negative. `divisor` is positive.
constexpr std::int64_t floorDivide(std::int64_t value, std::int64_t divisor) {
  return value / divisor - (value % divisor < 0 ? 1 : 0);
}
/// The remainder of floorDivide: 0 to `divisor` - 1.
constexpr std::int64_t floorRemainder(std::int64_t value, std::int64_t divisor) {
  const std::int64_t remainder = value % divisor;
  return remainder < 0 ? remainder + divisor : remainder;
}

struct CivilDay {
  std::int64_t year;
  int month;  ///< 1 to 12
  int day;    ///< 1 to 31
};

constexpr bool isLeapYear(std::int64_t year) {
  return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

constexpr int daysInMonth(std::int64_t year, int month) {
  if (month == 2) {
    return isLeapYear(year) ? 29 : 28;
  }
  return month == 4 || month == 6 || month == 9 || month == 11 ? 30 : 31;
}

/// The count of the day `day` of `month` (1 to 12). `day` may be any number: it counts on from the
/// first of the month.
constexpr std::int64_t dayCount(std::int64_t year, int month, std::int64_t day) {
  // Years that begin in March put the leap day last, so that months need no table.
  const std::int64_t marchYear = month <= 2 ? year - 1 : year;
  const std::int64_t cycle = floorDivide(marchYear, 400);
  const std::int64_t yearOfCycle = marchYear - cycle * 400;
  const int monthFromMarch = (month + 9) % 12;
  const std::int64_t dayOfYear = (153 * monthFromMarch + 2) / 5 + day - 1;
  const std::int64_t daysBeforeYear = yearOfCycle * 365 + yearOfCycle / 4 - yearOfCycle / 100;
  constexpr std::int64_t daysFromMarchOfYear0To1970 = 719468;
  return cycle * daysPerGregorianCycle + daysBeforeYear + dayOfYear - daysFromMarchOfYear0To1970;
}

/// The inverse of dayCount.
constexpr CivilDay civilDay(std::int64_t count) {
  const std::int64_t fromMarchOfYear0 = count + 719468;
  const std::int64_t cycle = floorDivide(fromMarchOfYear0, daysPerGregorianCycle);
  const auto dayOfCycle =
      static_cast<std::uint32_t>(fromMarchOfYear0 - cycle * daysPerGregorianCycle);
  const std::uint32_t yearOfCycle =
      (dayOfCycle - dayOfCycle / 1460 + dayOfCycle / 36524 - dayOfCycle / 146096) / 365;
  const std::uint32_t dayOfYear =
      dayOfCycle - (yearOfCycle * 365 + yearOfCycle / 4 - yearOfCycle / 100);
  const std::uint32_t monthFromMarch = (5 * dayOfYear + 2) / 153;
  const auto day = static_cast<int>(dayOfYear - (153 * monthFromMarch + 2) / 5 + 1);
  const auto month =
      static_cast<int>(monthFromMarch < 10 ? monthFromMarch + 3 : monthFromMarch - 9);
  return {cycle * 400 + yearOfCycle + (month <= 2 ? 1 : 0), month, day};
}

/// 0 for a Monday to 6 for a Sunday.
constexpr int dayOfWeek(std::int64_t count) {
  return static_cast<int>(floorRemainder(count + 3, 7));
}

/// The ISO 8601 week, 1 to 53: the week of a Thursday belongs to the Thursday's year.
constexpr int isoWeek(std::int64_t count) {
  const std::int64_t thursday = count - dayOfWeek(count) + 3;
  return static_cast<int>((thursday - dayCount(civilDay(thursday).year, 1, 1)) / 7) + 1;
}

}  // namespace corvane
