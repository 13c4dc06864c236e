// Numbers of many rows in eight bytes each.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "core/decimal/decimal.h"

namespace corvane {

/// Packs numbers: those of up to sixteen digits into a word, others into a list beside it. What was
/// packed reads back as the same number.
class PackedDecimals {
 public:
  using Word = std::uint64_t;
  /// Stands for no number.
  static constexpr Word none = ~Word{0};

  [[nodiscard]] Word pack(const Decimal& number);
  [[nodiscard]] Word pack(const std::optional<Decimal>& number) {
    return number ? pack(*number) : none;
  }
  /// The number of `word`, which is not none.
  [[nodiscard]] Decimal number(Word word) const;
  [[nodiscard]] std::optional<Decimal> optionalNumber(Word word) const {
    return word == none ? std::nullopt : std::optional(number(word));
  }

 private:
  std::vector<Decimal> large_;
};

}  // namespace corvane
