// Random operations compared with arithmetic on unbounded integers.
//
// The reference knows nothing of mantissas while it computes: a number is an exact fraction, and
// only the finished result is brought to the nearest number that a Decimal can hold.
// CORVANE_TEST_CASES sets how many operations are tried, CORVANE_TEST_SEED repeats a run.
#include <gtest/gtest.h>

#include <boost/multiprecision/cpp_int.hpp>
#include <cstdlib>
#include <random>
#include <string>

#include "core/decimal/decimal.h"

namespace corvane {
namespace {

using Integer = boost::multiprecision::cpp_int;

const Integer& powerOfTen(int exponent) {
  static const std::vector<Integer> powers = [] {
    std::vector<Integer> all{1};
    for (int i = 1; i <= 1200; ++i)
      all.push_back(all.back() * 10);
    return all;
  }();
  return powers.at(static_cast<std::size_t>(exponent));
}

const Integer largestMantissa = (Integer(1) << 128) - 1;

Integer integerOf(Decimal::Mantissa mantissa) {
  return Integer(static_cast<std::uint64_t>(mantissa >> 64)) << 64 |
         Integer(static_cast<std::uint64_t>(mantissa));
}

/// numerator / denominator, exactly; the denominator is positive, or 0 for NaN.
struct Fraction {
  Integer numerator;
  Integer denominator = 1;

  static Fraction of(const Decimal& value) {
    if (value.isNaN())
      return {0, 0};
    Integer mantissa = integerOf(value.mantissa());
    if (value.sign() == Sign::minus)
      mantissa = -mantissa;
    return scaled(mantissa, value.exponent());
  }
  static Fraction scaled(const Integer& mantissa, int exponent) {
    if (exponent >= 0)
      return {mantissa * powerOfTen(exponent), 1};
    return {mantissa, powerOfTen(-exponent)};
  }
};

Fraction sum(const Fraction& a, const Fraction& b) {
  return {a.numerator * b.denominator + b.numerator * a.denominator, a.denominator * b.denominator};
}
Fraction difference(const Fraction& a, const Fraction& b) {
  return {a.numerator * b.denominator - b.numerator * a.denominator, a.denominator * b.denominator};
}
Fraction product(const Fraction& a, const Fraction& b) {
  return {a.numerator * b.numerator, a.denominator * b.denominator};
}
Fraction quotient(const Fraction& a, const Fraction& b) {
  if (b.denominator == 0)
    return {0, 0};
  if (b.numerator < 0)
    return {-a.numerator * b.denominator, -b.numerator * a.denominator};
  return {a.numerator * b.denominator, b.numerator * a.denominator};
}

/// What a Decimal must look like from outside.
struct Parts {
  bool isNaN = false;
  bool isNegative = false;
  Integer mantissa;
  int exponent = 0;

  static Parts of(const Decimal& value) {
    return {value.isNaN(), value.sign() == Sign::minus, integerOf(value.mantissa()),
            value.exponent()};
  }
  static Parts nan() { return {true, false, 0, 0}; }

  /// The compact form of a whole number of 10^exponent.
  static Parts compact(bool isNegative, Integer mantissa, int exponent) {
    if (mantissa == 0)
      return {};
    for (const int step : {128, 64, 32, 16, 8, 4, 2, 1}) {
      while (exponent + step <= 127 && mantissa % powerOfTen(step) == 0) {
        mantissa /= powerOfTen(step);
        exponent += step;
      }
    }
    return {false, isNegative, mantissa, exponent};
  }

