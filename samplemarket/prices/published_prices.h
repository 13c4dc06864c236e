// Prices as the service tells them: restated for the splits since.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "samplemarket/prices/daily_history.h"

namespace corvane::samplemarket {

/// A bar of any length, restated for later splits. Prices are in units of 10^-decimals with the
/// decimals of PublishedPrices.
struct PublishedBar {
  std::int64_t time;  ///< its start, in seconds since 1970
  bool hasTrades = false;
  std::int64_t open = 0;
  std::int64_t high = 0;
  std::int64_t low = 0;
  std::int64_t close = 0;
  std::int64_t volume = 0;

  /// Takes in a later bar of the same stretch of time.
  void extend(const PublishedBar& later);
};

/// Converts what was traded to what is told after session `last` has opened. The history must
/// outlive it.
class PublishedPrices {
 public:
  /// Of a published price, which needs more digits than a traded one.
  static constexpr std::int64_t unitsPerTick = 10000;

  PublishedPrices(const DailyHistory& history, std::size_t last);

  /// Digits after the point of a published price: enough for all but thirds and the like.
  [[nodiscard]] int decimals() const { return history_.instrument().decimals + 4; }

  /// What a share of `session` has become.
  [[nodiscard]] const SplitRatio& sharesAfter(std::size_t session) const;

  /// A price of `session` in ticks, to the nearest.
  [[nodiscard]] std::int64_t price(std::int64_t ticks, std::size_t session) const;
  /// A number of shares of `session`, rounded down.
  [[nodiscard]] std::int64_t volume(std::int64_t shares, std::size_t session) const;

  /// The whole of `session`.
  [[nodiscard]] PublishedBar dayBar(std::size_t session) const;

  /// `closing`, a price of `session` by price(), lowered by the part that later dividends took.
  [[nodiscard]] std::int64_t dividendAdjusted(std::int64_t closing, std::size_t session) const;

 private:
  const DailyHistory& history_;
  /// For the sessions before the one told: what a share has become, and what part of its price is
  /// left in 10^-12. By session; the last entry is for the time after all events.
  std::vector<std::pair<std::size_t, SplitRatio>> shares_;
  std::vector<std::pair<std::size_t, std::int64_t>> remainders_;
};

}  // namespace corvane::samplemarket
