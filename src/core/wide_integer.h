// Unsigned integers of 128 and 256 bits for the inside of the decimal: products, aligned sums and
// the dividends of exact division before they are rounded.
#pragma once

#include <array>
#include <bit>
#include <cassert>
#include <cstdint>

namespace corvane::wide {

__extension__ using Uint128 = unsigned __int128;

/// Four words, the lowest first.
struct Uint256 {
  std::array<std::uint64_t, 4> words{};

  constexpr Uint256() = default;
  constexpr Uint256(Uint128 value)  // NOLINT(google-explicit-constructor): widens without loss
      : words{static_cast<std::uint64_t>(value), static_cast<std::uint64_t>(value >> 64), 0, 0} {}

  [[nodiscard]] constexpr bool fits128() const { return (words[2] | words[3]) == 0; }
  [[nodiscard]] constexpr Uint128 low128() const { return Uint128{words[1]} << 64 | words[0]; }
  [[nodiscard]] constexpr bool isZero() const {
    return (words[0] | words[1] | words[2] | words[3]) == 0;
  }
  friend constexpr bool operator==(const Uint256&, const Uint256&) = default;
};

constexpr bool lessThan(const Uint256& left, const Uint256& right) {
  for (int i = 3; i >= 0; --i) {
    const auto index = static_cast<std::size_t>(i);
    if (left.words[index] != right.words[index])
      return left.words[index] < right.words[index];
  }
  return false;
}

constexpr int bitWidth(std::uint64_t value) {
  return static_cast<int>(std::bit_width(value));
}

constexpr int bitWidth(const Uint256& value) {
  for (int i = 3; i > 0; --i) {
    const std::uint64_t word = value.words[static_cast<std::size_t>(i)];
    if (word != 0)
      return 64 * i + bitWidth(word);
  }
  return bitWidth(value.words[0]);
}

/// Sum and difference; the caller knows that they stay in range.
constexpr Uint256 add(const Uint256& left, const Uint256& right) {
  Uint256 sum;
  std::uint64_t carry = 0;
  for (std::size_t i = 0; i < 4; ++i) {
    const Uint128 word = Uint128{left.words[i]} + right.words[i] + carry;
    sum.words[i] = static_cast<std::uint64_t>(word);
    carry = static_cast<std::uint64_t>(word >> 64);
  }
  assert(carry == 0);
  return sum;
}

constexpr Uint256 subtract(const Uint256& left, const Uint256& right) {
  Uint256 difference;
  std::uint64_t borrow = 0;
  for (std::size_t i = 0; i < 4; ++i) {
    const Uint128 word = Uint128{left.words[i]} - right.words[i] - borrow;
    difference.words[i] = static_cast<std::uint64_t>(word);
    borrow = static_cast<std::uint64_t>(word >> 64) & 1;
  }
  assert(borrow == 0);
  return difference;
}

constexpr Uint256 multiply(Uint128 left, Uint128 right) {
  const auto leftLow = static_cast<std::uint64_t>(left);
  const auto leftHigh = static_cast<std::uint64_t>(left >> 64);
  const auto rightLow = static_cast<std::uint64_t>(right);
  const auto rightHigh = static_cast<std::uint64_t>(right >> 64);
  const Uint128 low = Uint128{leftLow} * rightLow;
  const Uint128 middle = Uint128{leftLow} * rightHigh + static_cast<std::uint64_t>(low >> 64);
  const Uint128 otherMiddle = Uint128{leftHigh} * rightLow + static_cast<std::uint64_t>(middle);
  const Uint128 high = Uint128{leftHigh} * rightHigh + static_cast<std::uint64_t>(middle >> 64) +
                       static_cast<std::uint64_t>(otherMiddle >> 64);
  Uint256 product;
  product.words = {static_cast<std::uint64_t>(low), static_cast<std::uint64_t>(otherMiddle),
                   static_cast<std::uint64_t>(high), static_cast<std::uint64_t>(high >> 64)};
  return product;
}

/// The product, which the caller knows to stay in range.
constexpr Uint256 multiply(const Uint256& left, std::uint64_t right) {
  Uint256 product;
  std::uint64_t carry = 0;
  for (std::size_t i = 0; i < 4; ++i) {
    const Uint128 word = Uint128{left.words[i]} * right + carry;
    product.words[i] = static_cast<std::uint64_t>(word);
    carry = static_cast<std::uint64_t>(word >> 64);
  }
  assert(carry == 0);
  return product;
}

/// Divides `value` in place and returns the remainder.
constexpr std::uint64_t divideInPlace(Uint256& value, std::uint64_t divisor) {
  std::uint64_t remainder = 0;
  for (std::size_t i = 4; i-- > 0;) {
    const Uint128 word = Uint128{remainder} << 64 | value.words[i];
    value.words[i] = static_cast<std::uint64_t>(word / divisor);
    remainder = static_cast<std::uint64_t>(word % divisor);
  }
  return remainder;
}

struct Division {
  Uint256 quotient;
  Uint128 remainder = 0;
};

/// Schoolbook division in words (Knuth, volume 2, algorithm D).
constexpr Division divide(const Uint256& dividend, Uint128 divisor) {
  assert(divisor != 0);
  Division result;
  if (divisor >> 64 == 0) {
    result.quotient = dividend;
    result.remainder = divideInPlace(result.quotient, static_cast<std::uint64_t>(divisor));
    return result;
  }
  const int shift = 64 - bitWidth(static_cast<std::uint64_t>(divisor >> 64));
  divisor <<= shift;
  const auto divisorHigh = static_cast<std::uint64_t>(divisor >> 64);
  const auto divisorLow = static_cast<std::uint64_t>(divisor);
  std::array<std::uint64_t, 5> rest{};
  for (std::size_t i = 0; i < 4; ++i)
    rest[i] = dividend.words[i];
  if (shift != 0) {
    rest[4] = rest[3] >> (64 - shift);
    for (std::size_t i = 3; i > 0; --i)
      rest[i] = rest[i] << shift | rest[i - 1] >> (64 - shift);
    rest[0] <<= shift;
  }
  for (std::size_t i = 3; i-- > 0;) {
    // The three words rest[i + 2 .. i] hold less than divisor * 2^64.
    const Uint128 top = Uint128{rest[i + 2]} << 64 | rest[i + 1];
    std::uint64_t digit = ~std::uint64_t{0};
    Uint128 left = 0;
    bool exceeds = false;
    if (rest[i + 2] >= divisorHigh) {
      left = top - Uint128{digit} * divisorHigh;
    } else {
      digit = static_cast<std::uint64_t>(top / divisorHigh);
      left = top % divisorHigh;
    }
    exceeds = left >> 64 == 0 && Uint128{digit} * divisorLow > (left << 64 | rest[i]);
    while (exceeds) {
      --digit;
      left += divisorHigh;
      exceeds = left >> 64 == 0 && Uint128{digit} * divisorLow > (left << 64 | rest[i]);
    }
    const Uint128 remainder = (left << 64 | rest[i]) - Uint128{digit} * divisorLow;
    rest[i + 2] = 0;
    rest[i + 1] = static_cast<std::uint64_t>(remainder >> 64);
    rest[i] = static_cast<std::uint64_t>(remainder);
    result.quotient.words[i] = digit;
  }
  result.remainder = (Uint128{rest[1]} << 64 | rest[0]) >> shift;
  return result;
}

/// 10^0 to 10^19, the powers that fit 64 bits.
inline constexpr auto powersOfTen64 = [] {
  std::array<std::uint64_t, 20> powers{1};
  for (std::size_t i = 1; i < powers.size(); ++i)
    powers[i] = powers[i - 1] * 10;
  return powers;
}();

/// 10^0 to 10^38, the powers that fit 128 bits.
inline constexpr auto powersOfTen128 = [] {
  std::array<Uint128, 39> powers{1};
  for (std::size_t i = 1; i < powers.size(); ++i)
    powers[i] = powers[i - 1] * 10;
  return powers;
}();

/// 10^0 to 10^77, the powers that fit 256 bits.
inline constexpr auto powersOfTen256 = [] {
  std::array<Uint256, 78> powers{Uint256{1}};
  for (std::size_t i = 1; i < powers.size(); ++i)
    powers[i] = multiply(powers[i - 1], 10);
  return powers;
}();

/// The number of decimal digits: 1 for 9, 2 for 10, 0 for 0.
constexpr int digitCount(const Uint256& value) {
  // 78913 / 2^18 is log10(2) to six places, which suffices up to 256 bits.
  const int atLeast = bitWidth(value) * 78913 >> 18;
  return atLeast + (lessThan(value, powersOfTen256[static_cast<std::size_t>(atLeast)]) ? 0 : 1);
}

}  // namespace corvane::wide
