// Inline arithmetic of decimals whose mantissas fit 64 bits, which nearly all money is; included by
// decimal.h. What does not fit goes on to the general operations in decimal.cpp.
#pragma once

#include <array>
#include <bit>
#include <limits>

#include "core/decimal/decimal.h"

namespace corvane {
namespace small {

__extension__ using Int128 = __int128;

/// 10^0 to 10^18, the powers that a signed word holds.
inline constexpr auto powersOfTen = [] {
  std::array<std::int64_t, 19> powers{1};
  for (std::size_t i = 1; i < powers.size(); ++i)
    powers[i] = powers[i - 1] * 10;
  return powers;
}();

/// The power of ten that brings a number `digits` places down; 1 for none and for places up.
/// `digits` is less than the size of the table.
inline std::int64_t raising(int digits) {
  return powersOfTen[static_cast<std::size_t>(digits > 0 ? digits : 0)];
}

/// Whether operands that are `gap` places apart are near enough for the table.
inline bool isNear(int gap) {
  constexpr int reach = static_cast<int>(powersOfTen.size()) - 1;
  return gap >= -reach && gap <= reach;
}

/// Adds two mantissas of which the left one stands `gap` places higher; false where a word does not
/// hold what that takes.
inline bool addAligned(std::int64_t left, std::int64_t right, int gap, std::int64_t& sum) {
  return isNear(gap) && !__builtin_mul_overflow(left, raising(gap), &left) &&
         !__builtin_mul_overflow(right, raising(-gap), &right) &&
         !__builtin_add_overflow(left, right, &sum);
}

// An odd multiplier takes the multiples of 5, and no other words, to the lowest fifth of all words:
// the inverse of 5 modulo 2^64. It divides those multiples at the same time.
inline constexpr std::uint64_t inverseOfFive = 0xCCCC'CCCC'CCCC'CCCD;
inline constexpr std::uint64_t fifthOfAll = 0x3333'3333'3333'3333;

inline bool isMultipleOfTen(std::uint64_t value) {
  return std::rotr(value * inverseOfFive, 1) <= fifthOfAll / 2;
}

inline bool isMultipleOfTen(Decimal::Mantissa value) {
  // 2^64 leaves 1 when divided by 5, so the words may be added.
  const auto low = static_cast<std::uint64_t>(value);
  auto folded = low + static_cast<std::uint64_t>(value >> 64);
  folded += folded < low ? 1 : 0;
  return (static_cast<unsigned>(low & 1) |
          static_cast<unsigned>(folded * inverseOfFive > fifthOfAll)) == 0;
}

}  // namespace small

/// Two numbers with mantissas below 2^63.
inline bool Decimal::areSmall(const Decimal& left, const Decimal& right) {
  const auto flags = static_cast<unsigned>(left.flags_ | right.flags_);
  return (left.high_ | right.high_ | (left.low_ | right.low_) >> 63 | flags >> 1) == 0;
}

inline std::int64_t Decimal::signedMantissa() const {
  const auto value = static_cast<std::int64_t>(low_);
  return flags_ == negative ? -value : value;
}

inline Decimal Decimal::operator-() const {
  Decimal result = *this;
  if (flags_ != notANumber && (low_ | high_) != 0) {
    result.flags_ = flags_ == negative ? positive : negative;
  }
  return result;
}

inline Decimal Decimal::fromWord(std::int64_t value, int exponent) {
  const auto bits = static_cast<std::uint64_t>(value);
  const std::uint64_t magnitude = value < 0 ? 0 - bits : bits;
  if (small::isMultipleOfTen(magnitude)) [[unlikely]] {
    return fromMantissa(value < 0 ? Sign::minus : Sign::plus, magnitude, exponent);
  }
  return Decimal(magnitude, exponent, value < 0 ? negative : positive);
}

inline Decimal operator+(const Decimal& left, const Decimal& right) {
  std::int64_t sum = 0;
  const int gap = left.exponent_ - right.exponent_;
  if (Decimal::areSmall(left, right) &&
      small::addAligned(left.signedMantissa(), right.signedMantissa(), gap, sum)) {
    return Decimal::fromWord(sum, gap < 0 ? left.exponent_ : right.exponent_);
  }
  return Decimal::sum(left, right);
}

inline Decimal operator-(const Decimal& left, const Decimal& right) {
  std::int64_t difference = 0;
  const int gap = left.exponent_ - right.exponent_;
  if (Decimal::areSmall(left, right) &&
      small::addAligned(left.signedMantissa(), -right.signedMantissa(), gap, difference)) {
    return Decimal::fromWord(difference, gap < 0 ? left.exponent_ : right.exponent_);
  }
  return Decimal::sum(left, -right);
}

inline Decimal operator*(const Decimal& left, const Decimal& right) {
  if (Decimal::areSmall(left, right)) {
    const Decimal::Mantissa mantissa = Decimal::Mantissa{left.low_} * right.low_;
    const int exponent = left.exponent_ + right.exponent_;
    if (!small::isMultipleOfTen(mantissa) && exponent >= Decimal::minimumExponent &&
        exponent <= Decimal::maximumExponent) {
      return Decimal(mantissa, exponent, static_cast<Decimal::Flags>(left.flags_ ^ right.flags_));
    }
  }
  return Decimal::product(left, right);
}

inline int Decimal::coarseOrder() const {
  if ((low_ | high_) == 0) [[unlikely]] {
    return flags_ == notANumber ? std::numeric_limits<int>::min() / 2 : 0;
  }
  const int bits = high_ != 0 ? 128 - std::countl_zero(high_) : 64 - std::countl_zero(low_);
  // 1233 / 4096 is log10(2), near enough to be no more than one digit short at 128 bits.
  constexpr int aboveAnyExponent = 512;
  const int leading = aboveAnyExponent + exponent_ + (bits * 1233 >> 12);
  return flags_ == negative ? -leading : leading;
}

/// The order of two numbers of more than 64 bits by their signs and leading places; 0 where these
/// do not decide, or where an operand is shorter.
inline int Decimal::orderOfLong(const Decimal& left, const Decimal& right) {
  if (left.high_ == 0 || right.high_ == 0) {
    return 0;
  }
  if (left.flags_ != right.flags_) {
    return left.flags_ == negative ? -1 : 1;
  }
  // By their leading bits alone the operands are more than `places` - 0.31 and less than
  // `places` + 1.31 decimal places apart.
  const int places = left.exponent_ - right.exponent_ +
                     ((std::countl_zero(right.high_) - std::countl_zero(left.high_)) * 1233 >> 12);
  if (places > 0 || places < -1) {
    return (places > 0) == (left.flags_ == positive) ? 1 : -1;
  }
  return 0;
}

inline bool operator<(const Decimal& left, const Decimal& right) {
  if (const int order = Decimal::orderOfLong(left, right)) {
    return order < 0;
  }
  const int gap = left.exponent_ - right.exponent_;
  if (Decimal::areSmall(left, right) && small::isNear(gap)) {
    return small::Int128{left.signedMantissa()} * small::raising(gap) <
           small::Int128{right.signedMantissa()} * small::raising(-gap);
  }
  const int coarse = left.coarseOrder() - right.coarseOrder();
  if (coarse > 1 || coarse < -1)
    return coarse < 0;
  return left.flags_ == Decimal::negative ? Decimal::hasLessMagnitude(right, left)
                                          : Decimal::hasLessMagnitude(left, right);
}
inline bool operator>(const Decimal& left, const Decimal& right) {
  return right < left;
}
inline bool operator<=(const Decimal& left, const Decimal& right) {
  return !(right < left);
}
inline bool operator>=(const Decimal& left, const Decimal& right) {
  return !(left < right);
}

inline std::strong_ordering operator<=>(const Decimal& left, const Decimal& right) {
  if (left == right)
    return std::strong_ordering::equal;
  return left < right ? std::strong_ordering::less : std::strong_ordering::greater;
}

}  // namespace corvane
