// Ranges of values: half-open, and closed.
#pragma once

#include <algorithm>
#include <cassert>

namespace corvane {

/// The values from `lower` up to but not including `upper`; empty where the two are equal.
/// `lower` is never after `upper`: building such a range is a fault of the program.
template <typename Bound>
class Range {
 public:
  constexpr Range(Bound lower, Bound upper) : lower_(lower), upper_(upper) {
    assert(!(upper < lower) && "a range must not end before it starts");
  }

  [[nodiscard]] constexpr const Bound& lower() const { return lower_; }
  [[nodiscard]] constexpr const Bound& upper() const { return upper_; }
  [[nodiscard]] constexpr bool isEmpty() const { return !(lower_ < upper_); }
  [[nodiscard]] constexpr bool contains(const Bound& value) const {
    return !(value < lower_) && value < upper_;
  }
  /// This range with both bounds moved into `limits`.
  [[nodiscard]] constexpr Range clamped(const Range& limits) const {
    return {std::clamp(lower_, limits.lower_, limits.upper_),
            std::clamp(upper_, limits.lower_, limits.upper_)};
  }

  friend constexpr bool operator==(const Range&, const Range&) = default;

 private:
  Bound lower_;
  Bound upper_;
};

/// The values from `lower` up to and including `upper`, which is never before `lower`.
template <typename Bound>
class ClosedRange {
 public:
  constexpr ClosedRange(Bound lower, Bound upper) : lower_(lower), upper_(upper) {
    assert(!(upper < lower) && "a range must not end before it starts");
  }

  [[nodiscard]] constexpr const Bound& lower() const { return lower_; }
  [[nodiscard]] constexpr const Bound& upper() const { return upper_; }
  [[nodiscard]] constexpr bool contains(const Bound& value) const {
    return !(value < lower_) && !(upper_ < value);
  }

  friend constexpr bool operator==(const ClosedRange&, const ClosedRange&) = default;

 private:
  Bound lower_;
  Bound upper_;
};

}  // namespace corvane
