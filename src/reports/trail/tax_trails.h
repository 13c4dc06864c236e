// Why a gain is taxed as it is, and why a loss is denied.
#pragma once

#include <span>

#include "reports/tax/tax_year.h"
#include "reports/trail/trail_node.h"

namespace corvane {

/// The tax gain of `disposal`, a line of the year that `question` has asked for: proceeds, the cost
/// base of the pool row by row, and what is denied, with each purchase in the window and each
/// holding at its end. The row may have moved in its ledger meanwhile; where the ledgers no longer
/// give the line, it is one leaf that says so. On the main queue, or on any thread for frozen
/// ledgers.
[[nodiscard]] TrailNode taxGainTrail(const TaxYear::Disposal& disposal,
                                     std::span<const TaxedPortfolio> portfolios,
                                     const TaxYearQuestion& question, const Calendar& calendar);

/// The cost base of what `disposal` has sold, rounded as it is shown. As above.
[[nodiscard]] TrailNode taxCostTrail(const TaxYear::Disposal& disposal,
                                     std::span<const TaxedPortfolio> portfolios,
                                     const TaxYearQuestion& question, const Calendar& calendar);

/// The cost base that a person is left with at the end of the year: the rows of all of his
/// portfolios since he held nothing, and the losses that were denied. Where shares are matched with
/// purchases, those of a day enter the pool less what sales have taken of them. As above.
[[nodiscard]] TrailNode taxCostAtEndTrail(const TaxYear::CostAtEnd& cost,
                                          std::span<const TaxedPortfolio> portfolios,
                                          const TaxYearQuestion& question,
                                          const Calendar& calendar);

}  // namespace corvane
