// Why a gain is taxed as it is, and why a loss is denied.
#pragma once

#include <optional>
#include <span>

#include "reports/tax/tax_year.h"
#include "reports/trail/trail_node.h"

namespace corvane {

/// The tax gain of `disposal`, a line of the year that `question` has asked for: proceeds, the cost
/// base of the pool row by row, and what is denied, with each purchase in the window and each
/// holding at its end. None where the ledgers no longer have that row. On the main queue, or on any
/// thread for frozen ledgers.
[[nodiscard]] std::optional<TrailNode> taxGainTrail(const TaxYear::Disposal& disposal,
                                                    std::span<const TaxedPortfolio> portfolios,
                                                    const TaxYearQuestion& question,
                                                    const Calendar& calendar);

}  // namespace corvane
