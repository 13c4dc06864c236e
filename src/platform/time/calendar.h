// Gregorian calendar arithmetic in one time zone.
//
// The arithmetic of civil days is our own, on the offsets of the time-zone database, because an
// accounting walk asks for the year of every row. The Gregorian rules hold for all years, also
// those before 1582. Years are astronomical: year 0 is 1 BC.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>

#include "platform/time/date.h"
#include "platform/time/date_components.h"
#include "platform/time/time_zone.h"

namespace corvane {

class ZoneHistory;

enum class SearchDirection { forward, backward };

/// The Gregorian calendar of a time zone. A cheap value to copy; safe on any thread.
///
/// A civil time that a clock change skips is taken with the offset in force before the change, so
/// 02:30 of a spring night in Toronto becomes 03:30. A civil time that occurs twice means its first
/// occurrence; only a date that is moved keeps to the second one where that has the offset it came
/// with.
class Calendar {
 public:
  explicit Calendar(TimeZone timeZone = TimeZone());

  /// The calendar of the user's time zone.
  [[nodiscard]] static Calendar current();

  [[nodiscard]] const TimeZone& timeZone() const { return timeZone_; }

  /// One field of `date`. weekOfYear counts ISO 8601 weeks. A date that the calendar cannot express
  /// is taken as the nearest one that it can.
  [[nodiscard]] int component(CalendarUnit unit, Date date) const;

  /// The fields of `date` that `units` names; no others are present. All of them are absent where
  /// the calendar cannot express the date.
  [[nodiscard]] DateComponents dateComponents(std::initializer_list<CalendarUnit> units,
                                              Date date) const;

  /// The span from `from` to `to`, in whole units, the largest first: what is left over after the
  /// years is counted in months, and so on. Every field is negative or zero when `to` is earlier.
  /// All are absent where the calendar cannot express one of the dates. A count that an int cannot
  /// hold (seconds of a century) is the nearest one that it can.
  [[nodiscard]] DateComponents dateComponents(std::initializer_list<CalendarUnit> units, Date from,
                                              Date to) const;

  /// The first moment that matches `components`. An absent year is 1, an absent month or day is 1,
  /// an absent time of day is 0; weekOfYear plays no part. Values outside their range roll over:
  /// month 13 is January of the next year, day 0 the last day of the month before. None where the
  /// result is beyond what the calendar can express.
  [[nodiscard]] std::optional<Date> date(const DateComponents& components) const;

  /// `date` moved by `value` units; see the next operation.
  [[nodiscard]] std::optional<Date> dateByAdding(CalendarUnit unit, int value, Date date) const;

  /// `date` moved by one field of `span` after the other, the largest first. Years and months keep
  /// the day of the month where the target month has it and take its last day otherwise. Years to
  /// days keep the civil time of day; hours, minutes and seconds are counted in elapsed time. Days
  /// are counted by the calendar, also one that a zone left out when it crossed the date line. None
  /// where the result, or a step on the way to it, is beyond what the calendar can express.
  [[nodiscard]] std::optional<Date> dateByAdding(const DateComponents& span, Date date) const;

  /// The first moment of the day of `date`: 00:00:00, or later where a clock change skips midnight.
  [[nodiscard]] Date startOfDay(Date date) const;

  [[nodiscard]] bool isDateInSameDay(Date first, Date second) const;

  /// Whether `date` falls on a Saturday or a Sunday.
  [[nodiscard]] bool isDateInWeekend(Date date) const;

  /// The nearest date strictly before or after `date` that has the time-of-day fields that
  /// `matching` names (hour, minute, second; the smaller ones that are absent count as 0, the
  /// larger ones match anything). Where the hour is named, a civil time that occurs twice counts at
  /// its first occurrence, and one that a clock change skips at the first moment after it; where it
  /// is not, an hour that occurs twice is two hours. None where `matching` names no such field or
  /// one outside its range.
  [[nodiscard]] std::optional<Date> nextDate(Date date, const DateComponents& matching,
                                             SearchDirection direction) const;

  /// Calendars are equal when their time zones are.
  friend bool operator==(const Calendar&, const Calendar&) = default;

 private:
  [[nodiscard]] const ZoneHistory& history() const;
  /// What clocks show at `date`, in whole seconds since they showed 1970-01-01 00:00:00.
  [[nodiscard]] std::int64_t wallSeconds(Date date) const;
  /// The largest number of units by which `from` can be moved towards `to` and not past it.
  [[nodiscard]] int wholeUnits(CalendarUnit unit, Date from, Date to) const;

  TimeZone timeZone_;
};

}  // namespace corvane
