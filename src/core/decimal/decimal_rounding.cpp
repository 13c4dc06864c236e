#include "core/decimal/decimal_rounding.h"

#include <algorithm>
#include <bit>

namespace corvane::wide {
namespace {

/// How a rest looks from one or more digits higher up: `rest` of those digits, and `below` it.
Rest combine(Rest rest, Rest below) {
  if (below == Rest::zero)
    return rest;
  if (rest == Rest::zero)
    return Rest::belowHalf;
  return rest == Rest::half ? Rest::aboveHalf : rest;
}

/// The exact value of `magnitude` × 10^`exponent`, an exponent beyond the range, or NaN.
Decimal broughtDownToRange(Sign sign, const Uint256& magnitude, std::int64_t exponent) {
  const std::int64_t excess = exponent - Decimal::maximumExponent;
  if (excess > Decimal::maximumDigits || !magnitude.fits128())
    return Decimal::nan();
  const Uint256 scaled =
      multiply(magnitude.low128(), powersOfTen128[static_cast<std::size_t>(excess)]);
  if (!scaled.fits128())
    return Decimal::nan();
  return Decimal::fromMantissa(sign, scaled.low128(), Decimal::maximumExponent);
}

}  // namespace

Rest dropDigits(Uint256& value, int digits, Rest below) {
  while (digits > 0) {
    auto step = static_cast<std::size_t>(std::min(digits, Decimal::maximumDigits));
    if (const WideDivisor& divisor = wideTenDivisors[step]; divisor.canDivide(value)) {
      below = combine(restOf(divisor.divideInPlace(value), powersOfTen128[step]), below);
    } else {
      step = std::min(step, powersOfTen64.size() - 1);
      below = combine(restOf(tenDivisors[step].divideInPlace(value), powersOfTen64[step]), below);
    }
    digits -= static_cast<int>(step);
  }
  return below;
}

Decimal decimalOf(Sign sign, Uint256&& magnitude, std::int64_t exponent, Rest rest) {
  if (magnitude.isZero())
    return {};
  if (exponent > Decimal::maximumExponent) {
    // A multiple of 10^128 and something more has too many digits to be near any Decimal.
    if (rest != Rest::zero)
      return Decimal::nan();
    return broughtDownToRange(sign, magnitude, exponent);
  }
  // 256 bits hold 78 digits, which leave nothing this far below the range.
  if (exponent < Decimal::minimumExponent - 80)
    return {};
  const int place = static_cast<int>(exponent);
  if (rest == Rest::zero && magnitude.fits128() && place >= Decimal::minimumExponent) {
    return Decimal::fromMantissa(sign, magnitude.low128(), place);
  }

  const int toPrecision = digitCount(magnitude) - Decimal::maximumDigits;
  const int toBottom = Decimal::minimumExponent - place;
  const int toTop = Decimal::maximumExponent - place;
  const int drop = std::min(std::max({toPrecision, toBottom, 0}), toTop);

  // With a 39th digit the mantissa may still hold the value exactly. That makes it a multiple of
  // a power of ten, hence of two, which few are.
  const int oneLess = drop - 1;
  if (rest == Rest::zero && oneLess >= 0 && oneLess >= toBottom &&
      std::countr_zero(magnitude.words[0]) >= oneLess) {
    Uint256 longer = magnitude;
    if (dropDigits(longer, oneLess, Rest::zero) == Rest::zero && longer.fits128()) {
      return Decimal::fromMantissa(sign, longer.low128(), place + oneLess);
    }
  }

  const Rest dropped = dropDigits(magnitude, drop, rest);
  addWord(magnitude, dropped >= Rest::half ? 1 : 0);
  if (!magnitude.fits128())
    return Decimal::nan();
  return Decimal::fromMantissa(sign, magnitude.low128(), place + drop);
}

}  // namespace corvane::wide
