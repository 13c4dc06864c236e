#include "platform/time/date.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>

#include "platform/time/civil_day.h"
#include "platform/time/time_zone_data.h"

namespace corvane {

std::int64_t wholeSecondsSince1970(Date date) {
  const double seconds = date.timeIntervalSinceReferenceDate();
  const double within = std::isnan(seconds)
                            ? -calendarReachSeconds
                            : std::clamp(seconds, -calendarReachSeconds, calendarReachSeconds);
  // The whole part alone is moved to 1970, so that a fraction close to 1 is not rounded up.
  return static_cast<std::int64_t>(std::floor(within)) +
         static_cast<std::int64_t>(Date::secondsFrom1970ToReference);
}

Date Date::now() {
  const std::chrono::duration<double> sinceEpoch =
      std::chrono::system_clock::now().time_since_epoch();
  return since1970(sinceEpoch.count());
}

std::string Date::description() const {
  char text[64];
  if (!(std::abs(seconds_) <= calendarReachSeconds)) {
    std::snprintf(text, sizeof text, "%.17g s since 2001", seconds_);
    return text;
  }
  const std::int64_t seconds = wholeSecondsSince1970(*this);
  const std::int64_t count = floorDivide(seconds, secondsPerDay);
  const auto secondOfDay = static_cast<int>(seconds - count * secondsPerDay);
  const CivilDay day = civilDay(count);
  std::snprintf(text, sizeof text, "%04lld-%02d-%02d %02d:%02d:%02d +0000",
                static_cast<long long>(day.year), day.month, day.day, secondOfDay / 3600,
                secondOfDay / 60 % 60, secondOfDay % 60);
  return text;
}

}  // namespace corvane
