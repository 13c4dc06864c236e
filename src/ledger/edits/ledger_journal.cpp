#include "ledger/edits/ledger_journal.h"

#include <algorithm>
#include <cassert>
#include <iterator>
#include <utility>

namespace corvane {

void LedgerJournal::takeYearsFrom(int firstYear) {
  // What a former walk of this edit has made is nothing to come back to.
  years_.erase(years_.lower_bound(std::max(firstYear, firstTakenYear_)), years_.end());
  while (!years_.empty() && std::prev(years_.end())->first >= firstYear) {
    formerYears_.insert(years_.extract(std::prev(years_.end())));
  }
  firstTakenYear_ = std::min(firstTakenYear_, firstYear);
  isUsed_ = true;
  assert(years_.empty() || years_.rbegin()->first < firstYear);
  assert(formerYears_.empty() || formerYears_.begin()->first >= firstTakenYear_);
}

void LedgerJournal::keep(std::deque<LedgerWalk::Before> rows) {
  if (rows_.empty()) {
    rows_ = std::move(rows);
    return;
  }
  if (kept_.empty()) {
    for (const LedgerWalk::Before& before : rows_) {
      kept_.insert(before.row.get());
    }
  }
  // What a former walk of this edit has made of a row is nothing to come back to.
  for (LedgerWalk::Before& before : rows) {
    if (kept_.insert(before.row.get()).second) {
      rows_.push_back(std::move(before));
    }
  }
  assert(kept_.size() == rows_.size() && "each row comes back to one state");
}

void LedgerJournal::restore() {
  for (LedgerWalk::Before& before : rows_) {
    before.restore();
  }
  rows_.clear();
  kept_.clear();
  if (isUsed_) {
    takeYearsFrom(firstTakenYear_);
  }
  years_.merge(formerYears_);
  assert(formerYears_.empty() && "no year has two snapshots");
}

}  // namespace corvane
