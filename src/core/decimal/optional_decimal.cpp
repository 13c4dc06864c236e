#include "core/decimal/optional_decimal.h"

#include <memory>

namespace corvane {

OptionalDecimal::Word OptionalDecimal::allocated(const Decimal& value) {
  static_assert(alignof(Decimal) > 1, "an address ends with a 0");
  return reinterpret_cast<Word>(std::make_unique<Decimal>(value).release());
}

void OptionalDecimal::release() noexcept {
  const std::unique_ptr<Decimal> value(reinterpret_cast<Decimal*>(std::exchange(word_, none)));
}

std::ostream& operator<<(std::ostream& out, const OptionalDecimal& value) {
  return value ? out << *value : out << "none";
}

}  // namespace corvane
