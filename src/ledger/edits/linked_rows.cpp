#include "ledger/edits/linked_rows.h"

#include <cassert>
#include <cmath>
#include <iterator>

namespace corvane {
namespace {

bool hasFiniteDate(const PortfolioTransaction& row) {
  return std::isfinite(row.settlementDate().timeIntervalSinceReferenceDate());
}

}  // namespace

LinkedRows::LinkedRows(const std::vector<TransactionPointer>& rows) {
  nodes_.reserve(rows.size() + 1);
  nodes_.emplace_back();
  places_.reserve(rows.size());
  for (const TransactionPointer& row : rows) {
    link(append(row), 0);
  }
}

LinkedRows::Place LinkedRows::append(const TransactionPointer& row) {
  const auto place = static_cast<Place>(nodes_.size());
  nodes_.push_back({row, 0, 0});
  [[maybe_unused]] const bool isNew = places_.emplace(row.get(), place).second;
  assert(isNew && "a row stands in a ledger once");
  return place;
}

void LinkedRows::link(Place place, Place next) {
  const Place previous = nodes_[next].previous;
  nodes_[place].previous = previous;
  nodes_[place].next = next;
  nodes_[previous].next = place;
  nodes_[next].previous = place;
}

void LinkedRows::insert(const TransactionPointer& row, const TransactionPointer& anchor) {
  lastOfDate_.reset();
  link(append(row), anchor == nullptr ? 0 : places_.at(anchor.get()));
}

void LinkedRows::insertByDate(const TransactionPointer& row) {
  const Place place = append(row);
  if (!hasFiniteDate(*row)) {
    link(place, 0);  // where the walk will refuse it
    return;
  }
  findLastOfDates();
  const auto later = lastOfDate_->upper_bound(row->settlementDate());
  link(place,
       later == lastOfDate_->begin() ? nodes_[0].next : nodes_[std::prev(later)->second].next);
  lastOfDate_->insert_or_assign(row->settlementDate(), place);
}

void LinkedRows::findLastOfDates() {
  if (lastOfDate_) {
    return;
  }
  lastOfDate_.emplace();
  for (Place place = nodes_[0].next; place != 0; place = nodes_[place].next) {
    if (hasFiniteDate(*nodes_[place].row)) {
      const Date date = nodes_[place].row->settlementDate();
      lastOfDate_->insert_or_assign(lastOfDate_->end(), date, place)->second = place;
    }
  }
}

void LinkedRows::remove(const PortfolioTransaction& row) {
  const auto found = places_.find(&row);
  assert(found != places_.end());
  const Place place = found->second;
  Node& node = nodes_[place];
  if (lastOfDate_) {
    const auto last = lastOfDate_->find(row.settlementDate());
    if (last != lastOfDate_->end() && last->second == place) {
      const TransactionPointer& before = nodes_[node.previous].row;
      if (before != nullptr && before->settlementDate() == row.settlementDate()) {
        last->second = node.previous;
      } else {
        lastOfDate_->erase(last);
      }
    }
  }
  nodes_[node.previous].next = node.next;
  nodes_[node.next].previous = node.previous;
  places_.erase(found);
  node.row.reset();
}

std::vector<TransactionPointer> LinkedRows::rows() const {
  std::vector<TransactionPointer> rows;
  rows.reserve(places_.size());
  for (Place place = nodes_[0].next; place != 0; place = nodes_[place].next) {
    rows.push_back(nodes_[place].row);
  }
  return rows;
}

}  // namespace corvane
