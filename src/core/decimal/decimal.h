// The exact base-ten number of all money, shares, prices and rates.
//
// The rules are those of the platform decimal that the users' records were always kept in: 38
// digits, an 8-bit exponent, compact values, one NaN. Binary floating point never holds an amount.
#pragma once

#include <compare>
#include <cstdint>
#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <type_traits>

namespace corvane {

/// How a value is brought to fewer digits. The codes are those of the platform's number classes.
enum class RoundingMode {
  plain = 0,   ///< nearest; a tie goes away from zero
  down = 1,    ///< the further digits are dropped: towards zero
  bankers = 3  ///< nearest; a tie goes to the even neighbour
};

enum class Sign { plus, minus };

/// An exact base-ten number: sign, 128-bit mantissa, power of ten from -128 to 127.
///
/// Always compact: trailing zeros of the mantissa live in the exponent as far as it reaches,
/// so 10.50 and 10.5 are the same bits. There is no negative zero. Never allocates except for text,
/// never throws. A plain value, safe on any thread.
///
/// Arithmetic and reading give the exact result where mantissa and exponent can hold it, be it of
/// 38 digits or of the 39 that still fit. Every other result is rounded once, from its exact value,
/// with RoundingMode::plain: to 38 digits, or to whole multiples of 10^-128 where 38 digits would
/// reach below them (so what is less than half of 10^-128 becomes 0), or of 10^127 where they would
/// end above that. A result that even so exceeds greatestFiniteMagnitude() is nan(), as are a
/// division by zero and every operation with a NaN.
class Decimal {
 public:
  __extension__ using Mantissa = unsigned __int128;

  static constexpr int minimumExponent = -128;
  static constexpr int maximumExponent = 127;
  /// Every number of this many digits fits the mantissa.
  static constexpr int maximumDigits = 38;

  constexpr Decimal() = default;
  Decimal(int value);            // NOLINT(google-explicit-constructor): literals read as numbers
  Decimal(long value);           // NOLINT(google-explicit-constructor)
  Decimal(long long value);      // NOLINT(google-explicit-constructor)
  Decimal(unsigned value);       // NOLINT(google-explicit-constructor)
  Decimal(unsigned long value);  // NOLINT(google-explicit-constructor)
  Decimal(unsigned long long value);  // NOLINT(google-explicit-constructor)

  /// The shortest decimal number that reads back as `value`: at most 17 digits. nan() for a NaN,
  /// for an infinity, and beyond the range; 0 below it. For constants and ratios, never for an
  /// amount.
  [[nodiscard]] static Decimal fromDouble(double value);

  /// `significand` × 10^`exponent` with `sign` put before it. `significand` is not negative.
  [[nodiscard]] static Decimal fromParts(Sign sign, int exponent, const Decimal& significand);

  /// The value of a mantissa and a power of ten, made compact and brought into range.
  [[nodiscard]] static Decimal fromMantissa(Sign sign, Mantissa mantissa, int exponent);

  /// Reads the number that `text` begins with: optional sign, digits with at most one point,
  /// optional exponent ("-12.50", ".5", "1e-3"). What follows it is ignored; blanks in front are
  /// skipped. No value when the text does not begin with a number. Digits beyond the precision are
  /// rounded with RoundingMode::plain; a number beyond the range reads as NaN.
  [[nodiscard]] static std::optional<Decimal> fromString(std::string_view text);

  /// As fromString, but no value unless the whole of `text` is the number.
  [[nodiscard]] static std::optional<Decimal> fromWholeString(std::string_view text);

  [[nodiscard]] static constexpr Decimal nan() { return {0, 0, notANumber}; }
  /// (2^128 - 1) × 10^127
  [[nodiscard]] static constexpr Decimal greatestFiniteMagnitude() {
    return {~Mantissa{0}, maximumExponent, positive};
  }
  /// 10^-128
  [[nodiscard]] static constexpr Decimal leastNonzeroMagnitude() {
    return {1, minimumExponent, positive};
  }

