#include "ledger/edits/ledger_change.h"

#include <cassert>
#include <limits>
#include <utility>

#include "ledger/accounting/calendar_years.h"
#include "ledger/accounting/ledger_states.h"

namespace corvane {

LedgerChange::LedgerChange(PortfolioPointer portfolio, const Calendar& calendar,
                           std::size_t rowChanges, RowRecalculated rowRecalculated,
                           NewRowsWalked newRowsWalked)
    : portfolio_(std::move(portfolio)),
      calendar_(calendar),
      rowsEdit_(portfolio_->transactions(), rowChanges),
      journal_(portfolio_->snapshotsByYear),
      rowRecalculated_(std::move(rowRecalculated)),
      newRowsWalked_(std::move(newRowsWalked)) {}

TransactionSet LedgerChange::walk() {
  const std::size_t start = rowsEdit_.apply();
  const auto& rows = portfolio_->transactions();
  // The walk compares each row with the one before it, but for its first.
  if (start > 0 && start < rows.size()) {
    requireLedgerOrder(*rows[start - 1], *rows[start]);
  }
  return walkFrom(start);
}

TransactionSet LedgerChange::walkFrom(std::size_t startIndex) {
  const auto& rows = portfolio_->transactions();
  assert(startIndex <= rows.size());
  portfolio_->lastWalkStart = {startIndex, walkStart(startIndex, *portfolio_, calendar_)};
  LedgerWalk walk(*portfolio_, portfolio_->lastWalkStart->state);
  auto& snapshots = portfolio_->snapshotsByYear;
  if (startIndex == 0) {
    journal_.takeYearsFrom(std::numeric_limits<int>::min());
  } else {
    const int lastKept =
        calendar_.component(CalendarUnit::year, rows[startIndex - 1]->settlementDate());
    journal_.takeYearsFrom(lastKept);
    snapshots.insert_or_assign(lastKept, walk.state());
  }
  try {
    deriveRows(walk, startIndex);
    for (const LedgerWalk::Before& before : walk.dirtyRows()) {
      rowRecalculated_(*before.row);
      before.row->isDirty = false;
    }
  } catch (...) {
    walk.restoreRows();
    throw;
  }
  assert(snapshots.empty() == rows.empty() && "a ledger has the totals of its last year");

  TransactionSet recalculated;
  recalculated.reserve(walk.dirtyRows().size());
  for (const LedgerWalk::Before& before : walk.dirtyRows()) {
    recalculated.insert(before.row);
  }
  assert(recalculated.size() == walk.dirtyRows().size() && "no row stands in a ledger twice");
  journal_.keep(walk.takeDirtyRows());
  return recalculated;
}

void LedgerChange::deriveRows(LedgerWalk& walk, std::size_t startIndex) {
  const auto& rows = portfolio_->transactions();
  auto& snapshots = portfolio_->snapshotsByYear;
  CalendarYears years(calendar_);
  for (std::size_t i = startIndex; i < rows.size(); ++i) {
    const bool isNew = !rows[i]->cashNet && !rows[i]->sharesNet;
    walk.derive(rows[i]);
    const int year = years.yearOf(rows[i]->settlementDate());
    // Only the last row of a year leaves a snapshot behind, so that no row copies the balances.
    if (i + 1 == rows.size() || years.yearOf(rows[i + 1]->settlementDate()) != year) {
      snapshots.insert_or_assign(year, walk.state());
    }
    if (isNew) {
      ++newRowCount_;
      tellNewRows();
    }
  }
}

void LedgerChange::tellNewRows() const {
  if (newRowsWalked_) {
    newRowsWalked_(newRowCount_);
  }
}

void LedgerChange::willKeep(const PortfolioTransaction* row) {
  rowBeingKept_ = row;
  if (row != nullptr) {
    tellNewRows();
  }
}

void LedgerChange::takeBack() {
  journal_.restore();
  portfolio_->lastWalkStart.reset();
  rowsEdit_.takeBack();
}

}  // namespace corvane
