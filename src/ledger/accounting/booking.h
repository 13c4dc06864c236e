// The rules of the ledger for one transaction: what it requires, and the balances after it.
#pragma once

#include <optional>

#include "ledger/portfolio/portfolio.h"
#include "ledger/portfolio/portfolio_snapshot.h"
#include "ledger/portfolio/portfolio_transaction.h"

namespace corvane {

/// Throws PortfolioManagerError::LedgerInconsistency where `portfolio` keeps no cash accounts, so
/// that `transfer` has no place in it.
void requireCashAccounts(const Portfolio& portfolio, const BasicTransaction& transfer);

/// What a row derives from the state before it.
struct BookedFigures {
  std::optional<Decimal> cashNet = {};
  std::optional<Decimal> sharesNet = {};
  std::optional<Decimal> costBasePrior = {};
  std::optional<Decimal> capitalGain = {};
  /// The holding that a yield was paid on which does not say so itself.
  std::optional<Decimal> sharesOfYield = {};
};

/// Which of its two balances a transaction is booked on. Neither depends on the other.
struct BookedParts {
  bool cash = true;
  bool holding = true;
};

/// Books `basic` on `state`, the balances before it, which become those after it.
///
/// Besides sufficiency, completeness and precision it sees to it that every figure is a number and
/// that every balance can be kept exactly: a sum that needs more digits than the decimal has is
/// refused, never rounded. Throws PortfolioManagerError, in which `row` is the one at fault; then
/// `state` is good for nothing. Changes nothing else.
[[nodiscard]] BookedFigures book(const BasicTransaction& basic, const TransactionPointer& row,
                                 const Portfolio& portfolio, PortfolioSnapshot& state,
                                 BookedParts parts = {});

}  // namespace corvane
