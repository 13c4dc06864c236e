#include "exchange/pools/packed_decimals.h"

#include <cassert>

namespace corvane {
namespace {

// From the top: whether the number is in the list, its sign, its mantissa, its exponent.
constexpr int exponentBits = 8;
constexpr int mantissaBits = 54;
constexpr PackedDecimals::Word largeBit = PackedDecimals::Word{1} << 63;
constexpr PackedDecimals::Word signBit = PackedDecimals::Word{1} << 62;
constexpr PackedDecimals::Word mantissaMask = (PackedDecimals::Word{1} << mantissaBits) - 1;

}  // namespace

PackedDecimals::Word PackedDecimals::pack(const Decimal& number) {
  if (number.isNaN() || number.mantissa() > mantissaMask) {
    large_.push_back(number);
    return largeBit | (large_.size() - 1);
  }
  return (number.sign() == Sign::minus ? signBit : 0) |
         static_cast<Word>(number.mantissa()) << exponentBits |
         static_cast<std::uint8_t>(number.exponent());
}

Decimal PackedDecimals::number(Word word) const {
  assert(word != none);
  if ((word & largeBit) != 0) {
    return large_[word & ~largeBit];
  }
  return Decimal::fromMantissa((word & signBit) != 0 ? Sign::minus : Sign::plus,
                               (word >> exponentBits) & mantissaMask,
                               static_cast<std::int8_t>(word & 0xFF));
}

}  // namespace corvane
