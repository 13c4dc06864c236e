// Prices of a market's history, one day after the other.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/money/year_month_day.h"
#include "reports/series/market_history.h"
#include "reports/series/report_days.h"

namespace corvane {

/// The price in force, for a walk over ascending days. On any thread; what it walks over outlives
/// it.
class PriceCursor {
 public:
  /// Begins before all closes of `line`, which may be null: then there is never a price. Where
  /// `mayUseFirstOpen`, what opened with the first bar stands for the days before it, if that bar
  /// comes within `leadInDays` and a day of `baseDay`, which is counted like dayNumber().
  PriceCursor(const PriceLine* line, std::int64_t baseDay, bool mayUseFirstOpen) : line_(line) {
    if (line != nullptr && mayUseFirstOpen && opensSoonEnough(*line, baseDay)) {
      price_ = &*line->firstOpen;
    }
  }

  /// Whether `day` or days since the last one have brought a close.
  bool advanceTo(const YearMonthDay& day) {
    const std::size_t before = next_;
    while (line_ != nullptr && next_ < line_->closes.size() && line_->closes[next_].day <= day) {
      price_ = &line_->closes[next_++].price;
    }
    return next_ != before;
  }

  /// Null where the market has told nothing yet.
  [[nodiscard]] const Decimal* price() const { return price_; }

 private:
  static bool opensSoonEnough(const PriceLine& line, std::int64_t baseDay) {
    return line.firstOpen && !line.closes.empty() &&
           dayNumber(line.closes.front().day) <= baseDay + leadInDays + 1;
  }

  const PriceLine* line_;
  std::size_t next_ = 0;
  const Decimal* price_ = nullptr;
};

}  // namespace corvane
