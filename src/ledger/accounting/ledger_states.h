// The balances at a place in a ledger.
#pragma once

#include <cstddef>

#include "ledger/portfolio/portfolio.h"
#include "ledger/portfolio/portfolio_snapshot.h"
#include "platform/time/calendar.h"

namespace corvane {

/// The state just before the row at `index`; that after the last row where there is no such row.
/// Years are those of `calendar`. Reads at most one calendar year of rows. Throws
/// PortfolioManagerError::LedgerInconsistency for the first of them that disagrees with its
/// balances.
[[nodiscard]] PortfolioSnapshot stateBefore(std::size_t index, Portfolio& portfolio,
                                            const Calendar& calendar);

/// The same for a walk that starts at `index`. It never trusts the snapshot of the year itself,
/// which after a deletion at the end of the ledger still counts the deleted rows, and starts from
/// where the last walk started where that is nearer than the year's start: most edits follow one
/// another at the end of a ledger.
[[nodiscard]] PortfolioSnapshot walkStart(std::size_t index, Portfolio& portfolio,
                                          const Calendar& calendar);

}  // namespace corvane
