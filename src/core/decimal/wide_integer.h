// Unsigned integers of 128 and 256 bits for the inside of the decimal: products, aligned sums and
// the dividends of exact division before they are rounded.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace corvane::wide {

__extension__ using Uint128 = unsigned __int128;

/// Four words, the lowest first.
struct Uint256 {
  std::array<std::uint64_t, 4> words{};

  constexpr Uint256() = default;
  constexpr Uint256(Uint128 value)  // NOLINT(google-explicit-constructor): widens without loss
      : Uint256(0, value) {}
  constexpr Uint256(Uint128 high, Uint128 low)
      : words{static_cast<std::uint64_t>(low), static_cast<std::uint64_t>(low >> 64),
              static_cast<std::uint64_t>(high), static_cast<std::uint64_t>(high >> 64)} {}

  [[nodiscard]] constexpr bool fits128() const { return (words[2] | words[3]) == 0; }
  [[nodiscard]] constexpr Uint128 low128() const { return Uint128{words[1]} << 64 | words[0]; }
  [[nodiscard]] constexpr Uint128 high128() const { return Uint128{words[3]} << 64 | words[2]; }
  [[nodiscard]] constexpr bool isZero() const {
    return (words[0] | words[1] | words[2] | words[3]) == 0;
  }
  friend constexpr bool operator==(const Uint256&, const Uint256&) = default;
};

constexpr bool lessThan(const Uint256& left, const Uint256& right) {
  const Uint128 leftHigh = left.high128();
  const Uint128 rightHigh = right.high128();
  return leftHigh != rightHigh ? leftHigh < rightHigh : left.low128() < right.low128();
}

constexpr int bitWidth(std::uint64_t value) {
  return static_cast<int>(std::bit_width(value));
}

constexpr int bitWidth(Uint128 value) {
  const auto high = static_cast<std::uint64_t>(value >> 64);
  return high != 0 ? 64 + bitWidth(high) : bitWidth(static_cast<std::uint64_t>(value));
}

constexpr int bitWidth(const Uint256& value) {
  const Uint128 high = value.high128();
  return high != 0 ? 128 + bitWidth(high) : bitWidth(value.low128());
}

/// Adds one word in place.
constexpr void addWord(Uint256& value, std::uint64_t word) {
  for (std::size_t i = 0; i < 4; ++i) {
    value.words[i] += word;
    if (value.words[i] >= word)
      return;
    word = 1;
  }
}

/// Sum and difference; the caller knows that they stay in range.
constexpr Uint256 add(const Uint256& left, const Uint256& right) {
  const Uint128 low = left.low128() + right.low128();
  const Uint128 carry = low < right.low128() ? 1 : 0;
  return {left.high128() + right.high128() + carry, low};
}

