#include "core/decimal.h"

#include <algorithm>
#include <cassert>
#include <limits>
#include <utility>

#include "core/decimal_rounding.h"
#include "core/wide_integer.h"

namespace corvane {
namespace {

using wide::Rest;
using wide::Uint128;
using wide::Uint256;

Sign signOf(bool negative) {
  return negative ? Sign::minus : Sign::plus;
}

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
  while (exponent < maximumExponent && mantissa % 10 == 0) {
    mantissa /= 10;
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

Decimal Decimal::nan() {
  return {0, 0, notANumber};
}
Decimal Decimal::greatestFiniteMagnitude() {
  return {~Mantissa{0}, maximumExponent, positive};
}
Decimal Decimal::leastNonzeroMagnitude() {
  return {1, minimumExponent, positive};
}

Decimal Decimal::significand() const {
  return isNaN() ? nan() : fromMantissa(Sign::plus, mantissa(), 0);
}

Decimal Decimal::operator-() const {
  Decimal result = *this;
  if (!isNaN() && !isZero())
    result.flags_ = flags_ == negative ? positive : negative;
  return result;
}

Decimal operator+(const Decimal& left, const Decimal& right) {
  if (left.isNaN() || right.isNaN())
    return Decimal::nan();
  if (left.isZero())
    return right;
  if (right.isZero())
    return left;

  const bool ordered = left.exponent() >= right.exponent();
  const Decimal& upper = ordered ? left : right;
  const Decimal& lower = ordered ? right : left;
  const int gap = upper.exponent() - lower.exponent();

  // The upper operand is brought down to the lower one's place. Where that would pass 76 digits, as
  // much of the lower operand as lies beyond is only a rest.
  const Uint256 upperMantissa{upper.mantissa()};
  const int shift = std::min(gap, 76 - wide::digitCount(upperMantissa));
  Uint256 upperAligned = wide::multiply(
      upper.mantissa(), wide::powersOfTen128[static_cast<std::size_t>(std::min(shift, 38))]);
  for (int more = shift - 38; more > 0; more -= 19) {
    upperAligned = wide::multiply(
        upperAligned, wide::powersOfTen64[static_cast<std::size_t>(std::min(more, 19))]);
  }
  Uint256 lowerAligned{lower.mantissa()};
  const Rest rest = wide::dropDigits(lowerAligned, gap - shift, Rest::zero);
  const int exponent = lower.exponent() + gap - shift;

  if (left.sign() == right.sign()) {
    return wide::decimalOf(left.sign(), wide::add(upperAligned, lowerAligned), exponent, rest);
  }
  if (wide::lessThan(upperAligned, lowerAligned)) {
    return wide::decimalOf(lower.sign(), wide::subtract(lowerAligned, upperAligned), exponent);
  }
  Uint256 difference = wide::subtract(upperAligned, lowerAligned);
  if (rest == Rest::zero)
    return wide::decimalOf(upper.sign(), difference, exponent);
  difference = wide::subtract(difference, Uint256{1});
  const Rest complement = rest == Rest::half        ? Rest::half
                          : rest == Rest::aboveHalf ? Rest::belowHalf
                                                    : Rest::aboveHalf;
  return wide::decimalOf(upper.sign(), difference, exponent, complement);
}

Decimal operator-(const Decimal& left, const Decimal& right) {
  return left + -right;
}

Decimal operator*(const Decimal& left, const Decimal& right) {
  if (left.isNaN() || right.isNaN())
    return Decimal::nan();
  return wide::decimalOf(signOf(left.sign() != right.sign()),
                         wide::multiply(left.mantissa(), right.mantissa()),
                         left.exponent() + right.exponent());
}

Decimal operator/(const Decimal& left, const Decimal& right) {
  if (left.isNaN() || right.isNaN() || right.isZero())
    return Decimal::nan();
  if (left.isZero())
    return {};
  // The dividend is scaled as far as 256 bits reach: then the quotient has at least 38 digits, and
  // every quotient that can be represented comes out without a remainder.
  Uint256 dividend{left.mantissa()};
  int scaled = 0;
  const auto scale = [&](int digits) {
    dividend = wide::multiply(dividend, wide::powersOfTen64[static_cast<std::size_t>(digits)]);
    scaled += digits;
  };
  for (int room = 77 - wide::digitCount(dividend); room > 0; room -= 19)
    scale(std::min(room, 19));
  static constexpr Uint256 tenthOfRange = [] {
    Uint256 all;
    all.words.fill(~std::uint64_t{0});
    wide::divideInPlace(all, 10);
    return all;
  }();
  if (!wide::lessThan(tenthOfRange, dividend))
    scale(1);
  const auto [quotient, remainder] = wide::divide(dividend, right.mantissa());
  return wide::decimalOf(signOf(left.sign() != right.sign()), quotient,
                         left.exponent() - right.exponent() - scaled,
                         wide::restOf(remainder, right.mantissa()));
}

std::strong_ordering operator<=>(const Decimal& left, const Decimal& right) {
  if (left.isNaN() || right.isNaN())
    return right.isNaN() <=> left.isNaN();
  const auto signum = [](const Decimal& value) {
    return value.isZero() ? 0 : value.sign() == Sign::plus ? 1 : -1;
  };
  if (signum(left) != signum(right) || left.isZero())
    return signum(left) <=> signum(right);

  const auto magnitude = [](const Decimal& a, const Decimal& b) {
    const int gap = a.exponent() - b.exponent();
    if (gap == 0)
      return a.mantissa() <=> b.mantissa();
    if (gap > Decimal::maximumDigits)
      return std::strong_ordering::greater;
    if (gap < -Decimal::maximumDigits)
      return std::strong_ordering::less;
    const Uint256 aAligned = wide::multiply(
        a.mantissa(), wide::powersOfTen128[static_cast<std::size_t>(std::max(gap, 0))]);
    const Uint256 bAligned = wide::multiply(
        b.mantissa(), wide::powersOfTen128[static_cast<std::size_t>(std::max(-gap, 0))]);
    if (aAligned == bAligned)
      return std::strong_ordering::equal;
    return wide::lessThan(aAligned, bAligned) ? std::strong_ordering::less
                                              : std::strong_ordering::greater;
  };
  return left.sign() == Sign::plus ? magnitude(left, right) : magnitude(right, left);
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
  Uint128 kept = value.mantissa() / divisor;
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
