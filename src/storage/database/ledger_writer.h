// Writes one change of a ledger to the database.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "ledger/edits/ledger_change.h"
#include "platform/data/sqlite.h"
#include "storage/database/stored_portfolio.h"

namespace corvane {

/// Writes what one change of a ledger has done to its rows and yearly totals, at its end, so that a
/// row that was walked and renumbered many times is written once. All inside the transaction of the
/// change; when that is rolled back, restore() brings the row ids and numbers in memory back as
/// well.
class LedgerWriter {
 public:
  using Transactions = std::vector<TransactionPointer>;
  struct TotalsTable;

  /// Both must outlive the writer.
  LedgerWriter(SQLiteDatabase& database, StoredPortfolio& portfolio)
      : database_(database), portfolio_(portfolio), formerSharesFactor_(portfolio.sharesFactor) {}

  /// Tells `change` of each row that it writes. Throws SQLiteError, PortfolioManagerError for
  /// figures that cannot be kept, and what the change throws when it is told.
  void write(LedgerChange& change);

  /// Takes back in memory what the transaction had done.
  void restore();

 private:
  /// A row and its place in the database before the change.
  struct Former {
    StoredPortfolioTransaction* row;
    std::optional<std::int64_t> transactionId;
    int dateSequence;
  };

  /// The figures of an equity or a currency at the end of a year, by year and row id or number.
  using Totals = std::map<std::pair<std::int64_t, std::int64_t>, std::vector<SQLiteValue>>;

  /// `row` has to be written.
  void rowChanged(StoredPortfolioTransaction& row);
  /// Deletes rows that are no longer in the ledger; they lose their ids.
  void remove(const Transactions& rows);
  /// Numbers the rows of each settlement date from the earliest one of `placed` on, and sees to it
  /// that all of `placed` get into the file.
  void resequence(const Transactions& placed);
  [[nodiscard]] int requiredShareDecimals(LedgerChange& change) const;
  void rescaleShares(int decimals);
  void write(StoredPortfolioTransaction& row);
  [[nodiscard]] std::int64_t equityRowId(const EquityPointer& equity);
  template <typename Visit>
  void forEachYear(int firstYear, Visit visit) const;
  [[nodiscard]] Totals totalsOfEquities(int firstYear);
  [[nodiscard]] Totals totalsOfCash(int firstYear) const;
  /// Makes `totals` the rows of `table` from `firstYear` on. Rows that are right already stay: an
  /// edit mostly touches one equity of many.
  void writeTotals(const TotalsTable& table, int firstYear, Totals totals);

  SQLiteDatabase& database_;
  StoredPortfolio& portfolio_;
  const Decimal formerSharesFactor_;
  std::vector<Former> changed_;  ///< the rows that await writing
  std::vector<Former> removed_;
  std::vector<SQLiteValue> values_;  ///< of the row that is written, to keep their room
};

}  // namespace corvane
