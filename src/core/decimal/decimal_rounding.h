// The one place where an exact result becomes a Decimal: all arithmetic and all reading of text
// ends here, so a value is rounded once and every operation follows the same rules.
#pragma once

#include "core/decimal/decimal.h"
#include "core/decimal/wide_integer.h"

namespace corvane::wide {

/// What an integer leaves out of an exact value, as a part of its last place.
enum class Rest { zero, belowHalf, half, aboveHalf };

/// The rest of a division, compared with half the divisor.
template <class Word>
constexpr Rest restOf(Word remainder, Word divisor) {
  if (remainder == 0)
    return Rest::zero;
  const Word upToDivisor = divisor - remainder;
  if (remainder == upToDivisor)
    return Rest::half;
  return remainder < upToDivisor ? Rest::belowHalf : Rest::aboveHalf;
}

/// What is missing from a rest to the next whole; for rests other than zero.
constexpr Rest complementOf(Rest rest) {
  if (rest == Rest::half)
    return Rest::half;
  return rest == Rest::aboveHalf ? Rest::belowHalf : Rest::aboveHalf;
}

/// Divides `value` by 10^`digits` in place. `below` is what lay under its last place before; the
/// result is what lies there now.
Rest dropDigits(Uint256& value, int digits, Rest below);

/// (`magnitude` + `rest`) × 10^`exponent` as a Decimal: exact where that is representable,
/// otherwise rounded once. `magnitude` is used up, and it has at least 38 digits where `rest` is
/// not zero.
Decimal decimalOf(Sign sign, Uint256&& magnitude, std::int64_t exponent, Rest rest = Rest::zero);

}  // namespace corvane::wide
