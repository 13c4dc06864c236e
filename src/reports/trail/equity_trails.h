// Why the line of one equity in the report of returns says what it says.
#pragma once

#include <memory>
#include <optional>

#include "reports/returns/returns_report.h"
#include "reports/trail/trail_node.h"

namespace corvane {

/// What the report was made of. The ledger is read anew: on the main queue, or on any thread for a
/// frozen one.
struct EquityTrailGround {
  PortfolioPointer portfolio;
  ValuationScope scope;  ///< of the whole report
  std::shared_ptr<const MarketHistory> history;
  Calendar calendar;
};

enum class EquityFigure { opening, bought, sold, dividends, closing, gain };

/// One of `figures`, rounded as it is shown: its rows at the equivalents that were entered, or
/// shares, close and rate. Of very many rows the older ones are one leaf. What rows and prices of
/// `ground` do not give any more, since the ledger has changed, stands as one leaf.
[[nodiscard]] TrailNode equityFigureTrail(EquityFigure figure, const EquityFigures& figures,
                                          const EquityTrailGround& ground);

/// The time-weighted return in `line`, and the money-weighted one, as the trails of whole reports
/// have them. None where there is no return, or another one by now.
[[nodiscard]] std::optional<TrailNode> equityTimeWeightedTrail(const EquityReturns& line,
                                                               const EquityTrailGround& ground);
[[nodiscard]] std::optional<TrailNode> equityMoneyWeightedTrail(const EquityReturns& line,
                                                                const EquityTrailGround& ground);

}  // namespace corvane
