// "2 years, 3 months": the length of a span of time in calendar units.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/text/unicode/locale.h"
#include "platform/time/calendar.h"

namespace corvane {

/// How to write a span, as settings to be changed at will. A plain value.
struct DurationFormatter {
  /// The units that may be used; weekOfYear stands for weeks.
  std::vector<CalendarUnit> allowedUnits = {CalendarUnit::year, CalendarUnit::month,
                                            CalendarUnit::weekOfYear, CalendarUnit::day};
  /// How many units are written at most; what is left over in smaller ones is dropped.
  int maximumUnitCount = 2;
  /// Whether a single largest unit is counted in the next smaller one when some of that follow: 13
  /// months rather than 1 year, 1 month.
  bool collapsesLargestUnit = false;
  Locale locale = Locale::current();

  /// The span from `from` to `to`; units of which there are none are left out, and an empty span is
  /// none of the smallest unit ("0 days"). None where `calendar` cannot express the dates or no
  /// unit is allowed.
  [[nodiscard]] std::optional<std::string> string(Date from, Date to,
                                                  const Calendar& calendar) const;
};

}  // namespace corvane
