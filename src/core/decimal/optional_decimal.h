// A decimal that may be absent, in the eight bytes of a word.
#pragma once

#include <concepts>
#include <cstdint>
#include <optional>
#include <ostream>
#include <utility>

#include "core/decimal/decimal.h"

namespace corvane {

/// What std::optional<Decimal> is, in a quarter of its room: for records of which there are very
/// many. It turns into one and is made from one wherever that is asked for, and holds every
/// Decimal.
///
/// A number with a mantissa of up to 16 digits is kept in place; any other is allocated. Values are
/// handed out by value. A plain value: safe on any thread as long as nobody changes it meanwhile.
class OptionalDecimal {
 public:
  OptionalDecimal() = default;
  OptionalDecimal(std::nullopt_t /*none*/) {}  // NOLINT(google-explicit-constructor): as optional
  OptionalDecimal(const Decimal& value)        // NOLINT(google-explicit-constructor)
      : word_(isNarrow(value) ? narrow(value) : allocated(value)) {}
  OptionalDecimal(const std::optional<Decimal>& value)  // NOLINT(google-explicit-constructor)
      : OptionalDecimal(value ? OptionalDecimal(*value) : OptionalDecimal()) {}
  template <std::integral Integer>
  requires(!std::same_as<Integer, bool>) OptionalDecimal(
      Integer value)  // NOLINT(google-explicit-constructor): literals read as numbers
      : OptionalDecimal(Decimal(value)) {}

  OptionalDecimal(const OptionalDecimal& other)
      : word_(other.isWide() ? allocated(other.wide()) : other.word_) {}
  OptionalDecimal(OptionalDecimal&& other) noexcept : word_(std::exchange(other.word_, none)) {}
  OptionalDecimal& operator=(OptionalDecimal other) noexcept {
    std::swap(word_, other.word_);
    return *this;
  }
  ~OptionalDecimal() {
    if (isWide()) {
      release();
    }
  }

  [[nodiscard]] bool has_value() const { return word_ != none; }
  explicit operator bool() const { return has_value(); }
  void reset() { *this = OptionalDecimal(); }

  /// The value, which is there.
  [[nodiscard]] Decimal operator*() const;
  /// Throws std::bad_optional_access where there is none.
  [[nodiscard]] Decimal value() const {
    return has_value() ? **this : throw std::bad_optional_access();
  }
  [[nodiscard]] Decimal value_or(const Decimal& other) const {
    return has_value() ? **this : other;
  }
  operator std::optional<Decimal>() const {  // NOLINT(google-explicit-constructor): as optional
    return has_value() ? std::optional(**this) : std::nullopt;
  }

  struct Arrow {
    Decimal value;
    const Decimal* operator->() const { return &value; }
  };
  [[nodiscard]] Arrow operator->() const { return {**this}; }

  // One number has one word, since decimals are compact.
  friend bool operator==(const OptionalDecimal& left, const OptionalDecimal& right) {
    return left.word_ == right.word_ ||
           (left.isWide() && right.isWide() && left.wide() == right.wide());
  }
  friend bool operator==(const OptionalDecimal& left, std::nullopt_t) { return !left; }
  friend bool operator==(const OptionalDecimal& left, const Decimal& right) {
    return left && *left == right;
  }
  friend bool operator==(const OptionalDecimal& left, const std::optional<Decimal>& right) {
    return right ? left == *right : !left;
  }
  template <std::integral Integer>
  friend bool operator==(const OptionalDecimal& left, Integer right) {
    return left == Decimal(right);
  }

  /// The number, or "none".
  friend std::ostream& operator<<(std::ostream& out, const OptionalDecimal& value);

 private:
  // From the lowest bit: 1, so that it is no address; 8 bits of the exponent; the sign; the
  // mantissa. Anything else but 0 is the address of a Decimal.
  using Word = std::uint64_t;
  static constexpr Word none = 0;
  static constexpr int signShift = 9;
  static constexpr int mantissaShift = 10;
  static constexpr int mantissaBits = 64 - mantissaShift;

  static bool isNarrow(const Decimal& value) {
    return (value.high_ | value.low_ >> mantissaBits) == 0 && value.flags_ != Decimal::notANumber;
  }
  static Word narrow(const Decimal& value) {
    return value.low_ << mantissaShift | Word{value.flags_} << signShift |
           Word{static_cast<std::uint8_t>(value.exponent_)} << 1 | 1;
  }
  [[nodiscard]] static Word allocated(const Decimal& value);
  void release() noexcept;

  [[nodiscard]] bool isWide() const { return word_ != none && (word_ & 1) == 0; }
  [[nodiscard]] const Decimal& wide() const { return *reinterpret_cast<const Decimal*>(word_); }

  Word word_ = none;
};

static_assert(sizeof(OptionalDecimal) == 8);

inline Decimal OptionalDecimal::operator*() const {
  if (isWide()) {
    return wide();
  }
  return {Decimal::Mantissa{word_ >> mantissaShift}, static_cast<std::int8_t>(word_ >> 1),
          (word_ >> signShift & 1) == 0 ? Decimal::positive : Decimal::negative};
}

}  // namespace corvane
