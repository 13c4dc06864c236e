// Splits of a statement that leave out how many shares were held before them.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "exchange/reading/statement_rows.h"
#include "ledger/portfolio/portfolio.h"

namespace corvane {

/// Works out what was held before such splits, from the ledger and from the new rows of the file.
/// A row that the ledger has already counts there alone, so it is made before a file is matched
/// with the ledger, and settles afterwards. Main queue only.
class HeldSplits {
 public:
  /// Gives those of `rows` that the ledger of `portfolio` has already its figures, so that they can
  /// be matched. The others stay unfinished.
  HeldSplits(StatementRows& rows, Portfolio& portfolio, const Calendar& calendar);

  /// Finishes the splits that are new, in the order in which rows are recorded; to be called again
  /// where that order has changed. What is held before one is what the ledger will have where it is
  /// recorded: all that it has until the end of the day of settlement, and the new rows before it.
  void settle(StatementRows& rows) const;

 private:
  using HeldByDay = std::vector<std::pair<Date, Decimal>>;  ///< after a row, by settlement

  void noteLedger(Portfolio& portfolio);
  void findInLedger(StatementRows& rows, Portfolio& portfolio) const;
  [[nodiscard]] Decimal heldAfter(const RowFigures& split) const;

  Calendar calendar_;
  std::unordered_map<std::uint32_t, RowFigures> told_;  ///< what the file tells, by the line
  std::unordered_map<std::string, HeldByDay> held_;     ///< by the id of an equity that is split
};

}  // namespace corvane
