// What the rows of a statement come to in the portfolio's currency.
#pragma once

#include <string>

#include "exchange/reading/row_values.h"
#include "exchange/reading/statement_options.h"
#include "exchange/reading/statement_rows.h"

namespace corvane {

/// Finishes rows one after the other.
class RowMoney {
 public:
  /// `surroundings` outlives it.
  explicit RowMoney(const StatementSurroundings& surroundings) : surroundings_(surroundings) {}

  /// Makes what is recorded of a row that is new. A row whose rate or cost base nobody tells asks
  /// or is refused; one that asks for a rate has its transactions without it, for comparison. A
  /// split that leaves out what was held before it stays unfinished (HeldSplits).
  void finish(StatementRows& rows, std::size_t row);

 private:
  void complete(RowFigures& figures);
  [[nodiscard]] Decimal equivalentOf(const RowFigures& figures);

  const StatementSurroundings& surroundings_;
  std::string rate_;  ///< of the row, in words
};

}  // namespace corvane
