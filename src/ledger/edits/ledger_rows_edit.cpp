#include "ledger/edits/ledger_rows_edit.h"

#include <algorithm>
#include <cassert>
#include <ranges>
#include <unordered_set>

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

/// Up to here moving the rows behind each change is faster than making a list of all of them.
constexpr std::size_t fewChanges = 8;

}  // namespace

LedgerRowsEdit::LedgerRowsEdit(Rows& rows, std::size_t changeCount)
    : rows_(rows), lowest_(rows.size()) {
  if (changeCount > fewChanges) {
    list_.emplace(rows);
  }
}

bool LedgerRowsEdit::has(const PortfolioTransaction& row) const {
  return list_ ? list_->has(row) : positionOf(row, rows_).has_value();
}

std::size_t LedgerRowsEdit::placeOf(const PortfolioTransaction& row) const {
  const auto position = positionOf(row, rows_);
  assert(position && "the row stands in the ledger");
  return *position;
}

TransactionPointer LedgerRowsEdit::rowAfter(const PortfolioTransaction& row) const {
  if (list_) {
    return list_->after(row);
  }
  const std::size_t next = placeOf(row) + 1;
  return next < rows_.size() ? rows_[next] : nullptr;
}

void LedgerRowsEdit::insert(const TransactionPointer& row, const TransactionPointer& anchor) {
  if (list_) {
    list_->insert(row, anchor);
  } else {
    insertAt(anchor == nullptr ? rows_.size() : placeOf(*anchor), row);
  }
}

void LedgerRowsEdit::insertByDate(const TransactionPointer& row) {
  if (list_) {
    list_->insertByDate(row);
  } else {
    insertAt(positionByDate(row->settlementDate(), rows_), row);
  }
}

void LedgerRowsEdit::remove(const TransactionPointer& row) {
  if (list_) {
    list_->remove(*row);
  } else {
    removeAt(placeOf(*row));
  }
}

void LedgerRowsEdit::move(const TransactionPointer& row, const TransactionPointer& anchor) {
  if (row == anchor) {
    return;
  }
  remove(row);
  insert(row, anchor);
}

void LedgerRowsEdit::revise(const TransactionPointer& row, BasicTransaction transaction) {
  const std::size_t position = list_ ? 0 : placeOf(*row);
  lowest_ = list_ ? lowest_ : std::min(lowest_, position);
  changes_.push_back({Change::Kind::revised, position, row,
                      std::make_unique<BasicTransaction>(std::move(row->basic)), row->isDirty});
  row->basic = std::move(transaction);
  row->isDirty = true;
}

void LedgerRowsEdit::reviseByDate(const TransactionPointer& row, BasicTransaction transaction) {
  remove(row);
  changes_.push_back({Change::Kind::revised, 0, row,
                      std::make_unique<BasicTransaction>(std::move(row->basic)), row->isDirty});
  row->basic = std::move(transaction);
  row->isDirty = true;
  insertByDate(row);
}

void LedgerRowsEdit::insertAt(std::size_t position, const TransactionPointer& row) {
  assert(position <= rows_.size());
  if (!changes_.empty() && changes_.back().kind == Change::Kind::inserted &&
      changes_.back().position + changes_.back().count == position) {
    ++changes_.back().count;
  } else {
    changes_.push_back({Change::Kind::inserted, position, nullptr, nullptr, false});
  }
  rows_.insert(at(rows_, position), row);
  lowest_ = std::min(lowest_, position);
}

void LedgerRowsEdit::removeAt(std::size_t position) {
  assert(position < rows_.size());
  changes_.push_back({Change::Kind::removed, position, rows_[position], nullptr, false});
  rows_.erase(at(rows_, position));
  lowest_ = std::min(lowest_, position);
}

std::size_t LedgerRowsEdit::apply() {
  const std::size_t lowest = list_ ? applyList() : lowest_;
  lowest_ = rows_.size();
  return std::min(lowest, rows_.size());
}

std::size_t LedgerRowsEdit::applyList() {
  Rows edited = list_->rows();
  list_.reset();
  std::unordered_set<const PortfolioTransaction*> revised;
  for (const Change& change : changes_) {
    revised.insert(change.row.get());
  }
  std::size_t first = 0;
  while (first < edited.size() && first < rows_.size() && edited[first] == rows_[first] &&
         !revised.contains(edited[first].get())) {
    ++first;
  }
  formerRows_ = std::exchange(rows_, std::move(edited));
  return first;
}

void LedgerRowsEdit::takeBack() {
  for (Change& change : changes_ | std::views::reverse) {
    if (change.kind == Change::Kind::revised) {
      change.row->basic = std::move(*change.formerTransaction);
      change.row->isDirty = change.wasDirty;
    } else if (formerRows_) {
      continue;
    } else if (change.kind == Change::Kind::inserted) {
      rows_.erase(at(rows_, change.position), at(rows_, change.position + change.count));
    } else {
      rows_.insert(at(rows_, change.position), change.row);
    }
  }
  if (formerRows_) {
    rows_ = std::move(*formerRows_);
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
