#include "samplemarket/prices/holidays.h"

#include <span>

#include "platform/time/civil_day.h"

namespace corvane::samplemarket {

namespace {

constexpr int friday = 4;
constexpr int saturday = 5;
constexpr int sunday = 6;

/// Where a holiday goes that falls on a weekend.
enum class Moved {
  notAtAll,
  toNearest,      ///< Saturday to the Friday before, Sunday to the Monday after
  fromSunday,     ///< to the next day that is no holiday; a Saturday's is lost
  toNextWeekday,  ///< to the next weekday that is no holiday
};

enum class Kind {
  fixed,         ///< `day` of `month`
  nthMonday,     ///< the `day`-th Monday of `month`
  lastMonday,    ///< of `month`
  nthThursday,   ///< the `day`-th Thursday of `month`
  mondayBefore,  ///< the last Monday before `day` of `month`
  fromEaster     ///< `day` days after Easter Sunday
};

struct Rule {
  Kind kind;
  int month;
  int day;
  Moved moved = Moved::notAtAll;
  int firstYear = 0;
};

// By the date: January first.
constexpr Rule newYorkRules[] = {
    {Kind::fixed, 1, 1, Moved::fromSunday},
    {Kind::nthMonday, 1, 3, Moved::notAtAll, 1998},
    {Kind::nthMonday, 2, 3},
    {Kind::fromEaster, 0, -2},
    {Kind::lastMonday, 5, 0},
    {Kind::fixed, 6, 19, Moved::toNearest, 2022},
    {Kind::fixed, 7, 4, Moved::toNearest},
    {Kind::nthMonday, 9, 1},
    {Kind::nthThursday, 11, 4},
    {Kind::fixed, 12, 25, Moved::toNearest},
};
constexpr Rule torontoRules[] = {
    {Kind::fixed, 1, 1, Moved::toNextWeekday},
    {Kind::nthMonday, 2, 3, Moved::notAtAll, 2008},
    {Kind::fromEaster, 0, -2},
    {Kind::mondayBefore, 5, 25},
    {Kind::fixed, 7, 1, Moved::toNextWeekday},
    {Kind::nthMonday, 8, 1},
    {Kind::nthMonday, 9, 1},
    {Kind::nthMonday, 10, 2},
    {Kind::fixed, 12, 25, Moved::toNextWeekday},
    {Kind::fixed, 12, 26, Moved::toNextWeekday},
};
constexpr Rule londonRules[] = {
    {Kind::fixed, 1, 1, Moved::toNextWeekday},
    {Kind::fromEaster, 0, -2},
    {Kind::fromEaster, 0, 1},
    {Kind::nthMonday, 5, 1},
    {Kind::lastMonday, 5, 0},
    {Kind::lastMonday, 8, 0},
    {Kind::fixed, 12, 25, Moved::toNextWeekday},
    {Kind::fixed, 12, 26, Moved::toNextWeekday},
};
constexpr Rule frankfurtRules[] = {
    {Kind::fixed, 1, 1},   {Kind::fromEaster, 0, -2}, {Kind::fromEaster, 0, 1},
    {Kind::fixed, 5, 1},   {Kind::fixed, 12, 24},     {Kind::fixed, 12, 25},
    {Kind::fixed, 12, 26}, {Kind::fixed, 12, 31},
};
constexpr Rule tokyoRules[] = {
    {Kind::fixed, 1, 1},
    {Kind::fixed, 1, 2},
    {Kind::fixed, 1, 3},
    {Kind::nthMonday, 1, 2},
    {Kind::fixed, 2, 11, Moved::fromSunday},
    {Kind::fixed, 2, 23, Moved::fromSunday, 2020},
    {Kind::fixed, 3, 20, Moved::fromSunday},
    {Kind::fixed, 4, 29, Moved::fromSunday},
    {Kind::fixed, 5, 3, Moved::fromSunday},
    {Kind::fixed, 5, 4, Moved::fromSunday},
    {Kind::fixed, 5, 5, Moved::fromSunday},
    {Kind::nthMonday, 7, 3, Moved::notAtAll, 2003},
    {Kind::fixed, 8, 11, Moved::fromSunday, 2016},
    {Kind::nthMonday, 9, 3},
    {Kind::fixed, 9, 23, Moved::fromSunday},
    {Kind::nthMonday, 10, 2},
    {Kind::fixed, 11, 3, Moved::fromSunday},
    {Kind::fixed, 11, 23, Moved::fromSunday},
    {Kind::fixed, 12, 31},
};
constexpr Rule currencyRules[] = {{Kind::fixed, 1, 1}, {Kind::fixed, 12, 25}};

std::span<const Rule> rules(ExchangeID id) {
  switch (id) {
    case ExchangeID::newYork:
      return newYorkRules;
    case ExchangeID::toronto:
      return torontoRules;
    case ExchangeID::london:
      return londonRules;
    case ExchangeID::frankfurt:
      return frankfurtRules;
    case ExchangeID::tokyo:
      return tokyoRules;
    case ExchangeID::currencies:
      return currencyRules;
  }
  return {};
}

/// The day of Easter Sunday, from the moon's age and the days of the week of the century.
std::int64_t easterSunday(std::int64_t year) {
  const std::int64_t century = year / 100;
  const std::int64_t moonCorrection = century - century / 4 - (8 * century + 13) / 25;
  std::int64_t moon = (moonCorrection + 19 * (year % 19) + 15) % 30;
  // The full moon is never taken later than April 18th, nor twice in 19 years on that day.
  if (moon == 29 || (moon == 28 && year % 19 > 10)) {
    --moon;
  }
  const std::int64_t fullMoon = dayCount(year, 3, 21 + moon);
  return fullMoon + (sunday - dayOfWeek(fullMoon) + 6) % 7 + 1;
}

std::int64_t nthWeekday(std::int64_t year, int month, int weekday, int count) {
  const std::int64_t first = dayCount(year, month, 1);
  return first + (weekday - dayOfWeek(first) + 7) % 7 + std::int64_t{7} * (count - 1);
}

std::int64_t mondayOnOrBefore(std::int64_t day) {
  return day - dayOfWeek(day);
}

std::int64_t plainDay(const Rule& rule, std::int64_t year) {
  switch (rule.kind) {
    case Kind::fixed:
      return dayCount(year, rule.month, rule.day);
    case Kind::nthMonday:
      return nthWeekday(year, rule.month, 0, rule.day);
    case Kind::lastMonday:
      return mondayOnOrBefore(dayCount(year, rule.month, daysInMonth(year, rule.month)));
    case Kind::nthThursday:
      return nthWeekday(year, rule.month, 3, rule.day);
    case Kind::mondayBefore:
      return mondayOnOrBefore(dayCount(year, rule.month, rule.day - 1));
    case Kind::fromEaster:
      return easterSunday(year) + rule.day;
  }
  return 0;
}

std::int64_t observedDay(const Rule& rule, std::int64_t day,
                         const std::set<std::int64_t>& earlierHolidays) {
  const auto nextFree = [&] {
    while (dayOfWeek(day) >= saturday || earlierHolidays.contains(day)) {
      ++day;
    }
    return day;
  };
  switch (rule.moved) {
    case Moved::notAtAll:
      return day;
    case Moved::toNearest:
      return day + (dayOfWeek(day) == saturday ? -1 : dayOfWeek(day) == sunday ? 1 : 0);
    case Moved::fromSunday:
      return dayOfWeek(day) == saturday ? day : nextFree();
    case Moved::toNextWeekday:
      return nextFree();
  }
  return day;
}

std::set<std::int64_t> halfDays(ExchangeID id, std::int64_t year) {
  const std::int64_t christmasEve = dayCount(year, 12, 24);
  switch (id) {
    case ExchangeID::newYork:
      return {nthWeekday(year, 11, 3, 4) + 1, christmasEve, dayCount(year, 7, 3)};
    case ExchangeID::toronto:
      return {christmasEve};
    case ExchangeID::london:
      return {christmasEve, dayCount(year, 12, 31)};
    case ExchangeID::frankfurt:
      return {dayCount(year, 12, 30)};
    case ExchangeID::tokyo:
    case ExchangeID::currencies:
      return {};
  }
  return {};
}

}  // namespace

Holidays holidays(ExchangeID id, std::int64_t year) {
  Holidays result;
  for (const Rule& rule : rules(id)) {
    if (year >= rule.firstYear) {
      const std::int64_t day = observedDay(rule, plainDay(rule, year), result.closed);
      if (dayOfWeek(day) <= friday) {
        result.closed.insert(day);
      }
    }
  }
  result.halfDay = halfDays(id, year);
  return result;
}

}  // namespace corvane::samplemarket
