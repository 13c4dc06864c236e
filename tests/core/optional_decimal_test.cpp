#include "core/decimal/optional_decimal.h"

#include <gtest/gtest.h>

#include <optional>
#include <utility>
#include <vector>

#include "support/decimals.h"

namespace corvane {
namespace {

/// Numbers at both sides of what a word holds, of every sign, size and kind.
std::vector<Decimal> numbers() {
  const Decimal limit = dec("18014398509481984");  // 2^54
  std::vector<Decimal> all = {0,
                              1,
                              -1,
                              dec("-0.01"),
                              dec("1e127"),
                              dec("-1e-128"),
                              limit,
                              -limit,
                              limit - 1,
                              Decimal(1) - limit,
                              dec("1234567890123456.789"),
                              dec("0.33333333333333333333333333333333333333"),
                              Decimal::greatestFiniteMagnitude(),
                              -Decimal::greatestFiniteMagnitude(),
                              Decimal::leastNonzeroMagnitude(),
                              Decimal::nan()};
  return all;
}

TEST(OptionalDecimalTest, GivesBackEveryNumber) {
  EXPECT_FALSE(OptionalDecimal().has_value());
  EXPECT_EQ(OptionalDecimal().value_or(7), 7);
  EXPECT_THROW((void)OptionalDecimal().value(), std::bad_optional_access);
  for (const Decimal& number : numbers()) {
    SCOPED_TRACE(number);
    const OptionalDecimal kept = number;
    ASSERT_TRUE(kept.has_value());
    EXPECT_EQ(*kept, number);
    EXPECT_EQ(kept->exponent(), number.exponent());
    EXPECT_EQ(std::optional<Decimal>(kept), number);
    EXPECT_EQ(OptionalDecimal(std::optional(number)), kept);
  }
  EXPECT_EQ(OptionalDecimal(std::optional<Decimal>()), std::nullopt);
}

TEST(OptionalDecimalTest, ComparesAsTheNumbersDo) {
  std::vector<OptionalDecimal> all = {std::nullopt};
  for (const Decimal& number : numbers()) {
    all.emplace_back(number);
  }
  for (std::size_t i = 0; i < all.size(); ++i) {
    for (std::size_t j = 0; j < all.size(); ++j) {
      const std::optional<Decimal> other = all[j];
      EXPECT_EQ(all[i] == all[j], i == j) << i << " " << j;
      EXPECT_EQ(all[i] == other, i == j) << i << " " << j;
      EXPECT_EQ(other == all[i], i == j) << i << " " << j;
    }
  }
}

TEST(OptionalDecimalTest, CopiesAreIndependent) {
  const Decimal wide = dec("0.33333333333333333333333333333333333333");
  OptionalDecimal first = wide;
  OptionalDecimal second = first;
  first = 2;
  EXPECT_EQ(second, wide);
  EXPECT_EQ(first, 2);
  first = std::move(second);
  EXPECT_EQ(first, wide);
  const OptionalDecimal& itself = first;
  first = itself;
  EXPECT_EQ(first, wide);
  std::swap(first, second);
  second.reset();
  EXPECT_EQ(second, std::nullopt);
}

}  // namespace
}  // namespace corvane