constexpr Uint256 subtract(const Uint256& left, const Uint256& right) {
  const Uint128 borrow = left.low128() < right.low128() ? 1 : 0;
  return {left.high128() - right.high128() - borrow, left.low128() - right.low128()};
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

/// Multiplies `value` in place; the caller knows that the product stays in range.
constexpr void multiplyInPlace(Uint256& value, std::uint64_t factor) {
  std::uint64_t carry = 0;
  for (auto& word : value.words) {
    const Uint128 product = Uint128{word} * factor + carry;
    word = static_cast<std::uint64_t>(product);
    carry = static_cast<std::uint64_t>(product >> 64);
  }
  assert(carry == 0);
}

/// The product, which the caller knows to stay in range.
constexpr Uint256 multiply(const Uint256& left, Uint128 right) {
  Uint256 product = left;
  multiplyInPlace(product, static_cast<std::uint64_t>(right));
  const auto high = static_cast<std::uint64_t>(right >> 64);
  std::uint64_t carry = 0;
  for (std::size_t i = 0; high != 0 && i < 3; ++i) {
    const Uint128 word = Uint128{left.words[i]} * high + product.words[i + 1] + carry;
    product.words[i + 1] = static_cast<std::uint64_t>(word);
    carry = static_cast<std::uint64_t>(word >> 64);
  }
  assert(carry == 0 && (high == 0 || left.words[3] == 0));
  return product;
}

/// A divisor made ready for division by multiplication with its reciprocal (Möller and Granlund,
/// "Improved division by invariant integers", 2011).
class Divisor {
 public:
  constexpr explicit Divisor(std::uint64_t value)
      : shift_(std::countl_zero(value)),
        normalized_(value << shift_),
        reciprocal_(static_cast<std::uint64_t>(~Uint128{0} / normalized_)) {}

  /// Divides `value` in place and returns the remainder.
  constexpr std::uint64_t divideInPlace(Uint256& value) const {
    std::size_t i = 4;
    while (i > 0 && value.words[i - 1] == 0)
      --i;
    if (i == 0)
      return 0;
    std::uint64_t remainder = topBits(value.words[i - 1]);
    while (i-- > 0) {
      const std::uint64_t low = value.words[i] << shift_;
      value.words[i] = step(remainder, i > 0 ? low | topBits(value.words[i - 1]) : low);
    }
    return remainder >> shift_;
  }

  /// The quotient of `remainder`, `low` and the divisor, all already shifted; `remainder` is less
  /// than the divisor before and after.
  constexpr std::uint64_t step(std::uint64_t& remainder, std::uint64_t low) const {
    const Uint128 estimate = Uint128{reciprocal_} * remainder + low;
    auto quotient = static_cast<std::uint64_t>(estimate >> 64) + remainder + 1;
    remainder = low - quotient * normalized_;
    // Either way is as likely, so this is arithmetic and not a branch.
    const std::uint64_t isTooLarge = remainder > static_cast<std::uint64_t>(estimate) ? 1 : 0;
    quotient -= isTooLarge;
    remainder += normalized_ & (0 - isTooLarge);
    if (remainder >= normalized_) [[unlikely]] {
      ++quotient;
      remainder -= normalized_;
    }
    return quotient;
  }

 private:
  /// What the shift moves into the next higher word.
  [[nodiscard]] constexpr std::uint64_t topBits(std::uint64_t word) const {
    return word >> 1 >> (63 - shift_);
  }

  int shift_;
  std::uint64_t normalized_;
  std::uint64_t reciprocal_;
};

/// Divides `value` in place and returns the remainder (Knuth, volume 2, algorithm D).
constexpr Uint128 divideInPlace(Uint256& value, Uint128 divisor) {
  assert(divisor != 0);
  if (divisor >> 64 == 0) {
    return Divisor(static_cast<std::uint64_t>(divisor)).divideInPlace(value);
  }
  const int shift = std::countl_zero(static_cast<std::uint64_t>(divisor >> 64));
  divisor <<= shift;
  const auto high = static_cast<std::uint64_t>(divisor >> 64);
  const auto low = static_cast<std::uint64_t>(divisor);
  const Divisor byHigh(high);

  auto& words = value.words;
  const auto shifted = [&](std::size_t i) {
    return words[i] << shift | (i > 0 ? words[i - 1] >> 1 >> (63 - shift) : 0);
  };
  Uint128 rest = Uint128{words[3] >> 1 >> (63 - shift)} << 64 | shifted(3);
  words[3] = 0;
  for (std::size_t i = 3; i-- > 0;) {
    // One more word of the dividend: the digit is estimated by the high words alone, and is then
    // at most two too large.
    const std::uint64_t next = shifted(i);
    std::uint64_t digit = ~std::uint64_t{0};
    Uint128 left = rest - Uint128{digit} * high;
    if (static_cast<std::uint64_t>(rest >> 64) < high) {
      auto remainder = static_cast<std::uint64_t>(rest >> 64);
      digit = byHigh.step(remainder, static_cast<std::uint64_t>(rest));
      left = remainder;
    }
    while (left >> 64 == 0 && Uint128{digit} * low > (left << 64 | next)) {
      --digit;
      left += high;
    }
    rest = (left << 64 | next) - Uint128{digit} * low;
    words[i] = digit;
  }
  return rest >> shift;
}

/// 10^0 to 10^19, the powers that fit 64 bits.
inline constexpr auto powersOfTen64 = [] {
  std::array<std::uint64_t, 20> powers{1};
  for (std::size_t i = 1; i < powers.size(); ++i)
    powers[i] = powers[i - 1] * 10;
  return powers;
}();

/// The same, ready to divide by.
inline constexpr auto tenDivisors = []<std::size_t... exponent>(std::index_sequence<exponent...>) {
  return std::array{Divisor(powersOfTen64[exponent])...};
}
(std::make_index_sequence<20>());

/// 10^0 to 10^38, the powers that fit 128 bits.
inline constexpr auto powersOfTen128 = [] {
  std::array<Uint128, 39> powers{1};
  for (std::size_t i = 1; i < powers.size(); ++i)
    powers[i] = powers[i - 1] * 10;
  return powers;
}();

/// A divisor of up to 128 bits, not a power of two, for quotients below 2^127: one multiplication
/// by the reciprocal finds them.
class WideDivisor {
 public:
  constexpr explicit WideDivisor(Uint128 value) : divisor_(value), bits_(bitWidth(value)) {
    Uint256 power;
    power.words[static_cast<std::size_t>((127 + bits_) / 64)] = std::uint64_t{1}
                                                                << (127 + bits_) % 64;
    wide::divideInPlace(power, value);
    reciprocal_ = power.low128();
  }

  [[nodiscard]] constexpr bool canDivide(const Uint256& value) const {
    return bitWidth(value) - bits_ <= 127;
  }

  /// Divides `value` in place and returns the remainder.
  constexpr Uint128 divideInPlace(Uint128& value) const {
    const Uint128 quotient = multiply(value, reciprocal_).high128() >> (bits_ - 1);
    return settle(quotient, value, value);
  }
  constexpr Uint128 divideInPlace(Uint256& value) const {
    assert(canDivide(value));
    // The 128 leading bits times the reciprocal. What is cut off either of them, and off their
    // product, makes up less than 1 in the quotient, so the estimate is at most 2 too small.
    const int cut = std::max(bitWidth(value) - 128, 0);
    const Uint128 leading =
        cut == 128 ? value.high128() : value.low128() >> cut | value.high128() << 1 << (127 - cut);
    Uint128 quotient = multiply(leading, reciprocal_).high128() >> (bits_ - 1 - cut);
    const Uint128 remainder = settle(quotient, value.low128(), quotient);
    value = Uint256{quotient};
    return remainder;
  }

 private:
  /// Corrects an estimate of `dividend` / divisor that is at most 2 too small, and returns the
  /// remainder. Of the dividend the low half suffices.
  constexpr Uint128 settle(Uint128 estimate, Uint128 dividend, Uint128& quotient) const {
    Uint128 remainder = dividend - estimate * divisor_;
    for (int i = 0; i < 2; ++i) {
      // Arithmetic, because a branch would go either way by chance.
      const Uint128 isTooSmall = remainder >= divisor_ ? 1 : 0;
      estimate += isTooSmall;
      remainder -= divisor_ & (0 - isTooSmall);
    }
    quotient = estimate;
    return remainder;
  }

  Uint128 divisor_;
  Uint128 reciprocal_ = 0;  // 2^(127 + bits_) / divisor_
  int bits_;
};

/// 10^1 to 10^38, ready to divide by; the entry for 10^0 is not.
inline constexpr auto wideTenDivisors =
    []<std::size_t... exponent>(std::index_sequence<exponent...>) {
  return std::array{WideDivisor(powersOfTen128[exponent == 0 ? 1 : exponent])...};
}
(std::make_index_sequence<39>());

/// 10^0 to 10^77, the powers that fit 256 bits.
inline constexpr auto powersOfTen256 = [] {
  std::array<Uint256, 78> powers{Uint256{1}};
  for (std::size_t i = 1; i < powers.size(); ++i)
    powers[i] = multiply(powers[i - 1], Uint128{10});
  return powers;
}();

/// The number of decimal digits or one less.
constexpr int digitEstimate(int bits) {
  // 78913 / 2^18 is log10(2) to six places, which suffices up to 256 bits.
  return bits * 78913 >> 18;
}

/// The number of decimal digits: 1 for 9, 2 for 10, 0 for 0.
constexpr int digitCount(const Uint256& value) {
  const int estimate = digitEstimate(bitWidth(value));
  return estimate + (lessThan(value, powersOfTen256[static_cast<std::size_t>(estimate)]) ? 0 : 1);
}

/// A tenth of a multiple of ten, by the inverse of five among the words of 128 bits.
constexpr Uint128 tenthOf(Uint128 value) {
  constexpr Uint128 inverseOfFive = ~Uint128{0} / 5 * 4 + 1;
  return (value >> 1) * inverseOfFive;
}

}  // namespace corvane::wide
