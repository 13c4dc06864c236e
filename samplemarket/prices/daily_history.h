// An instrument's days: prices, splits and dividends.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "samplemarket/prices/instruments.h"
#include "samplemarket/prices/trading_calendar.h"

namespace corvane::samplemarket {

/// New shares for old ones: 2:1 gives two for one.
struct SplitRatio {
  std::int64_t numerator = 1;
  std::int64_t denominator = 1;

  [[nodiscard]] SplitRatio inverse() const { return {denominator, numerator}; }
};

/// Both in one, in lowest terms.
[[nodiscard]] SplitRatio operator*(const SplitRatio& left, const SplitRatio& right);

/// A split that takes effect with the opening of a session.
struct Split {
  std::size_t session;
  SplitRatio ratio;
};

/// A dividend to whoever held a share before the session, in units of 10^-(decimals + 2).
struct Dividend {
  std::size_t session;
  std::int64_t amount;
};

/// A session's prices as traded on that day, in ticks of 10^-decimals.
struct TradingDay {
  std::int64_t open = 0;
  std::int64_t high = 0;
  std::int64_t low = 0;
  std::int64_t close = 0;
  std::int64_t volume = 0;
  /// The last price before the session, restated for a split on this day.
  std::int64_t previousClose = 0;
  /// Trading was suspended all day; the prices are those of the day before.
  bool isHalted = false;
};

/// The days of one instrument from its first session on. Immutable.
class DailyHistory {
 public:
  /// The days up to before session `end`, with `addedSplits` on top of the instrument's own ones. A
  /// day does not depend on `end`, nor do days before an added split depend on it.
  DailyHistory(Instrument instrument, std::span<const Split> addedSplits, std::size_t end);

  [[nodiscard]] const Instrument& instrument() const { return instrument_; }
  [[nodiscard]] const TradingCalendar& calendar() const { return *calendar_; }
  [[nodiscard]] const std::vector<Session>& sessions() const { return calendar_->sessions(); }

  [[nodiscard]] std::size_t firstSession() const { return first_; }
  [[nodiscard]] std::size_t endSession() const {
    return first_ + listedDays_.size() + rateDays_.size();
  }
  [[nodiscard]] TradingDay day(std::size_t session) const;

  /// By date.
  [[nodiscard]] const std::vector<Split>& splits() const { return splits_; }
  [[nodiscard]] const std::vector<Dividend>& dividends() const { return dividends_; }

 private:
  // There are thousands of days, and a program that has a market in it keeps them all the time.
  /// A day of something listed, in ticks, of which the dearest share has millions.
  struct ListedDay {
    std::int32_t open, high, low, close, previousClose;
    bool isHalted;
    std::int64_t volume;
  };
  /// A day of a pair of currencies, whose ticks are finer.
  struct RateDay {
    std::int64_t open, high, low, close;
  };

  static ListedDay packed(const TradingDay& day);
  void makeListedDays(std::span<const Split> addedSplits, std::size_t end);
  void makeRates(std::size_t end);

  Instrument instrument_;
  const TradingCalendar* calendar_;
  std::size_t first_;
  std::vector<ListedDay> listedDays_;
  std::vector<RateDay> rateDays_;
  std::vector<Split> splits_;
  std::vector<Dividend> dividends_;
};

}  // namespace corvane::samplemarket
