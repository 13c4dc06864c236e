#include "platform/text/formats/relative_date_formatter.h"

#include <unicode/reldatefmt.h>

#include <array>

#include "platform/text/unicode/icu_text.h"

namespace corvane {
namespace {

struct Unit {
  CalendarUnit unit;
  URelativeDateTimeUnit icuUnit;
};

constexpr std::array relativeUnitsLargestFirst = {
    Unit{CalendarUnit::year, UDAT_REL_UNIT_YEAR},
    Unit{CalendarUnit::month, UDAT_REL_UNIT_MONTH},
    Unit{CalendarUnit::weekOfYear, UDAT_REL_UNIT_WEEK},
    Unit{CalendarUnit::day, UDAT_REL_UNIT_DAY},
    Unit{CalendarUnit::hour, UDAT_REL_UNIT_HOUR},
    Unit{CalendarUnit::minute, UDAT_REL_UNIT_MINUTE},
    Unit{CalendarUnit::second, UDAT_REL_UNIT_SECOND}};

struct Distance {
  Unit unit;
  int count;
};

Distance distanceBetween(Date reference, Date date, const Calendar& calendar) {
  for (const Unit& unit : relativeUnitsLargestFirst) {
    const int count = calendar.dateComponents({unit.unit}, reference, date).valueOr(unit.unit, 0);
    if (count != 0) {
      return {unit, count};
    }
  }
  return {relativeUnitsLargestFirst.back(), 0};
}

/// The start of the Monday on or before `date`.
Date startOfWeek(Date date, const Calendar& calendar) {
  const auto weekOf = [&](Date day) { return calendar.component(CalendarUnit::weekOfYear, day); };
  Date monday = calendar.startOfDay(date);
  for (int daysBack = 1; daysBack < 7; ++daysBack) {
    const Date before = calendar.startOfDay(monday - 1);
    if (weekOf(before) != weekOf(date)) {
      break;
    }
    monday = before;
  }
  return monday;
}

/// The start of the year, month, week or day of `date`.
Date startOf(CalendarUnit unit, Date date, const Calendar& calendar) {
  using enum CalendarUnit;
  switch (unit) {
    case year:
      return calendar.date(calendar.dateComponents({year}, date)).value_or(date);
    case month:
      return calendar.date(calendar.dateComponents({year, month}, date)).value_or(date);
    case weekOfYear:
      return startOfWeek(date, calendar);
    case day:
      return calendar.startOfDay(date);
    default:
      return date;
  }
}

/// Whether "yesterday", "last month" and the like are true of the distance: the calendar says so
/// too, and not only the time elapsed.
bool isTrueByCalendar(const Distance& distance, Date reference, Date date,
                      const Calendar& calendar) {
  const CalendarUnit unit = distance.unit.unit;
  if (unit > CalendarUnit::day) {
    return true;
  }
  const auto moved =
      calendar.dateByAdding(unit, distance.count, startOf(unit, reference, calendar));
  return moved && startOf(unit, *moved, calendar) == startOf(unit, date, calendar);
}

}  // namespace

std::string RelativeDateFormatter::string(Date date, Date reference,
                                          const Calendar& calendar) const {
  if (calendar.dateComponents({CalendarUnit::second}, reference, date) == DateComponents()) {
    return {};
  }
  UErrorCode status = U_ZERO_ERROR;
  const icu::RelativeDateTimeFormatter formatter(toIcu(locale), nullptr, UDAT_STYLE_LONG,
                                                 toIcu(context), status);
  const Distance distance = distanceBetween(reference, date, calendar);
  icu::UnicodeString text;
  if (style == Style::named && isTrueByCalendar(distance, reference, date, calendar)) {
    formatter.format(distance.count, distance.unit.icuUnit, text, status);
  } else {
    formatter.formatNumeric(distance.count, distance.unit.icuUnit, text, status);
  }
  return U_SUCCESS(status) ? toUtf8(text) : std::string();
}

}  // namespace corvane
