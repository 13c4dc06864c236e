#include "core/decimal_rounding.h"

#include <algorithm>

namespace corvane::wide {
namespace {

/// How the rest looks one or more digits higher up: `remainder` in `divisor`, with `below` under
/// it.
Rest combine(std::uint64_t remainder, std::uint64_t divisor, Rest below) {
  const Rest rest = restOf(remainder, divisor);
  if (below == Rest::zero)
    return rest;
  if (rest == Rest::zero)
    return Rest::belowHalf;
  return rest == Rest::half ? Rest::aboveHalf : rest;
}

}  // namespace

Rest dropDigits(Uint256& value, int digits, Rest below) {
  while (digits > 0) {
    const int step = std::min(digits, 19);
    const std::uint64_t divisor = powersOfTen64[static_cast<std::size_t>(step)];
    const std::uint64_t remainder = divideInPlace(value, divisor);
    below = combine(remainder, divisor, below);
    digits -= step;
  }
  return below;
}

Decimal decimalOf(Sign sign, const Uint256& magnitude, std::int64_t exponent, Rest rest) {
  if (magnitude.isZero())
    return {};
  // No magnitude has more than 78 digits, so nothing beyond these ends can be represented.
  if (exponent > Decimal::maximumExponent) {
    const std::int64_t up = exponent - Decimal::maximumExponent;
    if (up > Decimal::maximumDigits || !magnitude.fits128()) {
      return Decimal::nan();
    }
    const Uint256 scaled =
        multiply(magnitude.low128(), powersOfTen128[static_cast<std::size_t>(up)]);
    if (rest != Rest::zero || !scaled.fits128())
      return Decimal::nan();
    return Decimal::fromMantissa(sign, scaled.low128(), Decimal::maximumExponent);
  }
  if (exponent < Decimal::minimumExponent - 80)
    return {};

  const int digits = digitCount(magnitude);
  const int belowRange = static_cast<int>(Decimal::minimumExponent - exponent);
  const int belowTop = static_cast<int>(Decimal::maximumExponent - exponent);

  // Exact with up to 39 digits?
  Uint256 kept = magnitude;
  const int drop = std::max({digits - Decimal::maximumDigits - 1, belowRange, 0});
  rest = dropDigits(kept, drop, rest);
  if (rest == Rest::zero && kept.fits128()) {
    return Decimal::fromMantissa(sign, kept.low128(), static_cast<int>(exponent) + drop);
  }

  const int target =
      std::max(drop, std::min(std::max(digits - Decimal::maximumDigits, belowRange), belowTop));
  rest = dropDigits(kept, target - drop, rest);
  if (rest >= Rest::half)
    kept = add(kept, Uint256{1});
  if (!kept.fits128())
    return Decimal::nan();
  return Decimal::fromMantissa(sign, kept.low128(), static_cast<int>(exponent) + target);
}

}  // namespace corvane::wide
