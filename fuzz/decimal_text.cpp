// Any bytes as the text of a number: reading never fails but by giving no value, and what it gives
// survives writing, rounding and the operations that must undo each other.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "core/decimal/decimal.h"

namespace {

using corvane::Decimal;
using corvane::RoundingMode;

void require(bool holds) {
  if (!holds)
    std::abort();
}

void checkRounding(const Decimal& value, int scale) {
  for (const auto mode : {RoundingMode::plain, RoundingMode::down, RoundingMode::bankers}) {
    const Decimal once = rounded(value, scale, mode);
    if (once.isNaN())
      continue;  // rounded up beyond the greatest
    require(rounded(once, scale, mode) == once);
    const int least = std::min(-scale, Decimal::maximumExponent);
    require(once.isZero() || once.exponent() >= least || once == value);
  }
  require(abs(rounded(value, scale, RoundingMode::down)) <= abs(value));
}

void checkNumber(const Decimal& value) {
  require(Decimal::fromWholeString(value.description()) == value);
  require(value.significand() == Decimal::fromMantissa(corvane::Sign::plus, value.mantissa(), 0));
  require(Decimal::fromParts(value.sign(), value.exponent(), value.significand()) == value);
  require((value - value).isZero());
  require(value * 1 == value && value / 1 == value && value + 0 == value);
  require(-(-value) == value);
  require(value.isZero() || value / value == 1);
  require(value == 0 || (value < 0) == (value.sign() == corvane::Sign::minus));
  require((value.integerValue() < 0) <= (value < 0));
  static_cast<void>(value.doubleValue());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const auto value = Decimal::fromString(text);
  const auto whole = Decimal::fromWholeString(text);
  require(!whole || whole == value);
  if (!value || value->isNaN())
    return 0;

  checkNumber(*value);
  const int lastByte = data[size - 1];
  checkRounding(*value, lastByte - 128);
  checkRounding(*value, 2);

  // The second half of the text as another operand.
  const Decimal other = Decimal::fromString(text.substr(size / 2)).value_or(3);
  require(*value + other == other + *value && *value * other == other * *value);
  require(*value - other == -(other - *value));
  require((*value < other) == (other > *value));
  return 0;
}
