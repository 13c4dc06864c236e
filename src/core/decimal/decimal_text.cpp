#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <utility>

#include "core/decimal/decimal.h"
#include "core/decimal/decimal_rounding.h"

namespace corvane {
namespace {

using wide::Rest;
using wide::Uint128;
using wide::Uint256;

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}
bool isBlank(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

/// The digits of a text: the first 39 significant ones as an integer, the others as a rest.
class DigitReader {
 public:
  void read(char c) {
    const auto digit = static_cast<unsigned>(c - '0');
    if (count_ < Decimal::maximumDigits) {
      leading_ = leading_ * 10 + digit;
      if (leading_ != 0)
        ++count_;
    } else if (count_ == Decimal::maximumDigits) {
      last_ = digit;
      ++count_;
    } else {
      readRest(digit);
    }
  }

  [[nodiscard]] Decimal value(Sign sign, std::int64_t exponent) const {
    if (count_ <= Decimal::maximumDigits)
      return wide::decimalOf(sign, leading_, exponent);
    return wide::decimalOf(
        sign, wide::add(wide::multiply(Uint256{leading_}, Uint128{10}), Uint256{Uint128{last_}}),
        exponent + ignored_, rest_);
  }

 private:
  void readRest(unsigned digit) {
    if (ignored_++ == 0) {
      rest_ = wide::restOf(digit, 10U);
    } else if (digit != 0) {
      if (rest_ == Rest::zero)
        rest_ = Rest::belowHalf;
      if (rest_ == Rest::half)
        rest_ = Rest::aboveHalf;
    }
  }

  Uint128 leading_ = 0;
  unsigned last_ = 0;
  int count_ = 0;
  Rest rest_ = Rest::zero;
  std::int64_t ignored_ = 0;
};

struct Number {
  Decimal value;
  const char* end;
};

/// Reads e+12 at `at`; 0 and `at` unmoved where no exponent stands there.
std::int64_t readExponent(const char*& at, const char* end) {
  const char* next = at;
  if (next == end || (*next != 'e' && *next != 'E'))
    return 0;
  ++next;
  const bool negative = next != end && *next == '-';
  if (next != end && (*next == '-' || *next == '+'))
    ++next;
  if (next == end || !isDigit(*next))
    return 0;
  // Far beyond the length of any text, so that it outweighs all digits and cannot overflow.
  constexpr std::int64_t limit = 1'000'000'000'000'000;
  std::int64_t exponent = 0;
  for (; next != end && isDigit(*next); ++next) {
    exponent = std::min(exponent * 10 + (*next - '0'), limit);
  }
  at = next;
  return negative ? -exponent : exponent;
}

std::optional<Number> readNumber(std::string_view text) {
  const char* at = text.data();
  const char* const end = at + text.size();
  while (at != end && isBlank(*at))
    ++at;
  Sign sign = Sign::plus;
  if (at != end && (*at == '-' || *at == '+'))
    sign = *at++ == '-' ? Sign::minus : Sign::plus;

  DigitReader digits;
  const char* const whole = at;
  for (; at != end && isDigit(*at); ++at)
    digits.read(*at);
  std::int64_t digitsRead = at - whole;
  std::int64_t exponent = 0;
  if (at != end && *at == '.') {
    const char* const fraction = at + 1;
    const char* next = fraction;
    for (; next != end && isDigit(*next); ++next)
      digits.read(*next);
    exponent = fraction - next;
    digitsRead -= exponent;
    at = next;
  }
  if (digitsRead == 0)
    return std::nullopt;
  exponent += readExponent(at, end);
  return Number{digits.value(sign, exponent), at};
}

/// Writes the digits of `value` so that they end before `end`, and returns where they begin.
char* writeDigits(Uint128 value, char* end) {
  do {
    *--end = static_cast<char>('0' + static_cast<int>(value % 10));
    value /= 10;
  } while (value != 0);
  return end;
}

}  // namespace

std::optional<Decimal> Decimal::fromString(std::string_view text) {
  const auto number = readNumber(text);
  if (!number)
    return std::nullopt;
  return number->value;
}

std::optional<Decimal> Decimal::fromWholeString(std::string_view text) {
  const auto number = readNumber(text);
  if (!number || number->end != text.data() + text.size())
    return std::nullopt;
  return number->value;
}

Decimal Decimal::fromDouble(double value) {
  if (!std::isfinite(value))
    return nan();
  // Numbers of up to 15 digits have doubles of their own: one that reads back as `value`, as its
  // quotient by an exact power says, is the shortest. Prices mostly have few digits.
  constexpr double leastOf16Digits = 1e15;
  for (const auto& [places, power] : {std::pair(2, 1e2), std::pair(4, 1e4), std::pair(8, 1e8)}) {
    const double scaled = value * power;
    if (std::abs(scaled) >= leastOf16Digits)
      break;
    const auto digits = static_cast<std::int64_t>(scaled + std::copysign(0.5, scaled));
    if (static_cast<double>(digits) / power == value)
      return fromWord(digits, -places);
  }
  std::array<char, 32> text;
  const auto written =
      std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::scientific);
  return *fromString(std::string_view(text.data(), written.ptr));
}

std::string Decimal::description() const {
  if (isNaN())
    return "NaN";
  std::array<char, 40> buffer;
  const char* const end = buffer.data() + buffer.size();
  const char* const begin = writeDigits(mantissa(), buffer.data() + buffer.size());
  const auto count = static_cast<int>(end - begin);

  std::string text;
  if (sign() == Sign::minus)
    text += '-';
  const int whole = count + exponent();
  if (exponent() >= 0) {
    text.append(begin, end);
    text.append(static_cast<std::size_t>(exponent()), '0');
  } else if (whole > 0) {
    text.append(begin, begin + whole);
    text += '.';
    text.append(begin + whole, end);
  } else {
    text += "0.";
    text.append(static_cast<std::size_t>(-whole), '0');
    text.append(begin, end);
  }
  return text;
}

std::ostream& operator<<(std::ostream& out, const Decimal& value) {
  return out << value.description();
}

double Decimal::doubleValue() const {
  if (isNaN())
    return std::numeric_limits<double>::quiet_NaN();
  // A double holds both such a mantissa and such a power exactly, and rounds their quotient once.
  static constexpr double powers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                      1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                      1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
  constexpr Mantissa exactLimit = Mantissa{1} << 53;
  if (exponent() <= 0 && exponent() >= -22 && mantissa() <= exactLimit) {
    const double magnitude =
        static_cast<double>(static_cast<std::int64_t>(mantissa())) / powers[-exponent()];
    return sign() == Sign::minus ? -magnitude : magnitude;
  }
  std::array<char, 48> text;
  char* const digitsEnd = text.data() + 40;
  char* begin = writeDigits(mantissa(), digitsEnd);
  if (sign() == Sign::minus)
    *--begin = '-';
  *digitsEnd = 'e';
  const auto written = std::to_chars(digitsEnd + 1, text.data() + text.size(), exponent());
  double value = 0;
  std::from_chars(begin, written.ptr, value);
  return value;
}

}  // namespace corvane
