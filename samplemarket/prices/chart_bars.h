// Bars of any interval over any range.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "samplemarket/prices/published_prices.h"

namespace corvane::samplemarket {

/// A length of bars that the service offers.
struct ChartInterval {
  enum class Kind { minutes, day, fiveDays, week, month, quarter };

  std::string_view text;  ///< "1wk"
  Kind kind;
  int minutes = 0;             ///< of a bar, for Kind::minutes
  int greatestAgeInDays = 0;   ///< of the start of a range; 0 for any
  int longestRangeInDays = 0;  ///< 0 for any

  [[nodiscard]] static std::optional<ChartInterval> named(std::string_view text);
};

/// A moment at an instrument's exchange, and how the past looks from there. The history must
/// outlive it, hold the session that is current at `now`, and have a session that has opened by
/// `now`.
class MarketView {
 public:
  MarketView(const DailyHistory& history, std::int64_t now);

  [[nodiscard]] const DailyHistory& history() const { return history_; }
  [[nodiscard]] const PublishedPrices& prices() const { return prices_; }
  [[nodiscard]] std::int64_t now() const { return now_; }

  /// The session that trades at this moment, or was the last to trade.
  [[nodiscard]] std::size_t lastSession() const { return last_; }
  /// The session of this day, opened or not, or of the last trading day.
  [[nodiscard]] std::size_t currentSession() const { return current_; }
  /// The time of the last price of regular trading.
  [[nodiscard]] std::int64_t regularMarketTime() const;

  /// The bar of `session`, which has opened: all of it, or as far as it has come.
  [[nodiscard]] PublishedBar dayBar(std::size_t session) const;
  /// The last price of regular trading.
  [[nodiscard]] std::int64_t lastPrice() const { return lastPrice_; }
  /// The last price before `session`.
  [[nodiscard]] std::int64_t priceBefore(std::size_t session) const;

 private:
  const DailyHistory& history_;
  std::int64_t now_;
  std::size_t last_;
  std::size_t current_;
  PublishedPrices prices_;
  std::int64_t lastPrice_;
};

struct ChartBar : PublishedBar {
  std::size_t lastSession = 0;  ///< that is in the bar
};

/// The bars of `view` that start in `from` ..< `to`, by time. Of bars longer than a day, those that
/// have a session that opens in the range, whole. A bar of a day starts with its session, but the
/// running one is told with the time of the last price. Bars of minutes come with those before and
/// after the session where `withPrePost` says so; none spans the opening or the close.
[[nodiscard]] std::vector<ChartBar> chartBars(const MarketView& view, const ChartInterval& interval,
                                              std::int64_t from, std::int64_t to, bool withPrePost);

/// The sessions whose trading, that before and after included, falls into `from` ..< `to` and has
/// begun: first and one past the last.
struct SessionSpan {
  std::size_t first;
  std::size_t end;
};
[[nodiscard]] SessionSpan sessionsTouched(const MarketView& view, std::int64_t from,
                                          std::int64_t to);

}  // namespace corvane::samplemarket
