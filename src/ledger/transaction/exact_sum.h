// Addition of balances without any rounding.
#pragma once

#include "core/decimal/decimal.h"

namespace corvane {

/// `left` + `right` where the sum can be kept exactly, else NaN. The decimal's own addition rounds
/// a sum of more than 38 digits, which in a ledger would lose money silently.
[[nodiscard]] inline Decimal exactSum(const Decimal& left, const Decimal& right) {
  const Decimal sum = left + right;
  const auto isSmall = [](const Decimal& value) { return (value.mantissa() >> 64) == 0; };
  const int distance = left.exponent() - right.exponent();
  // Two 64-bit mantissas at most 18 decimal places apart add up to less than 2^125.
  if (isSmall(left) && isSmall(right) && distance <= 18 && distance >= -18) {
    return sum;
  }
  return sum - left == right && sum - right == left ? sum : Decimal::nan();
}

}  // namespace corvane
