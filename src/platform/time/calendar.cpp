#include "platform/time/calendar.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>

#include "platform/time/civil_day.h"
#include "platform/time/time_zone_data.h"

namespace corvane {
namespace {

using Seconds = ZoneHistory::Seconds;

constexpr std::array unitsLargestFirst = {
    CalendarUnit::year, CalendarUnit::month,  CalendarUnit::weekOfYear, CalendarUnit::day,
    CalendarUnit::hour, CalendarUnit::minute, CalendarUnit::second};

bool isExpressible(Date date) {
  // Written so that a NaN is not.
  return std::abs(date.timeIntervalSinceReferenceDate()) <= calendarReachSeconds;
}

std::optional<Date> expressible(Date date) {
  return isExpressible(date) ? std::optional(date) : std::nullopt;
}

/// A whole second since 1970 as a date, with the part of a second that `source` has.
Date dateAt(Seconds moment, Date source = Date()) {
  const double seconds = source.timeIntervalSinceReferenceDate();
  const auto sinceReference =
      static_cast<double>(moment - static_cast<Seconds>(Date::secondsFrom1970ToReference));
  return Date::sinceReferenceDate(sinceReference + (seconds - std::floor(seconds)));
}

/// What a clock and a calendar on the wall show.
struct WallTime {
  std::int64_t dayCount;
  int secondOfDay;