  friend bool operator==(const Parts&, const Parts&) = default;
  friend std::ostream& operator<<(std::ostream& out, const Parts& parts) {
    if (parts.isNaN)
      return out << "NaN";
    return out << (parts.isNegative ? "-" : "") << parts.mantissa << "e" << parts.exponent;
  }
};

/// The number that a Decimal must hold for `exact`.
Parts nearest(const Fraction& exact) {
  if (exact.denominator == 0)
    return Parts::nan();
  const bool isNegative = exact.numerator < 0;
  const Integer magnitude = abs(exact.numerator);

  const Integer inLeastUnits = magnitude * powerOfTen(128);
  if (inLeastUnits % exact.denominator == 0) {
    const Parts parts = Parts::compact(isNegative, inLeastUnits / exact.denominator, -128);
    if (parts.mantissa <= largestMantissa)
      return parts;
  }
  // 38 digits or fewer: the finest place at which magnitude / 10^place < 10^38.
  int place = -128;
  while (place < 127 && inLeastUnits >= powerOfTen(38 + 128 + place) * exact.denominator)
    ++place;
  const Integer unit = powerOfTen(128 + place) * exact.denominator;
  const Integer rounded = (2 * inLeastUnits + unit) / (2 * unit);
  if (rounded > largestMantissa)
    return Parts::nan();
  return Parts::compact(isNegative, rounded, place);
}

/// `value` to `scale` digits, from its whole number of 10^-128.
Parts roundedParts(const Decimal& value, int scale, RoundingMode mode) {
  if (value.isNaN())
    return Parts::nan();
  const Integer least = integerOf(value.mantissa()) * powerOfTen(128 + value.exponent());
  const bool isNegative = value.sign() == Sign::minus;
  if (scale >= 128)
    return Parts::compact(isNegative, least, -128);
  const Integer unit = powerOfTen(128 - scale);
  Integer floor = least / unit;
  const Integer twice = 2 * (least - floor * unit);
  const bool isOdd = floor % 2 == 1;
  if (mode == RoundingMode::plain && twice >= unit)
    ++floor;
  if (mode == RoundingMode::bankers && (twice > unit || (twice == unit && isOdd)))
    ++floor;
  const Parts parts = Parts::compact(isNegative, floor * unit, -128);
  return parts.mantissa > largestMantissa ? Parts::nan() : parts;
}

std::string text(const Decimal& value) {
  if (value.isNaN())
    return "NaN";
  std::string digits = (integerOf(value.mantissa()) * powerOfTen(128 + value.exponent())).str();
  if (digits.size() < 129)
    digits.insert(0, 129 - digits.size(), '0');
  digits.insert(digits.size() - 128, ".");
  digits.erase(digits.find_last_not_of('0') + 1);
  if (digits.back() == '.')
    digits.pop_back();
  return (value.sign() == Sign::minus ? "-" : "") + digits;
}

/// Numbers and texts that lie where arithmetic goes wrong: at carries, at both ends of the range,
/// at 38 and 39 digits, near ties, and in pairs that cancel.
class Generator {
 public:
  explicit Generator(std::uint64_t seed) : random_(seed) {}

  int below(int bound) { return static_cast<int>(random_() % static_cast<std::uint64_t>(bound)); }
  int between(int low, int high) { return low + below(high - low + 1); }
  bool oneIn(int n) { return below(n) == 0; }

  Decimal number() {
    if (oneIn(60))
      return Decimal::nan();
    if (oneIn(40))
      return 0;
    return Decimal::fromMantissa(sign(), mantissa(), exponent());
  }

  /// A second operand that often stands in a delicate relation to the first.
  Decimal numberBeside(const Decimal& first) {
    if (first.isNaN() || first.isZero())
      return number();
    const int near = std::clamp(first.exponent() + between(-42, 42), -128, 127);
    switch (below(10)) {
      case 0:
        return -first;
      case 1:  // one in the last place away
        return Decimal::fromMantissa(sign(), first.mantissa() + (oneIn(2) ? 1 : 0) - 1,
                                     first.exponent());
      case 2:  // the same digits at another place
        return Decimal::fromMantissa(sign(), first.mantissa(), near);
      case 3:  // half a unit of some place, or just beside it
        return Decimal::fromMantissa(sign(), power(10, below(38)) * 5 + Wide(between(-1, 1)), near);
      case 4:
        return Decimal::fromMantissa(sign(), Wide(between(1, 100)), between(-3, 3));
      case 5:
      case 6:
      case 7:
        return Decimal::fromMantissa(sign(), mantissa(), near);
      default:
        return number();
    }
  }

