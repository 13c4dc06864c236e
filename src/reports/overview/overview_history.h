// What all portfolios of a workspace were worth through the days, each on top of the others.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "reports/returns/time_weighted_return.h"
#include "reports/series/valuation_series.h"

namespace corvane {

/// The values of several portfolios on the same days. Money is in one currency.
struct OverviewHistory {
  struct Band {
    std::string name;             ///< of the portfolio
    std::vector<Decimal> values;  ///< on each day of the sum; they add up to its values
  };

  /// Without days where something is missing, which it names.
  ValuationSeries sum;
  std::vector<Band> bands = {};  ///< in the order of the portfolios; none of what was never worth
                                 ///< anything
  /// On each day of the sum; empty where a rate of a deposit is not known.
  std::vector<Decimal> netDeposits = {};
  TimeWeightedReturn timeWeighted = {};
};

/// The history of `portfolios` on the days of `scope`, in `currency`. A portfolio in a currency
/// that the scope leaves out is left out as a whole. On the main queue, or on any thread for
/// copies.
[[nodiscard]] OverviewHistory overviewHistory(std::span<const PortfolioPointer> portfolios,
                                              const ValuationScope& scope,
                                              const MarketHistory& history,
                                              const Calendar& calendar, const Currency& currency);

}  // namespace corvane
