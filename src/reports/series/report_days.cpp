#include "reports/series/report_days.h"

namespace corvane {

std::string isoText(const YearMonthDay& day) {
  const auto twoDigits = [](int number) {
    return (number < 10 ? "0" : "") + std::to_string(number);
  };
  return std::to_string(day.year) + "-" + twoDigits(day.month) + "-" + twoDigits(day.day);
}

}  // namespace corvane
