// What an edit has done to the derived state of a ledger, kept so that all can be taken back.
#pragma once

#include <deque>
#include <limits>
#include <map>
#include <optional>
#include <unordered_set>

#include "ledger/accounting/ledger_walk.h"
#include "ledger/portfolio/portfolio_snapshot.h"

namespace corvane {

/// The balances of rows and the yearly snapshots as they were before the walks of one edit. With
/// LedgerRowsEdit, which keeps the rows themselves, it makes an edit all-or-nothing. What it keeps
/// grows with the rows that the edit changes, not with the number of its walks.
class LedgerJournal {
 public:
  using Years = std::map<int, PortfolioSnapshot>;

  /// `years` must outlive the journal.
  explicit LedgerJournal(Years& years) : years_(years) {}

  /// Takes the snapshots from `firstYear` on away, for a walk that makes them anew.
  void takeYearsFrom(int firstYear);

  /// The first year that a walk has made anew; none before the first walk.
  [[nodiscard]] std::optional<int> firstTakenYear() const {
    return isUsed_ ? std::optional(firstTakenYear_) : std::nullopt;
  }

  /// To be called with the rows of each walk that has succeeded.
  void keep(std::deque<LedgerWalk::Before> rows);

  /// The rows that have been kept, each once.
  [[nodiscard]] const std::deque<LedgerWalk::Before>& rows() const { return rows_; }

  /// Brings balances and snapshots back to what they were at the start. To be called before the
  /// rows themselves are taken back.
  void restore();

 private:
  Years& years_;
  Years formerYears_;
  bool isUsed_ = false;
  int firstTakenYear_ = std::numeric_limits<int>::max();
  std::deque<LedgerWalk::Before> rows_;                   ///< each row once
  std::unordered_set<const PortfolioTransaction*> kept_;  ///< those of rows_, after a second walk
};

}  // namespace corvane