  [[nodiscard]] bool isNaN() const { return flags_ == notANumber; }
  [[nodiscard]] bool isZero() const { return (low_ | high_) == 0 && !isNaN(); }
  [[nodiscard]] Sign sign() const {  ///< plus for zero and NaN
    return flags_ == negative ? Sign::minus : Sign::plus;
  }

  /// The power of ten of the compact value: 0 for zero, -2 for 1.25, 2 for 100.
  [[nodiscard]] int exponent() const { return exponent_; }
  [[nodiscard]] Mantissa mantissa() const { return Mantissa{high_} << 64 | low_; }
  /// The mantissa as a number that is not negative: its exponent is 0 before it is made compact.
  [[nodiscard]] Decimal significand() const;

  friend Decimal operator+(const Decimal& left, const Decimal& right);
  friend Decimal operator-(const Decimal& left, const Decimal& right);
  friend Decimal operator*(const Decimal& left, const Decimal& right);
  friend Decimal operator/(const Decimal& left, const Decimal& right);
  Decimal operator-() const;
  Decimal& operator+=(const Decimal& other) { return *this = *this + other; }
  Decimal& operator-=(const Decimal& other) { return *this = *this - other; }

  /// Numeric and total: NaN equals NaN and orders below every number.
  friend bool operator==(const Decimal& left, const Decimal& right) = default;
  friend bool operator<(const Decimal& left, const Decimal& right);
  friend bool operator>(const Decimal& left, const Decimal& right);
  friend bool operator<=(const Decimal& left, const Decimal& right);
  friend bool operator>=(const Decimal& left, const Decimal& right);
  friend std::strong_ordering operator<=>(const Decimal& left, const Decimal& right);

  /// Plain digits with a point, no grouping, no power of ten: "-1234.5", "0", "NaN".
  [[nodiscard]] std::string description() const;

  /// The value without its fraction, held to the ends of the type; 0 for NaN.
  [[nodiscard]] std::int64_t integerValue() const;
  /// The nearest double; NaN for NaN.
  [[nodiscard]] double doubleValue() const;

  friend std::ostream& operator<<(std::ostream& out, const Decimal& value);

 private:
  friend class OptionalDecimal;
  enum Flags : std::uint8_t { positive = 0, negative = 1, notANumber = 2 };

  constexpr Decimal(Mantissa mantissa, int exponent, Flags flags)
      : low_(static_cast<std::uint64_t>(mantissa)),
        high_(static_cast<std::uint64_t>(mantissa >> 64)),
        exponent_(static_cast<std::int8_t>(exponent)),
        flags_(flags) {}

  // For every operand; the operators first try what decimal_small.h does in a few instructions.
  static Decimal sum(const Decimal& left, const Decimal& right);
  static Decimal product(const Decimal& left, const Decimal& right);
  static bool hasLessMagnitude(const Decimal& left, const Decimal& right);

  /// Its sign and the place of its first digit in one number. Numbers whose coarse orders are more
  /// than 1 apart compare like them.
  [[nodiscard]] int coarseOrder() const;
  [[nodiscard]] static int orderOfLong(const Decimal& left, const Decimal& right);

  static bool areSmall(const Decimal& left, const Decimal& right);
  static Decimal fromWord(std::int64_t value, int exponent);
  [[nodiscard]] std::int64_t signedMantissa() const;

  // Zero has exponent 0 and NaN is all zero but for its flag, so equal values are equal bits.
  std::uint64_t low_ = 0;
  std::uint64_t high_ = 0;
  std::int8_t exponent_ = 0;
  Flags flags_ = positive;
};

static_assert(sizeof(Decimal) == 24 && std::is_trivially_copyable_v<Decimal>);

[[nodiscard]] Decimal abs(const Decimal& value);

/// `value` with at most `scale` digits after the point. A value that has no more is returned as it
/// is, so 1.2 to two digits stays 1.2. A negative scale rounds to tens, hundreds and so on;
/// only there may a result lie beyond the range, which gives nan().
[[nodiscard]] Decimal rounded(const Decimal& value, int scale, RoundingMode mode);

}  // namespace corvane

template <>
struct std::hash<corvane::Decimal> {
  std::size_t operator()(const corvane::Decimal& value) const noexcept;
};

#include "core/decimal/decimal_small.h"  // IWYU pragma: export
