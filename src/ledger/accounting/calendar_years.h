// The calendar years of a run of dates.
#pragma once

#include "platform/range.h"
#include "platform/time/calendar.h"

namespace corvane {

/// Tells the year of dates that mostly fall in the year of the date asked before, as the rows of a
/// ledger do, without asking the calendar for each.
class CalendarYears {
 public:
  explicit CalendarYears(const Calendar& calendar) : calendar_(calendar) {}

  [[nodiscard]] int yearOf(Date date) {
    if (!sameYear_.contains(date)) {
      year_ = calendar_.component(CalendarUnit::year, date);
      sameYear_ = insideOf(year_);
    }
    return year_;
  }

 private:
  /// Dates that are surely in `year`. The days beside New Year are left out, since a zone may
  /// change its clocks there; of them the calendar is asked.
  [[nodiscard]] DateRange insideOf(int year) const {
    const auto start = calendar_.date({{CalendarUnit::year, year}, {CalendarUnit::day, 3}});
    const auto end = calendar_.date(
        {{CalendarUnit::year, year}, {CalendarUnit::month, 12}, {CalendarUnit::day, 29}});
    return start && end ? DateRange(*start, *end) : DateRange(Date(), Date());
  }

  const Calendar& calendar_;
  int year_ = 0;
  DateRange sameYear_{Date(), Date()};
};

}  // namespace corvane
