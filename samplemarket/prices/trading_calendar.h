// The sessions of an exchange, one after the other.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "samplemarket/prices/exchange.h"

namespace corvane::samplemarket {

inline constexpr std::int64_t secondsPerMinute = 60;

/// One day's trading. Times are seconds since 1970.
struct Session {
  std::int32_t day;        ///< the day in the exchange's zone, counted as dayCount does
  std::int32_t gmtOffset;  ///< of the exchange's zone on this day
  std::int64_t preOpen;
  std::int64_t open;
  std::int64_t close;
  std::int64_t postClose;

  [[nodiscard]] int minutes() const { return static_cast<int>((close - open) / 60); }
};

/// All sessions of an exchange from January 1990 to December 2069, worked out once on first use.
/// Safe on any thread.
class TradingCalendar {
 public:
  static constexpr std::int64_t firstYear = 1990;
  static constexpr std::int64_t lastYear = 2069;

  [[nodiscard]] static const TradingCalendar& of(ExchangeID id);

  [[nodiscard]] const Exchange& exchange() const { return exchange_; }
  [[nodiscard]] const std::vector<Session>& sessions() const { return sessions_; }

  /// The number of the first session that opens at `seconds` or later.
  [[nodiscard]] std::size_t firstOpeningFrom(std::int64_t seconds) const;

  /// The number of the last session that has opened by `seconds`; none before the first.
  [[nodiscard]] std::optional<std::size_t> lastOpenedBy(std::int64_t seconds) const;

  /// The session of the day of `seconds`, or of the last trading day before it: the one that the
  /// service calls current. None before the first day.
  [[nodiscard]] std::optional<std::size_t> currentAt(std::int64_t seconds) const;

  /// Midnight at the start of `day` in the exchange's zone.
  [[nodiscard]] std::int64_t midnight(std::int64_t day) const;

 private:
  explicit TradingCalendar(ExchangeID id);

  const Exchange& exchange_;
  std::vector<Session> sessions_;
};

}  // namespace corvane::samplemarket
