// One change of a ledger on its way: its rows, its walks, and the way back.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <ranges>
#include <vector>

#include "ledger/edits/ledger_journal.h"
#include "ledger/edits/ledger_rows_edit.h"
#include "ledger/portfolio/portfolio.h"
#include "platform/time/calendar.h"

namespace corvane {

/// What an edit of a ledger works on and hands on to whoever keeps the ledger elsewhere.
///
/// The edit changes rows(), walks them, and says in `placed` and `removed` what it was about. The
/// keeper then writes what wasRecalculated() and firstRecalculatedYear() tell, and names the row
/// that it is writing. takeBack() makes all of it undone. One change of a ledger at a time.
class LedgerChange {
 public:
  using Transactions = std::vector<TransactionPointer>;
  /// Told of each row whose balances a walk has changed, in ledger order, once the walk is through.
  using RowRecalculated = std::function<void(PortfolioTransaction&)>;
  /// Told how many rows that were new have been walked by now: after each of them, and again while
  /// the keeper writes. What it throws ends the change.
  using NewRowsWalked = std::function<void(std::size_t count)>;

  /// For about `rowChanges` changes of the rows. Years are those of `calendar`, which must outlive
  /// the change.
  LedgerChange(PortfolioPointer portfolio, const Calendar& calendar, std::size_t rowChanges,
               RowRecalculated rowRecalculated, NewRowsWalked newRowsWalked = nullptr);
  LedgerChange(const LedgerChange&) = delete;
  LedgerChange& operator=(const LedgerChange&) = delete;

  [[nodiscard]] Portfolio& portfolio() const { return *portfolio_; }
  [[nodiscard]] LedgerRowsEdit& rows() { return rowsEdit_; }

  Transactions placed;   ///< recorded, revised, inserted or moved
  Transactions removed;  ///< deleted

  /// Walks from the first of the changes of rows() since the last walk on; see walkFrom().
  TransactionSet walk();

  /// Derives the balances of all rows from `startIndex` on, which may equal the number of rows, and
  /// the yearly snapshots. Returns the rows whose balances changed and those that were dirty
  /// before. Throws PortfolioManagerError, and what the handlers throw.
  TransactionSet walkFrom(std::size_t startIndex);

  /// The rows whose balances or whose transaction the walks have changed, each once.
  [[nodiscard]] auto wasRecalculated() const {
    return journal_.rows() | std::views::transform(&LedgerWalk::Before::row);
  }
  /// The first year whose snapshot may differ; none where nothing was walked.
  [[nodiscard]] std::optional<int> firstRecalculatedYear() const {
    return journal_.firstTakenYear();
  }

  /// To be called by the keeper with each row before it writes it, and without one when it goes on
  /// to something else.
  void willKeep(const PortfolioTransaction* row);
  /// The row that the keeper was writing when it failed.
  [[nodiscard]] const PortfolioTransaction* rowBeingKept() const { return rowBeingKept_; }

  /// Brings rows, balances and snapshots back to what they were at the start.
  void takeBack();

 private:
  void deriveRows(LedgerWalk& walk, std::size_t startIndex);
  void tellNewRows() const;

  PortfolioPointer portfolio_;
  const Calendar& calendar_;
  LedgerRowsEdit rowsEdit_;
  LedgerJournal journal_;
  RowRecalculated rowRecalculated_;
  NewRowsWalked newRowsWalked_;
  std::size_t newRowCount_ = 0;
  const PortfolioTransaction* rowBeingKept_ = nullptr;
};

}  // namespace corvane
