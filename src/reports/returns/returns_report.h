// All figures about returns of one scope in one range of days.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "reports/returns/money_weighted_return.h"
#include "reports/returns/risk_figures.h"
#include "reports/returns/time_weighted_return.h"
#include "reports/series/valuation_series.h"

namespace corvane {

/// The returns of one equity. Money is in the primary currency of its portfolio.
struct EquityReturns {
  EquityFigures figures;
  std::optional<double> timeWeighted = {};   ///< for the period
  std::optional<double> moneyWeighted = {};  ///< for the period
  /// Its gain and dividends as a part of those of all equities; none where these are 0 in sum.
  std::optional<double> shareOfGain = {};
};

struct ReturnsReport {
  ValuationSeries series;
  TimeWeightedReturn timeWeighted;
  MoneyWeightedReturn moneyWeighted;
  std::optional<Volatility> volatility;
  std::optional<Drawdowns> drawdowns;
  std::vector<EquityReturns> equities;  ///< by symbol
  /// What the reader should know of the figures, a sentence each.
  std::vector<std::string> notes;
  /// Those of them that tell of splits whose rows are of another day than the market's.
  std::vector<std::string> splitNotes;
};

/// The report of a portfolio, or of one equity of it; without figures where the series lacks some.
/// On the main queue, or on any thread for a FrozenPortfolio.
[[nodiscard]] ReturnsReport returnsReport(Portfolio& portfolio, const ValuationScope& scope,
                                          const MarketHistory& history, const Calendar& calendar);

/// The report of several portfolios in `currency`, out of the reports of each. It has no lines for
/// equities, whose money is in several currencies.
[[nodiscard]] ReturnsReport combinedReport(const std::vector<ReturnsReport>& reports,
                                           const Currency& currency, const MarketHistory& history);

}  // namespace corvane
