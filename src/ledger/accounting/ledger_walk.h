// The walk over a ledger that derives the balances of its rows and refuses what would break them.
#pragma once

#include <deque>
#include <memory>
#include <optional>
#include <utility>

#include "ledger/portfolio/portfolio.h"
#include "ledger/portfolio/portfolio_snapshot.h"
#include "ledger/portfolio/portfolio_transaction.h"

namespace corvane {

/// Throws PortfolioManagerError::LedgerInconsistency where `row` settled before `previous`.
void requireLedgerOrder(const PortfolioTransaction& previous, const PortfolioTransaction& row);

/// Derives the balances of consecutive rows from a running state, by booking one after the other.
/// It knows nothing of how the ledger is edited or kept.
class LedgerWalk {
 public:
  /// `portfolio` must outlive the walk.
  LedgerWalk(const Portfolio& portfolio, PortfolioSnapshot start)
      : portfolio_(portfolio), state_(std::move(start)) {}

  /// Validates `row` and derives its balances; sets isDirty where one of them changes. Throws
  /// PortfolioManagerError, after which only restoreRows() may follow.
  void derive(const TransactionPointer& row);

  /// The state after the last row.
  [[nodiscard]] const PortfolioSnapshot& state() const { return state_; }

  /// What a row was before this walk derived it.
  struct Before {
    /// Gives the row its former balances and transaction.
    void restore();

    struct Figures {
      OptionalDecimal cashNet;
      OptionalDecimal sharesNet;
      OptionalDecimal costBasePrior;
    };
    TransactionPointer row;
    std::unique_ptr<const Figures> figures;  ///< null where it had none, as a new row
    bool wasDirty = false;
    bool filledNetShares = false;
  };

  /// The rows that are dirty after their derivation, in ledger order: those whose balances changed,
  /// and those that were dirty before.
  [[nodiscard]] const std::deque<Before>& dirtyRows() const { return dirtyRows_; }
  /// Hands the dirty rows over, at the end of the walk.
  [[nodiscard]] std::deque<Before> takeDirtyRows() { return std::move(dirtyRows_); }

  /// Gives every row that this walk has touched its former balances and transaction.
  void restoreRows();

 private:
  const Portfolio& portfolio_;
  PortfolioSnapshot state_;
  const PortfolioTransaction* previous_ = nullptr;
  std::deque<Before> dirtyRows_;
};

}  // namespace corvane
