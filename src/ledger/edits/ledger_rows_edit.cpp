#include "ledger/edits/ledger_rows_edit.h"

#include <algorithm>
#include <cassert>
#include <ranges>

namespace corvane {
namespace {

Date settlementDateOf(const TransactionPointer& row) {
  return row->settlementDate();
}

// Dates are compared as numbers: every row that got into a ledger has a finite date.
struct Earlier {
  bool operator()(Date left, Date right) const { return left < right; }
};

auto at(LedgerRowsEdit::Rows& rows, std::size_t position) {
  return rows.begin() + static_cast<std::ptrdiff_t>(position);
}

}  // namespace

void LedgerRowsEdit::insert(std::size_t position, TransactionPointer row) {
  assert(position <= rows_.size());
  changes_.push_back({Change::Kind::inserted, position, row, nullptr, false});
  rows_.insert(at(rows_, position), std::move(row));
  lowest_ = std::min(lowest_, position);
}

void LedgerRowsEdit::remove(std::size_t position) {
  assert(position < rows_.size());
  changes_.push_back({Change::Kind::removed, position, rows_[position], nullptr, false});
  rows_.erase(at(rows_, position));
  lowest_ = std::min(lowest_, position);
}

void LedgerRowsEdit::move(std::size_t from, std::size_t to) {
  lowest_ = std::min(lowest_, from);
  if (from != to) {
    TransactionPointer row = rows_[from];
    remove(from);
    insert(to, std::move(row));
  }
}

void LedgerRowsEdit::revise(std::size_t position, BasicTransaction transaction) {
  const TransactionPointer& row = rows_[position];
  changes_.push_back({Change::Kind::revised, position, row,
                      std::make_unique<BasicTransaction>(std::move(row->basic)), row->isDirty});
  row->basic = std::move(transaction);
  row->isDirty = true;
  lowest_ = std::min(lowest_, position);
}

void LedgerRowsEdit::takeBack() {
  for (Change& change : changes_ | std::views::reverse) {
    switch (change.kind) {
      case Change::Kind::inserted:
        rows_.erase(at(rows_, change.position));
        break;
      case Change::Kind::removed:
        rows_.insert(at(rows_, change.position), change.row);
        break;
      case Change::Kind::revised:
        change.row->basic = std::move(*change.formerTransaction);
        change.row->isDirty = change.wasDirty;
        break;
    }
  }
  changes_.clear();
}

std::optional<std::size_t> positionOf(const PortfolioTransaction& row,
                                      const std::vector<TransactionPointer>& rows) {
  const auto ofItsDate =
      std::ranges::equal_range(rows, row.settlementDate(), Earlier(), settlementDateOf);
  auto found = std::ranges::find(ofItsDate, &row, &TransactionPointer::get);
  if (found == ofItsDate.end()) {
    // Between two steps of an edit the rows may be out of order, where the search by date fails.
    found = std::ranges::find(rows, &row, &TransactionPointer::get);
  }
  if (found == rows.end()) {
    return std::nullopt;
  }
  return static_cast<std::size_t>(found - rows.begin());
}

std::size_t positionByDate(Date settlementDate, const std::vector<TransactionPointer>& rows) {
  // Most rows are recorded at the end, many at a time.
  if (rows.empty() || !(settlementDate < rows.back()->settlementDate())) {
    return rows.size();
  }
  const auto later = std::ranges::upper_bound(rows, settlementDate, Earlier(), settlementDateOf);
  return static_cast<std::size_t>(later - rows.begin());
}

}  // namespace corvane
