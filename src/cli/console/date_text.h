// Days in the output of commands.
#pragma once

#include <string>

#include "core/money/year_month_day.h"
#include "platform/time/calendar.h"
#include "platform/time/date.h"

namespace corvane::cli {

/// "2024-03-09"
[[nodiscard]] inline std::string dateText(Date date, const Calendar& calendar) {
  const auto [year, month, day] = YearMonthDay::of(date, calendar);
  const auto twoDigits = [](int number) {
    return (number < 10 ? "0" : "") + std::to_string(number);
  };
  return std::to_string(year) + "-" + twoDigits(month) + "-" + twoDigits(day);
}

}  // namespace corvane::cli
