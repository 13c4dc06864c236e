// How a locale writes a number around its digits, learned from ICU so that most numbers need no
// call of it. For the sources of this folder only.
#pragma once

#include <unicode/numberformatter.h>

#include <optional>
#include <string>
#include <string_view>

namespace corvane {

/// The digits of a number that is to be written as it is, neither rounded nor scaled.
struct PlainDigits {
  bool isNegative = false;
  std::string_view integer;   ///< without leading zeros; "0" for none
  std::string_view fraction;  ///< without trailing zeros
};

/// What one set of settings puts before, between and behind the digits of every number.
class NumberLayout {
 public:
  /// None where it does not suffice: for digits other than 0 to 9, or where ICU fails.
  [[nodiscard]] static std::optional<NumberLayout> learned(
      const icu::number::LocalizedNumberFormatter& formatter, bool removesSpacesAroundDigits);

  /// The number, with zeros up to `minimumFractionDigits`, and `digitsSuffix` directly behind the
  /// digits.
  [[nodiscard]] std::string text(const PlainDigits& digits, int minimumFractionDigits,
                                 std::string_view digitsSuffix) const;

 private:
  struct Affixes {
    std::string prefix;
    std::string suffix;
  };

  void appendGrouped(std::string& text, std::string_view integer) const;

  Affixes positive_;
  Affixes negative_;
  std::string groupingSeparator_;
  std::string decimalSeparator_;
  std::size_t primaryGroup_ = 0;     ///< the digits of the last group; 0 where there are no groups
  std::size_t secondaryGroup_ = 0;   ///< those of all groups before it
  std::size_t shortestGrouped_ = 0;  ///< the digits of the shortest number that is grouped
};

}  // namespace corvane
