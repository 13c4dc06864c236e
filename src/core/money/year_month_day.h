// A day of the calendar, without a time and without a time zone.
#pragma once

#include <compare>
#include <functional>
#include <string>

#include "platform/time/calendar.h"

namespace corvane {

/// A calendar day. Days are ordered by year, then month, then day; any three numbers make a value,
/// and only normalised() brings them into the calendar.
struct YearMonthDay {
  int year = 0;
  int month = 0;
  int day = 0;

  /// The day of `date` in `calendar`; all fields are 0 where the calendar cannot express the date.
  [[nodiscard]] static YearMonthDay of(Date date, const Calendar& calendar);

  /// The day that the three numbers name when they roll over as calendar arithmetic does:
  /// 2023-0-15 is 2022-12-15, 2023-1-32 is 2023-02-01. The day of Date::distantPast() where the
  /// calendar cannot express the result.
  [[nodiscard]] static YearMonthDay normalised(int year, int month, int day,
                                               const Calendar& calendar);

  /// The first moment of the day in `calendar`; Date::distantPast() where there is none.
  [[nodiscard]] Date startIn(const Calendar& calendar) const;

  /// The day in the short date style of the user's locale.
  [[nodiscard]] std::string description() const;

  friend auto operator<=>(const YearMonthDay&, const YearMonthDay&) = default;
};

}  // namespace corvane

template <>
struct std::hash<corvane::YearMonthDay> {
  std::size_t operator()(const corvane::YearMonthDay& ymd) const noexcept;
};