  /// A number as text, with what it means: its digits and where their point belongs.
  struct Spelling {
    std::string text;
    Fraction value;
  };
  Spelling spelling() {
    std::string digits(static_cast<std::size_t>(below(oneIn(3) ? 3 : 30)), '0');
    digits += integerOf(mantissa()).str();
    switch (below(6)) {
      case 0:
        digits += integerOf(mantissa()).str();
        break;
      case 1:
        digits.append(static_cast<std::size_t>(below(60)), '0');
        break;
      case 2:
        digits.append(static_cast<std::size_t>(below(60)), oneIn(2) ? '9' : '0');
        digits += std::to_string(below(10));
        break;
      case 3:
        digits += "5";
        digits.append(static_cast<std::size_t>(below(20)), '0');
        break;
      default:
        break;
    }
    const bool isNegative = oneIn(2);
    const int decimals = oneIn(3) ? 0 : below(static_cast<int>(digits.size()) + 1);
    int power = 0;
    Spelling result;
    result.text = std::string(oneIn(4) ? " \t" : "") +
                  (isNegative ? "-"
                   : oneIn(4) ? "+"
                              : "") +
                  digits;
    if (decimals > 0)
      result.text.insert(result.text.size() - std::size_t(decimals), ".");
    if (oneIn(3)) {
      power = oneIn(2) ? between(-10, 10) : between(-250, 250);
      result.text += (oneIn(2) ? "e" : "E") + std::string(power >= 0 && oneIn(2) ? "+" : "") +
                     std::to_string(power);
    }
    Integer magnitude(digits.substr(std::min(digits.find_first_not_of('0'), digits.size() - 1)));
    result.value = Fraction::scaled(isNegative ? Integer(-magnitude) : magnitude, power - decimals);
    return result;
  }

 private:
  using Wide = Decimal::Mantissa;

  static Wide power(Wide base, int exponent) {
    Wide result = 1;
    while (exponent-- > 0)
      result *= base;
    return result;
  }

  Sign sign() { return oneIn(2) ? Sign::minus : Sign::plus; }

  Wide anyBits() { return Wide{random_()} << 64 | random_(); }

  /// Never 0 more often than by chance.
  Wide mantissa() {
    switch (below(12)) {
      case 0:
        return Wide(between(1, 99));
      case 1:
      case 2:
        return Wide{random_()} % power(10, between(1, 12));
      case 3:
        return Wide{random_()};
      case 4:  // around 2^32, 2^64, 2^96 and 2^128
        return (Wide{1} << 32 * between(0, 3)) * (oneIn(2) ? 1 : Wide(between(1, 9))) +
               Wide(between(-2, 2));
      case 5:
        return ~Wide{0} - Wide(below(1000));
      case 6:
        return power(10, between(0, 38)) + Wide(between(-1, 1));
      case 7:  // 38 digits
        return power(10, 37) + anyBits() % (power(10, 37) * 9);
      case 8:
        return power(10, between(30, 38)) * Wide(between(1, 3)) - anyBits() % power(10, below(20));
      case 9:
        return power(oneIn(2) ? 2 : 5, between(0, 55)) * (oneIn(2) ? 1 : Wide(between(1, 99)));
      case 10:  // trailing zeros
        return (1 + anyBits() % 99999) * power(10, between(0, 33));
      default:
        return anyBits() >> below(128);
    }
  }

  int exponent() {
    switch (below(6)) {
      case 0:
        return between(-128, -120);
      case 1:
        return between(119, 127);
      case 2:
        return between(-128, 127);
      case 3:
        return between(-70, -50);
      default:
        return between(-6, 2);
    }
  }