  explicit WallTime(Seconds wall)
      : dayCount(floorDivide(wall, secondsPerDay)),
        secondOfDay(static_cast<int>(wall - dayCount * secondsPerDay)) {}
};

int field(CalendarUnit unit, const WallTime& wall) {
  switch (unit) {
    case CalendarUnit::year:
      return static_cast<int>(civilDay(wall.dayCount).year);
    case CalendarUnit::month:
      return civilDay(wall.dayCount).month;
    case CalendarUnit::weekOfYear:
      return isoWeek(wall.dayCount);
    case CalendarUnit::day:
      return civilDay(wall.dayCount).day;
    case CalendarUnit::hour:
      return wall.secondOfDay / 3600;
    case CalendarUnit::minute:
      return wall.secondOfDay / 60 % 60;
    case CalendarUnit::second:
      return wall.secondOfDay % 60;
  }
  std::unreachable();
}

/// The day `months` after the given one, pinned to the last day of its month.
std::int64_t dayCountAfterMonths(std::int64_t count, std::int64_t months) {
  const CivilDay day = civilDay(count);
  const std::int64_t monthCount = day.year * 12 + (day.month - 1) + months;
  const std::int64_t year = floorDivide(monthCount, 12);
  const int month = static_cast<int>(monthCount - year * 12) + 1;
  return dayCount(year, month, std::min(day.day, daysInMonth(year, month)));
}

/// The day `value` units (year to day) after the given one.
std::int64_t dayCountAfter(std::int64_t count, CalendarUnit unit, std::int64_t value) {
  switch (unit) {
    case CalendarUnit::year:
      return dayCountAfterMonths(count, value * 12);
    case CalendarUnit::month:
      return dayCountAfterMonths(count, value);
    case CalendarUnit::weekOfYear:
      return count + value * 7;
    default:
      return count + value;
  }
}

/// Seconds of an hour, a minute or a second; none for the units that have no fixed length.
std::optional<int> fixedLength(CalendarUnit unit) {
  switch (unit) {
    case CalendarUnit::hour:
      return 3600;
    case CalendarUnit::minute:
      return 60;
    case CalendarUnit::second:
      return 1;
    default:
      return std::nullopt;
  }
}

int saturated(double value) {
  constexpr double least = std::numeric_limits<int>::min();
  constexpr double greatest = std::numeric_limits<int>::max();
  return static_cast<int>(std::clamp(value, least, greatest));
}

/// How many units lie between two days by their numbers alone: never off by more than a few.
std::int64_t roughCount(CalendarUnit unit, std::int64_t from, std::int64_t to) {
  const CivilDay first = civilDay(from);
  const CivilDay last = civilDay(to);
  switch (unit) {
    case CalendarUnit::year:
      return last.year - first.year;
    case CalendarUnit::month:
      return (last.year - first.year) * 12 + last.month - first.month;
    case CalendarUnit::weekOfYear:
      return (to - from) / 7;
    default:
      return to - from;
  }
}

/// How a search for a time of day proceeds: a clock shows `remainder` seconds past the hour, the
/// minute or midnight.
struct TimePattern {
  int period;
  int remainder;
};

std::optional<TimePattern> timePattern(const DateComponents& matching) {
  const auto isOutside = [&](CalendarUnit unit, int limit) {
    const int value = matching.valueOr(unit, 0);
    return value < 0 || value >= limit;
  };
  if (isOutside(CalendarUnit::hour, 24) || isOutside(CalendarUnit::minute, 60) ||
      isOutside(CalendarUnit::second, 60)) {
    return std::nullopt;
  }
  const int remainder = matching.valueOr(CalendarUnit::hour, 0) * 3600 +
                        matching.valueOr(CalendarUnit::minute, 0) * 60 +
                        matching.valueOr(CalendarUnit::second, 0);
  if (matching.hour()) {
    return TimePattern{static_cast<int>(secondsPerDay), remainder};
  }
  if (matching.minute()) {
    return TimePattern{3600, remainder};
  }
  return matching.second() ? std::optional(TimePattern{60, remainder}) : std::nullopt;
}

/// The nearest moment at or before (`direction` backward), or at or after `moment`, at which
/// clocks show the pattern of an hour or of a minute. Each period of constant offset is searched
/// for itself, so that an hour that occurs twice has its minutes twice.
Seconds nearestMatch(const ZoneHistory& history, Seconds moment, TimePattern pattern,
                     SearchDirection direction) {
  assert(pattern.period <= 3600);
  while (true) {
    const ZoneHistory::Period period = history.periodAt(moment);
    const Seconds sinceMatch =
        floorRemainder(moment + period.offset - pattern.remainder, pattern.period);
    if (direction == SearchDirection::backward) {
      if (moment - sinceMatch >= period.start) {
        return moment - sinceMatch;
      }
      moment = period.start - 1;
    } else {
      const Seconds match = sinceMatch == 0 ? moment : moment - sinceMatch + pattern.period;
      if (match < period.end) {
        return match;
      }
      moment = period.end;
    }
  }
}

}  // namespace

Calendar::Calendar(TimeZone timeZone) : timeZone_(std::move(timeZone)) {}

Calendar Calendar::current() {
  return Calendar(TimeZone::current());
}

const ZoneHistory& Calendar::history() const {
  return timeZone_.data_->history;
}

std::int64_t Calendar::wallSeconds(Date date) const {
  const Seconds moment = wholeSecondsSince1970(date);
  return moment + history().offsetAt(moment);
}

int Calendar::component(CalendarUnit unit, Date date) const {
  return field(unit, WallTime(wallSeconds(date)));
}

DateComponents Calendar::dateComponents(std::initializer_list<CalendarUnit> units,
                                        Date date) const {
  DateComponents components;
  if (isExpressible(date)) {
    const WallTime wall(wallSeconds(date));
    for (const CalendarUnit unit : units) {
      components.set(unit, field(unit, wall));
    }
  }
  return components;
}

DateComponents Calendar::dateComponents(std::initializer_list<CalendarUnit> units, Date from,
                                        Date to) const {
  DateComponents span;
  if (!isExpressible(from) || !isExpressible(to)) {
    return span;
  }
  Date cursor = from;
  for (const CalendarUnit unit : unitsLargestFirst) {
    if (std::find(units.begin(), units.end(), unit) != units.end()) {
      const int count = wholeUnits(unit, cursor, to);
      span.set(unit, count);
      cursor = dateByAdding(unit, count, cursor).value_or(cursor);
    }
  }
  return span;
}

int Calendar::wholeUnits(CalendarUnit unit, Date from, Date to) const {
  if (const auto length = fixedLength(unit)) {
    return saturated(std::trunc(to.timeIntervalSince(from) / *length));
  }
  const int step = from <= to ? 1 : -1;
  const auto isWithin = [&](std::int64_t count) {
    const auto reached = dateByAdding(unit, static_cast<int>(count), from);
    return reached && (step > 0 ? *reached <= to : *reached >= to);
  };
  std::int64_t count =
      roughCount(unit, WallTime(wallSeconds(from)).dayCount, WallTime(wallSeconds(to)).dayCount);
  while (count != 0 && !isWithin(count)) {
    count -= step;
  }
  while (isWithin(count + step)) {
    count += step;
  }
  return static_cast<int>(count);
}

std::optional<Date> Calendar::date(const DateComponents& components) const {
  const std::int64_t monthCount = std::int64_t{components.valueOr(CalendarUnit::year, 1)} * 12 +
                                  components.valueOr(CalendarUnit::month, 1) - 1;
  const std::int64_t year = floorDivide(monthCount, 12);
  const int month = static_cast<int>(monthCount - year * 12) + 1;
  const std::int64_t day = dayCount(year, month, components.valueOr(CalendarUnit::day, 1));
  const Seconds wall = day * secondsPerDay +
                       std::int64_t{components.valueOr(CalendarUnit::hour, 0)} * 3600 +
                       std::int64_t{components.valueOr(CalendarUnit::minute, 0)} * 60 +
                       components.valueOr(CalendarUnit::second, 0);
  return expressible(dateAt(history().momentOfWall(wall)));
}

std::optional<Date> Calendar::dateByAdding(CalendarUnit unit, int value, Date date) const {
  if (!isExpressible(date)) {
    return std::nullopt;
  }
  const Seconds moment = wholeSecondsSince1970(date);
  if (const auto length = fixedLength(unit)) {
    return expressible(dateAt(moment + std::int64_t{value} * *length, date));
  }
  const std::int32_t offset = history().offsetAt(moment);
  const WallTime wall(moment + offset);
  const std::int64_t day = dayCountAfter(wall.dayCount, unit, value);
  const Seconds target = day * secondsPerDay + wall.secondOfDay;
  return expressible(dateAt(history().momentOfWall(target, offset), date));
}

std::optional<Date> Calendar::dateByAdding(const DateComponents& span, Date date) const {
  std::optional<Date> moved = expressible(date);
  for (const CalendarUnit unit : unitsLargestFirst) {
    if (const auto value = span.get(unit); value && moved) {
      moved = dateByAdding(unit, *value, *moved);
    }
  }
  return moved;
}

Date Calendar::startOfDay(Date date) const {
  const std::int64_t day = WallTime(wallSeconds(date)).dayCount;
  return dateAt(history().firstMomentFromWall(day * secondsPerDay));
}

bool Calendar::isDateInSameDay(Date first, Date second) const {
  return WallTime(wallSeconds(first)).dayCount == WallTime(wallSeconds(second)).dayCount;
}

bool Calendar::isDateInWeekend(Date date) const {
  return dayOfWeek(WallTime(wallSeconds(date)).dayCount) >= 5;
}

std::optional<Date> Calendar::nextDate(Date date, const DateComponents& matching,
                                       SearchDirection direction) const {
  const auto pattern = timePattern(matching);
  if (!pattern || !isExpressible(date)) {
    return std::nullopt;
  }
  const bool backward = direction == SearchDirection::backward;
  const Seconds moment = wholeSecondsSince1970(date);
  if (pattern->period < secondsPerDay) {
    const bool hasFraction = dateAt(moment) < date;
    const Seconds nearest = backward ? moment - (hasFraction ? 0 : 1) : moment + 1;
    return expressible(dateAt(nearestMatch(history(), nearest, *pattern, direction)));
  }
  // No clock change skips more than a day, so the day that matches is one of the next three.
  const std::int64_t today = WallTime(wallSeconds(date)).dayCount;
  const int step = backward ? -1 : 1;
  for (std::int64_t day = today - step;; day += step) {
    const Date match =
        dateAt(history().firstMomentFromWall(day * secondsPerDay + pattern->remainder));
    if (backward ? match < date : match > date) {
      return expressible(match);
    }
  }
}

}  // namespace corvane
