// The rows of a ledger as a linked list, for edits of many rows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <unordered_map>
#include <vector>

#include "ledger/portfolio/portfolio_transaction.h"

namespace corvane {

/// Finds, inserts and removes a row in constant time, or by date in logarithmic time, where a
/// vector would take time for every row behind it. Made of a vector and made into one at the end.
class LinkedRows {
 public:
  explicit LinkedRows(const std::vector<TransactionPointer>& rows);

  [[nodiscard]] bool has(const PortfolioTransaction& row) const { return places_.contains(&row); }
  /// The row behind `row`, or null.
  [[nodiscard]] TransactionPointer after(const PortfolioTransaction& row) const {
    return nodes_[nodes_[places_.at(&row)].next].row;
  }
  /// Puts a new row in front of `anchor`, or at the end where that is null.
  void insert(const TransactionPointer& row, const TransactionPointer& anchor);
  /// Puts a new row behind all rows of its settlement date. The rows are in the order of their
  /// dates.
  void insertByDate(const TransactionPointer& row);
  void remove(const PortfolioTransaction& row);

  [[nodiscard]] std::vector<TransactionPointer> rows() const;

 private:
  using Place = std::uint32_t;
  /// The list is a ring through the node at 0, which has no row.
  struct Node {
    TransactionPointer row;
    Place previous = 0;
    Place next = 0;
  };

  Place append(const TransactionPointer& row);
  void link(Place place, Place next);
  void findLastOfDates();

  std::vector<Node> nodes_;
  std::unordered_map<const PortfolioTransaction*, Place> places_;
  /// The last row of each finite date; none until a row is placed by date.
  std::optional<std::map<Date, Place>> lastOfDate_;
};

}  // namespace corvane
