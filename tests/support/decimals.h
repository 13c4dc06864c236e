// Numbers in tests.
#pragma once

#include <gtest/gtest.h>

#include <string_view>

#include "core/decimal/decimal.h"

namespace corvane::testing {

/// The number that all of `text` is. Fails the test where it is none.
inline Decimal dec(std::string_view text) {
  const auto value = Decimal::fromWholeString(text);
  EXPECT_TRUE(value) << text;
  return value.value_or(Decimal::nan());
}

}  // namespace corvane::testing
