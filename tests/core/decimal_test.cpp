#include "core/decimal/decimal.h"

#include <gtest/gtest.h>

#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <random>
#include <sstream>

#include "support/decimals.h"

namespace corvane {
namespace {

using testing::dec;

const Decimal greatest = Decimal::greatestFiniteMagnitude();
const Decimal least = Decimal::leastNonzeroMagnitude();

TEST(Decimal, addsTenthsExactly) {
  EXPECT_EQ(dec("0.1") + dec("0.2"), dec("0.3"));
}

TEST(Decimal, dividesToThirtyEightDigits) {
  const Decimal third = Decimal(1) / 3;
  EXPECT_EQ(third.description(), "0.33333333333333333333333333333333333333");
  EXPECT_NE(third * 3, 1);
  EXPECT_EQ((Decimal(2) / 3).description(), "0.66666666666666666666666666666666666667");
}

TEST(Decimal, keepsThirtyNineDigitsWhereTheyAreExact) {
  const Decimal odd = dec("20000000000000000000000000000000000001");
  EXPECT_EQ((odd / 2 * 10).description(), "100000000000000000000000000000000000005");
  EXPECT_EQ((odd + dec("0.5")).description(), "20000000000000000000000000000000000001.5");
  // One more than the greatest mantissa has 39 digits too, but must be rounded to 38.
  EXPECT_EQ(dec("340282366920938463463374607431768211456").description(),
            "340282366920938463463374607431768211460");
}

TEST(Decimal, roundsArithmeticOnceAndTiesAwayFromZero) {
  const Decimal nines = dec("99999999999999999999999999999999999999");
  EXPECT_EQ(nines + dec("0.5"), dec("1e38"));
  EXPECT_EQ(nines + dec("0.49999999999999999999999999999999999999"), nines);
  EXPECT_EQ(-nines - dec("0.5"), dec("-1e38"));
  // The difference lies just below a tie: rounding twice would reach it.
  EXPECT_EQ(nines + dec("0.5") - dec("1e-60"), dec("1e38"));
  EXPECT_EQ(dec("70000000000000000000000000000000000001") / 2,
            dec("35000000000000000000000000000000000001"));
}

TEST(Decimal, addsWhatLiesFarBelow) {
  EXPECT_EQ(dec("1e100") + dec("1e-100"), dec("1e100"));
  EXPECT_EQ(dec("1e100") - dec("1e-100"), dec("1e100"));
  EXPECT_EQ(Decimal(0) + dec("1e100"), dec("1e100"));
  EXPECT_EQ(dec("1e100") - dec("1e100"), 0);
}

TEST(Decimal, endsInNaNAboveAndInZeroBelow) {
  EXPECT_TRUE((greatest + greatest).isNaN());
  EXPECT_TRUE((greatest * 2).isNaN());
  EXPECT_TRUE((greatest / dec("0.1")).isNaN());
  EXPECT_EQ(greatest + 1, greatest);
  EXPECT_EQ(dec("1e127") * dec("1e38"), dec("1e165"));
  EXPECT_TRUE((dec("1e127") * dec("1e39")).isNaN());

  EXPECT_EQ(least * dec("0.5"), least);
  EXPECT_TRUE((least * dec("0.49")).isZero());
  EXPECT_EQ((-least * dec("0.49")).sign(), Sign::plus);
  EXPECT_EQ(dec("123456e-128") / 1000, dec("123e-128"));
}

TEST(Decimal, carriesNaNThroughEveryOperation) {
  const Decimal nan = Decimal::nan();
  EXPECT_TRUE((Decimal(1) / 0).isNaN());
  EXPECT_TRUE((Decimal(0) / 0).isNaN());
  for (const Decimal& value : {nan + 1, 1 - nan, nan * 0, 0 / nan, -nan, abs(nan),
                               rounded(nan, 2, RoundingMode::plain), nan.significand()}) {
    EXPECT_TRUE(value.isNaN());
  }
  EXPECT_EQ(nan, nan);
  EXPECT_LT(nan, -greatest);
  EXPECT_FALSE(nan < nan);
  EXPECT_EQ(nan.description(), "NaN");
  EXPECT_EQ(nan.integerValue(), 0);
  EXPECT_TRUE(std::isnan(nan.doubleValue()));
}

TEST(Decimal, comparesAcrossExponents) {
  EXPECT_EQ(dec("1.50"), dec("1.5"));
  EXPECT_LT(dec("99e-128"), dec("1e-126"));
  EXPECT_LT(dec("-1e127"), dec("1e-128"));
  EXPECT_GT(dec("1e39"), dec("340282366920938463463374607431768211455"));
  EXPECT_LT(dec("-2"), dec("-1.99999999999999999999999999999999999999"));
}

TEST(Decimal, isCompact) {
  EXPECT_EQ(dec("10.50").exponent(), -1);
  EXPECT_EQ(dec("100").exponent(), 2);
  EXPECT_EQ(dec("1.0").exponent(), 0);
  EXPECT_EQ(dec("-0.00").sign(), Sign::plus);
  EXPECT_EQ((dec("2.5") * 4).exponent(), 1);
  EXPECT_EQ(dec("1e130").mantissa(), 1000U);  // the exponent ends at 127
  EXPECT_EQ(dec("-12.5").significand(), 125);
  EXPECT_EQ(Decimal::fromParts(Sign::plus, -2, 1), dec("0.01"));
  EXPECT_EQ(std::hash<Decimal>()(dec("7.10")), std::hash<Decimal>()(dec("7.1")));
}

TEST(Decimal, roundsMoneyToTheEvenNeighbour) {
  const auto money = [](std::string_view text) {
    return rounded(dec(text), 2, RoundingMode::bankers).description();
  };
  EXPECT_EQ(money("2.345"), "2.34");
  EXPECT_EQ(money("2.355"), "2.36");
  EXPECT_EQ(money("2.3451"), "2.35");
  EXPECT_EQ(money("-2.345"), "-2.34");
  EXPECT_EQ(money("-0.005"), "0");
  EXPECT_EQ(rounded(dec("1.2"), 2, RoundingMode::bankers).exponent(), -1);
}

TEST(Decimal, roundsToAnyScale) {
  EXPECT_EQ(rounded(dec("1250"), -2, RoundingMode::plain), 1300);
  EXPECT_EQ(rounded(dec("1250"), -2, RoundingMode::bankers), 1200);
  EXPECT_EQ(rounded(dec("5"), -1, RoundingMode::plain), 10);
  EXPECT_EQ(rounded(dec("-7.99"), 0, RoundingMode::down), -7);
  EXPECT_EQ(rounded(greatest, -166, RoundingMode::plain), 0);
  EXPECT_TRUE(rounded(greatest, -152, RoundingMode::plain).isNaN());
  EXPECT_EQ(rounded(dec("1.5"), std::numeric_limits<int>::min(), RoundingMode::plain), 0);
  EXPECT_EQ(rounded(least, std::numeric_limits<int>::max(), RoundingMode::down), least);
}

TEST(Decimal, readsTheNumberThatATextBeginsWith) {
  const struct {
    std::string_view text;
    const char* value;
    bool isWhole;
  } cases[] = {
      {"-12.50", "-12.5", true},
      {" \t+7", "7", true},
      {".5", "0.5", true},
      {"5.", "5", true},
      {"1e-3", "0.001", true},
      {"1E+2", "100", true},
      {"12abc", "12", false},
      {"1.2.3", "1.2", false},
      {"3e", "3", false},
      {"3e+", "3", false},
      {"1,000.5", "1", false},
      {"007", "7", true},
      {"0x10", "0", false},
      {"1e999999999999", "NaN", true},
      {"0e99999999999999999999", "0", true},
      {"1e-999999999999", "0", true},
  };
  for (const auto& [text, value, isWhole] : cases) {
    const auto read = Decimal::fromString(text);
    ASSERT_TRUE(read) << text;
    EXPECT_EQ(read->description(), value) << text;
    EXPECT_EQ(Decimal::fromWholeString(text).has_value(), isWhole) << text;
  }
  for (const auto* text : {"", " ", "-", ".", "-.", "e5", "abc", "NaN", "--1", "+ 1", ".e1"}) {
    EXPECT_FALSE(Decimal::fromString(text)) << text;
  }
  EXPECT_FALSE(Decimal::fromString(std::string_view()));
  EXPECT_FALSE(Decimal::fromString(std::string_view("\0001", 2)));
}

TEST(Decimal, readsTextsOfAnyLength) {
  const std::string zeros(10'000'000, '0');
  EXPECT_EQ(dec("0." + zeros + "1e10000001"), 1);
  EXPECT_EQ(dec("1" + zeros + "e-10000000"), 1);
  EXPECT_EQ(dec("0." + std::string(10'000'000, '9')), 1);
}

TEST(Decimal, writesPlainDigits) {
  EXPECT_EQ(dec("-1234.5").description(), "-1234.5");
  EXPECT_EQ(dec("0.00001").description(), "0.00001");
  EXPECT_EQ(Decimal().description(), "0");
  EXPECT_EQ(least.description(), "0." + std::string(127, '0') + "1");
  EXPECT_EQ((-greatest).description(),
            "-340282366920938463463374607431768211455" + std::string(127, '0'));
  EXPECT_EQ((std::ostringstream() << dec("1.5")).str(), "1.5");
}

TEST(Decimal, convertsIntegersAtTheEndsOfTheirTypes) {
  using Limits = std::numeric_limits<std::int64_t>;
  EXPECT_EQ(Decimal(Limits::min()).description(), "-9223372036854775808");
  EXPECT_EQ(Decimal(std::numeric_limits<std::uint64_t>::max()).description(),
            "18446744073709551615");
  EXPECT_EQ(Decimal(Limits::min()).integerValue(), Limits::min());
  EXPECT_EQ((Decimal(Limits::max()) + dec("0.9")).integerValue(), Limits::max());
  EXPECT_EQ(greatest.integerValue(), Limits::max());
  EXPECT_EQ((-greatest).integerValue(), Limits::min());
  EXPECT_EQ(dec("-12.9").integerValue(), -12);
}

TEST(Decimal, convertsDoublesByTheirShortestDigits) {
  EXPECT_EQ(Decimal::fromDouble(0.01), dec("0.01"));
  EXPECT_EQ(Decimal::fromDouble(0.1 + 0.2), dec("0.30000000000000004"));
  EXPECT_EQ(Decimal::fromDouble(-1e23), dec("-1e23"));
  EXPECT_EQ(Decimal::fromDouble(-0.0), 0);
  EXPECT_TRUE(Decimal::fromDouble(std::numeric_limits<double>::infinity()).isNaN());
  EXPECT_TRUE(Decimal::fromDouble(1e300).isNaN());
  EXPECT_TRUE(Decimal::fromDouble(5e-324).isZero());
  EXPECT_EQ(dec("0.1").doubleValue(), 0.1);
}

/// Prices of few digits are read another way than other doubles: both give the digits of to_chars.
TEST(Decimal, convertsPricesLikeOtherDoubles) {
  std::mt19937_64 random(1);
  std::uint64_t most = 10;
  for (int digits = 1; digits <= 17; ++digits, most *= 10) {
    for (int i = 0; i < 2'000; ++i) {
      const auto mantissa = static_cast<double>(random() % most);
      const double price =
          (i % 2 == 0 ? -mantissa : mantissa) / std::pow(10, static_cast<double>(random() % 10));
      for (const double value : {price, std::nextafter(price, 1e18)}) {
        std::array<char, 32> text;
        const auto written = std::to_chars(text.data(), text.data() + text.size(), value,
                                           std::chars_format::scientific);
        EXPECT_EQ(Decimal::fromDouble(value), dec(std::string(text.data(), written.ptr)));
      }
    }
  }
}

}  // namespace
}  // namespace corvane
