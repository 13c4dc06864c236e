#include "core/money/year_month_day.h"

#include "platform/text/formats/date_formatter.h"

namespace corvane {

YearMonthDay YearMonthDay::of(Date date, const Calendar& calendar) {
  const DateComponents fields =
      calendar.dateComponents({CalendarUnit::year, CalendarUnit::month, CalendarUnit::day}, date);
  return {fields.valueOr(CalendarUnit::year, 0), fields.valueOr(CalendarUnit::month, 0),
          fields.valueOr(CalendarUnit::day, 0)};
}

YearMonthDay YearMonthDay::normalised(int year, int month, int day, const Calendar& calendar) {
  return of(YearMonthDay{year, month, day}.startIn(calendar), calendar);
}

Date YearMonthDay::startIn(const Calendar& calendar) const {
  return calendar
      .date({{CalendarUnit::year, year}, {CalendarUnit::month, month}, {CalendarUnit::day, day}})
      .value_or(Date::distantPast());
}

std::string YearMonthDay::description() const {
  DateFormatter formatter;
  formatter.dateStyle = DateFormatter::Style::shortStyle;
  formatter.timeStyle = DateFormatter::Style::none;
  return formatter.string(startIn(Calendar::current()));
}

}  // namespace corvane

std::size_t std::hash<corvane::YearMonthDay>::operator()(
    const corvane::YearMonthDay& ymd) const noexcept {
  std::size_t seed = 0;
  for (const int field : {ymd.year, ymd.month, ymd.day}) {
    seed = seed * 1099511628211ULL + static_cast<std::size_t>(field);
  }
  return std::hash<std::size_t>()(seed);
}
