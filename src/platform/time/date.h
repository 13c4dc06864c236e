// A point in time. It knows no day, month or year: those come from a Calendar.
#pragma once

#include <compare>
#include <functional>
#include <string>

#include "platform/range.h"

namespace corvane {

/// A point in time: a count of seconds since 2001-01-01 00:00:00 UTC, leap seconds not counted.
///
/// Any double is a Date. One that no calendar can express (NaN, infinity, more than some 140,000
/// years away) still compares and subtracts as a double does; only a Calendar refuses it.
class Date {
 public:
  /// Seconds from 1970-01-01 to the reference date 2001-01-01, both at 00:00:00 UTC.
  static constexpr double secondsFrom1970ToReference = 978307200.0;

  /// The reference date itself.
  constexpr Date() = default;

  [[nodiscard]] static constexpr Date sinceReferenceDate(double seconds) { return Date(seconds); }
  [[nodiscard]] static constexpr Date since1970(double seconds) {
    return Date(seconds - secondsFrom1970ToReference);
  }
  [[nodiscard]] static Date now();

  /// 0001-01-01 00:00:00 UTC and 4001-01-01 00:00:00 UTC: sentinels outside any real date.
  [[nodiscard]] static constexpr Date distantPast() { return Date(-63113904000.0); }
  [[nodiscard]] static constexpr Date distantFuture() { return Date(63113904000.0); }

  [[nodiscard]] constexpr double timeIntervalSinceReferenceDate() const { return seconds_; }
  [[nodiscard]] constexpr double timeIntervalSince1970() const {
    return seconds_ + secondsFrom1970ToReference;
  }
  /// Seconds from `other` to this date; negative when this one is earlier.
  [[nodiscard]] constexpr double timeIntervalSince(Date other) const {
    return seconds_ - other.seconds_;
  }

  /// "2001-01-01 00:00:00 +0000": the time in UTC to the second, rounded down. A date that the
  /// calendar cannot express reads as its count of seconds.
  [[nodiscard]] std::string description() const;

  friend constexpr Date operator+(Date date, double seconds) {
    return Date(date.seconds_ + seconds);
  }
  friend constexpr Date operator-(Date date, double seconds) {
    return Date(date.seconds_ - seconds);
  }
  friend constexpr bool operator==(Date, Date) = default;
  friend constexpr std::partial_ordering operator<=>(Date, Date) = default;

 private:
  explicit constexpr Date(double seconds) : seconds_(seconds) {}

  double seconds_ = 0;
};

using DateRange = Range<Date>;

}  // namespace corvane

template <>
struct std::hash<corvane::Date> {
  std::size_t operator()(corvane::Date date) const noexcept {
    return std::hash<double>()(date.timeIntervalSinceReferenceDate());
  }
};
