// What the rows of a statement come to in the portfolio's currency, and on the shares held.
#pragma once

#include <string>
#include <unordered_map>

#include "exchange/reading/row_values.h"
#include "exchange/reading/statement_options.h"
#include "exchange/reading/statement_rows.h"

namespace corvane {

/// Finishes rows one after the other, in the order in which they are recorded.
class RowMoney {
 public:
  /// `surroundings` outlives it.
  explicit RowMoney(const StatementSurroundings& surroundings) : surroundings_(surroundings) {}

  /// Makes what is recorded of a row that is new. A row whose rate or cost base nobody tells asks
  /// or is refused; one that asks for a rate has its transactions without it, for comparison.
  void finish(StatementRows& rows, std::size_t row);

 private:
  void complete(RowFigures& figures);
  [[nodiscard]] Decimal equivalentOf(const RowFigures& figures);
  [[nodiscard]] Decimal heldBefore(const RowFigures& figures) const;

  const StatementSurroundings& surroundings_;
  std::unordered_map<EquityPointer, Decimal> added_;  ///< shares that the file has brought so far
  std::string rate_;                                  ///< of the row, in words
};

}  // namespace corvane
