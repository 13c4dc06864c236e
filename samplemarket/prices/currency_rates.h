// What currencies are worth, by the day.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include "samplemarket/prices/wide.h"

namespace corvane::samplemarket {

/// Whether `code` is a currency of ISO 4217 that the market has a rate for.
[[nodiscard]] bool hasRate(std::string_view code);

/// The decimals with which the price of `base` in `quote` is told: some seven digits in all.
[[nodiscard]] int rateDecimals(std::string_view base, std::string_view quote);

/// The worth of one currency in dollars, which keeps to its long-run value with swings of some
/// percent. Every rate comes of two of these, so that rates agree with their inverses and around
/// any triangle, but for the last digit.
class CurrencyWorth {
 public:
  explicit CurrencyWorth(std::string_view code);

  /// On to the next session's end. A worth starts before the end of session 0.
  void advance();

  /// In units that are the same for all currencies. Up to 2 × 10^20.
  [[nodiscard]] Wide worth() const;

 private:
  std::uint64_t seedStream_;
  std::int64_t longRunWorth_;
  std::int64_t deviation_ = 0;  ///< in millionths
  std::int64_t dailyDeviation_;
  std::int64_t session_ = 0;
};

/// 10^`exponent`, which is 0 to 18.
[[nodiscard]] constexpr std::int64_t powerOfTen(int exponent) {
  std::int64_t result = 1;
  for (int i = 0; i < exponent; ++i) {
    result *= 10;
  }
  return result;
}

}  // namespace corvane::samplemarket
