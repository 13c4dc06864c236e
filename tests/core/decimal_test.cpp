#include "core/decimal.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

Decimal dec(std::string_view text) {
  const auto value = Decimal::fromWholeString(text);
  EXPECT_TRUE(value) << text;
  return value.value_or(Decimal::nan());
}

TEST(Decimal, addsTenthsExactly) {
  EXPECT_EQ(dec("0.1") + dec("0.2"), dec("0.3"));
}

TEST(Decimal, dividesToThirtyEightDigits) {
  const Decimal third = Decimal(1) / Decimal(3);
  EXPECT_EQ(third.description(), "0.33333333333333333333333333333333333333");
  EXPECT_NE(third * 3, Decimal(1));
  EXPECT_EQ((Decimal(2) / Decimal(3)).description(), "0.66666666666666666666666666666666666667");
}

TEST(Decimal, givesNaNBeyondTheRangeAndForDivisionByZero) {
  const Decimal greatest = Decimal::greatestFiniteMagnitude();
  EXPECT_TRUE((greatest + greatest).isNaN());
  EXPECT_TRUE((Decimal(1) / Decimal(0)).isNaN());
  EXPECT_EQ(greatest + 1, greatest);
  EXPECT_TRUE((Decimal::leastNonzeroMagnitude() * dec("0.1")).isZero());
  EXPECT_EQ(Decimal::nan(), Decimal::nan());
  EXPECT_LT(Decimal::nan(), -greatest);
}

TEST(Decimal, roundsMoneyToTheEvenNeighbour) {
  const auto money = [](std::string_view text) {
    return rounded(dec(text), 2, RoundingMode::bankers).description();
  };
  EXPECT_EQ(money("2.345"), "2.34");
  EXPECT_EQ(money("2.355"), "2.36");
  EXPECT_EQ(money("2.3451"), "2.35");
  EXPECT_EQ(money("-2.345"), "-2.34");
  EXPECT_EQ(money("1.2"), "1.2");
}

TEST(Decimal, isCompact) {
  EXPECT_EQ(dec("10.50").exponent(), -1);
  EXPECT_EQ(dec("100").exponent(), 2);
  EXPECT_EQ(dec("1.0").exponent(), 0);
  EXPECT_EQ(dec("-0.00").sign(), Sign::plus);
}

TEST(Decimal, readsAndWritesText) {
  EXPECT_EQ(dec("-1234.50").description(), "-1234.5");
  EXPECT_EQ(dec("1e-3").description(), "0.001");
  EXPECT_EQ(Decimal::fromDouble(0.01), dec("0.01"));
  EXPECT_EQ(dec("-12.9").integerValue(), -12);
  EXPECT_EQ(dec("0.1").doubleValue(), 0.1);
  EXPECT_FALSE(Decimal::fromString("abc"));
  EXPECT_EQ(Decimal::fromString("12abc"), Decimal(12));
}

}  // namespace
}  // namespace corvane
