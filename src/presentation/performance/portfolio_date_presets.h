// The choices of days that the screen of a portfolio offers.
#pragma once

#include <vector>

#include "ledger/portfolio/portfolio.h"
#include "platform/range.h"
#include "presentation/controls/query_dates_picker.h"

namespace corvane {

/// Presets for a ledger that spans `days`: all of it, spans that end today, and each of its years
/// but the one of `today`, newest first.
[[nodiscard]] std::vector<QueryDatesPicker::Preset> portfolioDatePresets(
    const ClosedRange<YearMonthDay>& days, const YearMonthDay& today);

/// Keeps a picker of days within the ledger that is shown. Main queue only.
class PortfolioDays {
 public:
  /// Gives `picker` the limits and presets of the ledger of `portfolio` at the moment `now`, in
  /// `calendar`. Days outside the limits give way to them; whoever looked at all days of the ledger
  /// before sees all of this one. Without rows they are those of the current year.
  void limit(QueryDatesPicker& picker, Portfolio& portfolio, const Calendar& calendar, Date now);

 private:
  /// Whether the days are all that the ledger shown last has.
  bool showsAllTime_ = true;
};

}  // namespace corvane
