// The self-check of a ledger: do its rows agree with the balances they have?
#pragma once

#include <span>

#include "ledger/portfolio/portfolio_snapshot.h"
#include "ledger/portfolio/portfolio_transaction.h"

namespace corvane {

/// The state after `rows`, consecutive rows of one portfolio, where it was `start` before. Verifies
/// order and balances of every row, not whether cash and shares sufficed; writes nothing. Throws
/// PortfolioManagerError::LedgerInconsistency with the first row that disagrees.
[[nodiscard]] PortfolioSnapshot replayLedger(std::span<const TransactionPointer> rows,
                                             PortfolioSnapshot start);

}  // namespace corvane
