// Days as the titles of tables name them.
#pragma once

#include <string>

#include "core/money/year_month_day.h"
#include "platform/time/calendar.h"

namespace corvane {

/// "March 4, 2021 (3 years ago)": `day` inside a sentence, with its distance from `today`.
[[nodiscard]] std::string dayWithDistance(const YearMonthDay& day, Date today,
                                          const Calendar& calendar);

}  // namespace corvane
