// Rows of a statement that are one transaction: the parts and legs of one order.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "exchange/pools/text_pool.h"
#include "exchange/reading/statement_rows.h"

namespace corvane {

/// Rows of one order are one transaction where one of them is a trade or a yield, and their legs
/// come to one currency. An order that was carried out in parts is one trade.
class RowGroups {
 public:
  /// Says that the row at `row` is of the order `group`, which may be empty for none.
  void add(std::uint32_t row, std::string_view group);
  /// Follows rows that have gone to other places: the row at `i` is now what was at `order[i]`.
  void reorder(const std::vector<std::uint32_t>& order);
  /// Puts the amounts of the rows of each order into one of them; the others belong to it.
  void merge(StatementRows& rows);

 private:
  struct Member {
    std::uint64_t hash = 0;
    TextPool::Key group = TextPool::empty;
    std::uint32_t row = 0;
  };

  TextPool groups_;
  std::vector<Member> members_;
};

}  // namespace corvane
