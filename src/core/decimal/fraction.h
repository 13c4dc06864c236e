// A ratio of two whole numbers, as a share split is told in: 3/2.
#pragma once

#include <cstdint>
#include <string>

#include "core/decimal/decimal.h"

namespace corvane {

/// A ratio, kept as it was told and compared by value: 2/1 equals 4/2. Two ratios with denominator
/// 0 are equal, since neither has a value.
struct Fraction {
  std::int64_t numerator = 0;
  std::int64_t denominator = 1;

  /// The numerator divided by the denominator; NaN for a denominator of 0.
  [[nodiscard]] Decimal value() const { return Decimal(numerator) / Decimal(denominator); }

  /// "3/2"
  [[nodiscard]] std::string description() const;

  friend bool operator==(const Fraction& left, const Fraction& right) {
    return left.value() == right.value();
  }
};

}  // namespace corvane
