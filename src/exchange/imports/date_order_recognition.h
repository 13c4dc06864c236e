// Works out how the dates of a file are written.
#pragma once

#include <array>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

#include "core/money/year_month_day.h"

namespace corvane {

/// Learns from the cells of date columns which of the three parts of a date is the day, which the
/// month and which the year: a word is a month, a part that reaches 32 a year, one that reaches 13
/// a day.
class DateOrderRecognition {
 public:
  void add(std::string_view cell);

  /// What the cells so far tell, as a date format such as "d M y". A part without evidence counts
  /// as a month, so that 01/02/03 on every line gives "M M M", which reads as nothing.
  [[nodiscard]] std::string format() const;

 private:
  struct Slot {
    bool isWord = false;
    std::int64_t greatest = std::numeric_limits<std::int64_t>::min();
  };
  std::array<Slot, 3> slots_;
  std::string lastCell_;
};

/// Whether a date format has one year, one month and one day, without which it names no day.
[[nodiscard]] bool namesOneDay(std::string_view format);

/// The day that `cell` names in the pattern `format`, where both are of the plainest form, "y M d"
/// and 2021-03-09; none for all else. It starts when DateFormatter says, which takes ten times as
/// long.
[[nodiscard]] std::optional<YearMonthDay> plainDay(std::string_view format, std::string_view cell);

/// The three groups of the first match of ([\d\w]+).+?([\d\w]+).+?([\d\w]+) in `cell`, in linear
/// time.
[[nodiscard]] std::optional<std::array<std::string_view, 3>> dateParts(std::string_view cell);

}  // namespace corvane
