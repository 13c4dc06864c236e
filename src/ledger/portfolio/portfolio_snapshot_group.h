// The balance sheets of a portfolio day by day, and what was traded meanwhile.
#pragma once

#include <unordered_set>
#include <vector>

#include "core/money/year_month_day.h"
#include "ledger/portfolio/portfolio_snapshot.h"

namespace corvane {

using CurrencySet = std::unordered_set<Currency>;

/// What a view shows for a range of days.
struct PortfolioSnapshotGroup {
  /// The state at the end of a day, with the prices and rates of that day or the last before it.
  struct DailySnapshot {
    YearMonthDay ymd;
    PortfolioSnapshot snapshot;
    friend bool operator==(const DailySnapshot&, const DailySnapshot&) = default;
  };

  /// The purchases and sales of one equity in the range; money is in the primary currency.
  struct TradingSummary {
    Decimal sharesBought;
    Decimal sharesSold;        ///< positive
    Decimal costBaseAdded;     ///< what the purchases cost
    Decimal costBaseDisposed;  ///< the cost base that went with the sold shares
    Decimal proceedsOfSale;    ///< positive
    friend bool operator==(const TradingSummary&, const TradingSummary&) = default;
  };

  /// Ascending. The first is that of the day before the range; further ones exist only for days on
  /// which a row settled or a price was quoted.
  std::vector<DailySnapshot> sortedSnapshots;
  EquityMap<TradingSummary> tradingSummaryByEquity;
  /// Those with a balance other than 0 before the range, or with a row in it.
  CurrencySet currenciesHeldOrTraded;
  EquitySet equitiesHeldOrTraded;

  friend bool operator==(const PortfolioSnapshotGroup&, const PortfolioSnapshotGroup&) = default;
};

}  // namespace corvane