  std::mt19937_64 random_;
};

std::uint64_t fromEnvironment(const char* name, std::uint64_t otherwise) {
  const char* const value = std::getenv(name);
  return value != nullptr ? std::strtoull(value, nullptr, 10) : otherwise;
}

void checkArithmetic(Generator& generator, int operation) {
  Decimal a = generator.number();
  Decimal b = generator.numberBeside(a);
  if (generator.oneIn(2))
    std::swap(a, b);
  SCOPED_TRACE((std::ostringstream() << Parts::of(a) << " with " << Parts::of(b)).str());
  const Fraction x = Fraction::of(a);
  const Fraction y = Fraction::of(b);
  switch (operation) {
    case 0:
      EXPECT_EQ(Parts::of(a + b), nearest(sum(x, y))) << "sum";
      break;
    case 1:
      EXPECT_EQ(Parts::of(a - b), nearest(difference(x, y))) << "difference";
      break;
    case 2:
      EXPECT_EQ(Parts::of(a * b), nearest(product(x, y))) << "product";
      break;
    case 3:
      EXPECT_EQ(Parts::of(a / b), nearest(quotient(x, y))) << "quotient";
      break;
    default:
      const Integer left = x.numerator * y.denominator;
      const Integer right = y.numerator * x.denominator;
      const int order = a.isNaN() || b.isNaN() ? int(b.isNaN()) - int(a.isNaN())
                                               : int(left > right) - int(left < right);
      EXPECT_EQ(a <=> b, order <=> 0);
      EXPECT_EQ(a == b, order == 0);
      EXPECT_EQ(a < b, order < 0);
      EXPECT_EQ(a > b, order > 0);
      EXPECT_TRUE(a != b || std::hash<Decimal>()(a) == std::hash<Decimal>()(b));
  }
}

void checkRounding(Generator& generator) {
  const Decimal value = generator.number();
  const int scale = generator.oneIn(8) ? generator.between(-170, 260)
                                       : -value.exponent() - generator.between(-1, 40);
  for (const auto mode : {RoundingMode::plain, RoundingMode::down, RoundingMode::bankers}) {
    EXPECT_EQ(Parts::of(rounded(value, scale, mode)), roundedParts(value, scale, mode))
        << Parts::of(value) << " to " << scale << " in mode " << static_cast<int>(mode);
  }
}

void checkReading(Generator& generator) {
  const auto [spelled, value] = generator.spelling();
  const auto read = Decimal::fromWholeString(spelled);
  ASSERT_TRUE(read) << spelled;
  EXPECT_EQ(Parts::of(*read), nearest(value)) << spelled;
}

void checkWriting(Generator& generator) {
  const Decimal value = generator.number();
  const std::string expected = text(value);
  EXPECT_EQ(value.description(), expected);
  if (value.isNaN())
    return;
  EXPECT_EQ(Decimal::fromWholeString(expected), value);
  EXPECT_EQ(value.doubleValue(), std::strtod(expected.c_str(), nullptr)) << expected;
}

TEST(DecimalReference, agreesWithUnboundedIntegers) {
  const std::uint64_t seed = fromEnvironment("CORVANE_TEST_SEED", std::random_device()());
  const std::uint64_t cases = fromEnvironment("CORVANE_TEST_CASES", 200'000);
  Generator generator(seed);
  for (std::uint64_t i = 0; i < cases && !HasFailure(); ++i) {
    switch (const int operation = static_cast<int>(i % 8)) {
      case 5:
        checkRounding(generator);
        break;
      case 6:
        checkReading(generator);
        break;
      case 7:
        checkWriting(generator);
        break;
      default:
        checkArithmetic(generator, operation);
    }
  }
  EXPECT_FALSE(HasFailure()) << "repeat with CORVANE_TEST_SEED=" << seed
                             << " CORVANE_TEST_CASES=" << cases;
}

}  // namespace
}  // namespace corvane
