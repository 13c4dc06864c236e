#include "core/decimal/decimal.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cstdlib>
#include <limits>
#include <utility>

#include "core/decimal/decimal_rounding.h"
#include "core/decimal/wide_integer.h"

namespace corvane {
namespace {

using wide::Rest;
using wide::Uint128;
using wide::Uint256;

Sign signOf(bool negative) {
  return negative ? Sign::minus : Sign::plus;
}

/// The sum of `upper` × 10^`gap` and `lower`, or their difference, in units of 10^`gap`, where it
/// has 38 digits and something beyond them that is lost in rounding; else 0. This is what the sum
/// of two long numbers mostly comes to, and it takes no more than 128 bits.
Uint128 roundedSum(Uint128 upper, Uint128 lower, int gap, bool isDifference) {
  if (gap < 1 || gap > Decimal::maximumDigits)
    return 0;
  const auto place = static_cast<std::size_t>(gap);
  Uint128 quotient = lower;
  const Uint128 remainder = wide::wideTenDivisors[place].divideInPlace(quotient);
  // A remainder of a single digit might be kept as the 39th.
  if (remainder == 0 || std::countr_zero(static_cast<std::uint64_t>(remainder)) >= gap - 1)
    return 0;
  const Uint128 power = wide::powersOfTen128[place];
  const Uint128 kept = isDifference ? upper - quotient - 1 : upper + quotient;
  const Uint128 rest = isDifference ? power - remainder : remainder;
  constexpr Uint128 least = wide::powersOfTen128[Decimal::maximumDigits - 1];
  // Below the least or wrapped around below zero.
  if (kept - least >= 9 * least)
    return 0;
  return kept + (rest >= power - rest ? 1 : 0);
}

/// A 256-bit number below this may be multiplied by ten.
constexpr Uint256 tenthOfRange = [] {
  Uint256 range;
  range.words.fill(~std::uint64_t{0});
  wide::Divisor(10).divideInPlace(range);
  return range;
}();

std::uint64_t magnitudeOf(long long value) {
  const auto bits = static_cast<std::uint64_t>(value);
  return value < 0 ? 0 - bits : bits;
}

}  // namespace

Decimal::Decimal(int value) : Decimal(static_cast<long long>(value)) {}
Decimal::Decimal(long value) : Decimal(static_cast<long long>(value)) {}
Decimal::Decimal(long long value)
    : Decimal(fromMantissa(signOf(value < 0), magnitudeOf(value), 0)) {}
Decimal::Decimal(unsigned value) : Decimal(static_cast<unsigned long long>(value)) {}
Decimal::Decimal(unsigned long value) : Decimal(static_cast<unsigned long long>(value)) {}
Decimal::Decimal(unsigned long long value) : Decimal(fromMantissa(Sign::plus, value, 0)) {}

Decimal Decimal::fromMantissa(Sign sign, Mantissa mantissa, int exponent) {
  if (mantissa == 0)
    return {};
  if (exponent < minimumExponent || exponent > maximumExponent) {
    return wide::decimalOf(sign, mantissa, exponent);
  }
  if (!small::isMultipleOfTen(mantissa)) {
    return {mantissa, exponent, sign == Sign::minus ? negative : positive};
  }
  // Whole groups of zeros first; a multiple of a power of ten ends in as many zero bits.
  for (const int zeros : {16, 8, 4}) {
    while (std::countr_zero(static_cast<std::uint64_t>(mantissa)) >= zeros &&
           exponent + zeros <= maximumExponent) {
      Uint256 shorter{mantissa};
      const auto& divisor = wide::tenDivisors[static_cast<std::size_t>(zeros)];
      if (divisor.divideInPlace(shorter) != 0)
        break;
      mantissa = shorter.low128();
      exponent += zeros;
    }
  }
  while (exponent < maximumExponent && small::isMultipleOfTen(mantissa)) {
    mantissa = wide::tenthOf(mantissa);
    ++exponent;
  }
  return {mantissa, exponent, sign == Sign::minus ? negative : positive};
}

Decimal Decimal::fromParts(Sign sign, int exponent, const Decimal& significand) {
  if (significand.isNaN())
    return nan();
  assert(significand.sign() == Sign::plus);
  return wide::decimalOf(sign, significand.mantissa(),
                         std::int64_t{exponent} + significand.exponent());
}

Decimal Decimal::significand() const {
  return isNaN() ? nan() : fromMantissa(Sign::plus, mantissa(), 0);
}

Decimal Decimal::sum(const Decimal& left, const Decimal& right) {
  if (left.isNaN() || right.isNaN())
    return nan();
  if (left.isZero())
    return right;
  if (right.isZero())
    return left;

  const bool leftIsUpper = left.exponent() >= right.exponent();
  const Decimal& upper = leftIsUpper ? left : right;
  const Decimal& lower = leftIsUpper ? right : left;

  const int gap = upper.exponent() - lower.exponent();
  const bool isDifference = upper.sign() != lower.sign();
  if (const Uint128 mantissa = roundedSum(upper.mantissa(), lower.mantissa(), gap, isDifference)) {
    return fromMantissa(upper.sign(), mantissa, upper.exponent());
  }
  // The upper operand is brought down to the lower one's place. Where that would take more than 76
  // digits, what the lower operand has beyond them only counts as a rest.
  const int shift =
      gap < maximumDigits ? gap : std::min(gap, 76 - wide::digitCount(upper.mantissa()));
  const Uint256 raised =
      shift < maximumDigits
          ? wide::multiply(upper.mantissa(), wide::powersOfTen128[static_cast<std::size_t>(shift)])
          : wide::multiply(wide::powersOfTen256[static_cast<std::size_t>(shift)], upper.mantissa());
  Uint256 added{lower.mantissa()};
  const Rest rest = wide::dropDigits(added, gap - shift, Rest::zero);
  const int place = upper.exponent() - shift;

  if (!isDifference) {
    return wide::decimalOf(upper.sign(), wide::add(raised, added), place, rest);
  }
  if (wide::lessThan(raised, added)) {
    // Only without a rest: a raised operand of 76 digits is the greater one.
    return wide::decimalOf(lower.sign(), wide::subtract(added, raised), place);
  }
  Uint256 difference = wide::subtract(raised, added);
  if (rest == Rest::zero)
    return wide::decimalOf(upper.sign(), std::move(difference), place);
  return wide::decimalOf(upper.sign(), wide::subtract(difference, Uint256{1}), place,
                         wide::complementOf(rest));
}

Decimal Decimal::product(const Decimal& left, const Decimal& right) {
  if (left.isNaN() || right.isNaN())
    return nan();
  return wide::decimalOf(signOf(left.sign() != right.sign()),
                         wide::multiply(left.mantissa(), right.mantissa()),
                         left.exponent() + right.exponent());
}

Decimal operator/(const Decimal& left, const Decimal& right) {
  if (left.isNaN() || right.isNaN() || right.isZero())
    return Decimal::nan();
  if (left.isZero())
    return {};
  // The dividend is raised until the quotient has 39 digits, so that each quotient that can be
  // represented comes out without a remainder. Where 256 bits end before that, they still give 38
  // digits, and a longer exact quotient cannot exist: its product with the divisor would not fit.
  const int digits = wide::digitCount(left.mantissa());
  int raise = std::min(39 + wide::digitCount(right.mantissa()), 77) - digits;
  Uint256 dividend =
      wide::multiply(wide::powersOfTen256[static_cast<std::size_t>(raise)], left.mantissa());
  if (digits + raise == 77 && wide::lessThan(dividend, tenthOfRange)) {
    wide::multiplyInPlace(dividend, 10);
    ++raise;
  }
  const Uint128 remainder = wide::divideInPlace(dividend, right.mantissa());
  return wide::decimalOf(signOf(left.sign() != right.sign()), std::move(dividend),
                         left.exponent() - right.exponent() - raise,
                         wide::restOf(remainder, right.mantissa()));
}

bool Decimal::hasLessMagnitude(const Decimal& left, const Decimal& right) {
  const int gap = left.exponent() - right.exponent();
  if (gap == 0)
    return left.mantissa() < right.mantissa();
  // The upper mantissa is brought to the place of the lower one, where it is compared if it fits.
  const int distance = std::abs(gap);
  if (distance > maximumDigits)
    return gap < 0;
  const Uint256 raised = wide::multiply(gap > 0 ? left.mantissa() : right.mantissa(),
                                        wide::powersOfTen128[static_cast<std::size_t>(distance)]);
  if (!raised.fits128())
    return gap < 0;
  return gap > 0 ? raised.low128() < right.mantissa() : left.mantissa() < raised.low128();
}

Decimal abs(const Decimal& value) {
  return value.sign() == Sign::minus ? -value : value;
}

Decimal rounded(const Decimal& value, int scale, RoundingMode mode) {
  const std::int64_t drop = -std::int64_t{scale} - value.exponent();
  if (drop <= 0 || value.isNaN() || value.isZero())
    return value;
  // Half of 10^39 is more than any mantissa.
  if (drop > Decimal::maximumDigits)
    return {};
  const Uint128 divisor = wide::powersOfTen128[static_cast<std::size_t>(drop)];
  const Uint128 kept = value.mantissa() / divisor;
  const Rest rest = wide::restOf(value.mantissa() % divisor, divisor);
  const bool away = mode == RoundingMode::plain ? rest >= Rest::half
                    : mode == RoundingMode::bankers
                        ? rest == Rest::aboveHalf || (rest == Rest::half && kept % 2 == 1)
                        : false;
  return Decimal::fromMantissa(value.sign(), kept + (away ? 1 : 0), -scale);
}

std::int64_t Decimal::integerValue() const {
  using Limits = std::numeric_limits<std::int64_t>;
  const bool isNegative = sign() == Sign::minus;
  if (*this > Decimal(Limits::max()))
    return Limits::max();
  if (*this < Decimal(Limits::min()))
    return isNaN() ? 0 : Limits::min();
  const Decimal whole = rounded(*this, 0, RoundingMode::down);
  const auto bits = static_cast<std::uint64_t>(
      whole.mantissa() * wide::powersOfTen128[static_cast<std::size_t>(whole.exponent())]);
  return static_cast<std::int64_t>(isNegative ? 0 - bits : bits);
}

}  // namespace corvane

std::size_t std::hash<corvane::Decimal>::operator()(const corvane::Decimal& value) const noexcept {
  const auto low = static_cast<std::uint64_t>(value.mantissa());
  const auto high = static_cast<std::uint64_t>(value.mantissa() >> 64);
  const auto rest = static_cast<std::uint64_t>(value.exponent()) << 2 ^
                    (value.sign() == corvane::Sign::minus ? 1U : 0U) ^ (value.isNaN() ? 2U : 0U);
  std::uint64_t mixed = low * 0x9E3779B97F4A7C15U;
  mixed = (mixed ^ (mixed >> 32) ^ high) * 0xD6E8FEB86659FD93U;
  mixed = (mixed ^ (mixed >> 32) ^ rest) * 0x9E3779B97F4A7C15U;
  return mixed ^ mixed >> 32;
}
