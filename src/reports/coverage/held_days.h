// On which days a ledger needs the prices of what.
#pragma once

#include <vector>

#include "core/market/quote_provider.h"
#include "core/money/year_month_day.h"
#include "ledger/portfolio/portfolio.h"

namespace corvane {

/// Days from `first` to `last`, both included.
struct DaySpan {
  YearMonthDay first;
  YearMonthDay last;
  friend auto operator<=>(const DaySpan&, const DaySpan&) = default;
};

/// The days whose prices the portfolios need, for each equity and each exchange rate in ascending
/// order and without overlap.
struct HeldDays {
  EquityMap<std::vector<DaySpan>> equities;
  EquityMap<std::vector<DaySpan>> rates;
};

/// From the day on which an equity comes in to the one on which the last of it goes, or to `today`;
/// the rate of a foreign currency on the days of its equities and of its cash. `calendar` is that
/// of the ledgers' days, `quotes` names the pairs. Rows after today are none of this. Main queue
/// only; the rows of the portfolios have been read.
[[nodiscard]] HeldDays heldDays(const std::vector<PortfolioPointer>& portfolios,
                                const Calendar& calendar, const YearMonthDay& today,
                                QuoteProvider& quotes);

/// Adds the days of `more` to `days`.
void addHeldDays(HeldDays& days, const HeldDays& more);

}  // namespace corvane
