// Why the overview of all portfolios says what it says.
#pragma once

#include <span>

#include "ledger/portfolio/portfolio.h"
#include "reports/overview/portfolios_overview.h"
#include "reports/trail/trail_node.h"

namespace corvane {

// All are made of the ledgers and prices of the moment, in the currency given. Where a price or a
// rate is missing, the root has no figure and a part says why. They throw
// PortfolioManagerError::InvalidPortfolio for a portfolio without a manager. Main queue only.

/// The worth of `portfolios` together: the worth of each, by what it holds.
[[nodiscard]] TrailNode worthTrail(std::span<const PortfolioPointer> portfolios,
                                   const Currency& currency);

/// Their net deposits: those of each, by row.
[[nodiscard]] TrailNode netDepositsTrail(std::span<const PortfolioPointer> portfolios,
                                         const Currency& currency);

/// Their worth less their net deposits.
[[nodiscard]] TrailNode totalGainTrail(std::span<const PortfolioPointer> portfolios,
                                       const Currency& currency);

/// What the latest session has done, by equity: those of `overview` that count, or of them the
/// shares of `portfolio` alone where that is not null.
[[nodiscard]] TrailNode dayChangeTrail(const PortfoliosOverview& overview, QuoteProvider& quotes,
                                       const PortfolioPointer& portfolio = nullptr);

/// A line of the overview: what it is worth, and for an equity what the latest session has done.
[[nodiscard]] TrailNode lineTrail(const PortfoliosOverview& overview,
                                  const PortfoliosOverview::HoldingLine& line,
                                  QuoteProvider& quotes);
[[nodiscard]] TrailNode lineChangeTrail(const PortfoliosOverview& overview,
                                        const PortfoliosOverview::HoldingLine& line,
                                        QuoteProvider& quotes,
                                        const PortfolioPointer& portfolio = nullptr);

}  // namespace corvane
