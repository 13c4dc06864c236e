// What stands behind a TimeZone, for the sources of this folder only.
#pragma once

#include <string>

#include "platform/time/time_zone.h"
#include "platform/time/zone_history.h"

namespace corvane {

struct TimeZone::Data {
  std::string identifier;
  ZoneHistory history;
};

/// How far from the reference date calendars and time zones reach: 140,000 years either way.
inline constexpr double calendarReachSeconds = 140000 * 31556952.0;

/// `date` in whole seconds since 1970, rounded down. Dates out of reach count as the nearest one
/// within it, and a NaN as the earliest.
std::int64_t wholeSecondsSince1970(Date date);

}  // namespace corvane
