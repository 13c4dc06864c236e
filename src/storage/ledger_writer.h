// Writes one change of a ledger to the database.
#pragma once

#include <algorithm>
#include <optional>
#include <vector>

#include "platform/data/sqlite.h"
#include "storage/stored_portfolio.h"

namespace corvane {

/// Gathers what one change of a ledger has done to its rows and yearly totals and writes it at the
/// end, so that a row that is walked and renumbered many times is written once. All inside the
/// transaction of the change; when that is rolled back, restore() brings the row ids and numbers in
/// memory back as well.
class LedgerWriter {
 public:
  using Transactions = std::vector<TransactionPointer>;

  /// Both must outlive the writer.
  LedgerWriter(SQLiteDatabase& database, StoredPortfolio& portfolio)
      : database_(database), portfolio_(portfolio), formerSharesFactor_(portfolio.sharesFactor) {}

  /// `row` has to be written.
  void rowChanged(StoredPortfolioTransaction& row);
  /// The yearly totals of `year` and those after it have to be written.
  void totalsChanged(int year) { firstYear_ = std::min(firstYear_.value_or(year), year); }

  /// Deletes rows that are no longer in the ledger; they lose their ids.
  void remove(const Transactions& rows);
  /// Numbers the rows of each settlement date from the earliest one of `placed` on, and sees to it
  /// that all of `placed` get into the file.
  void resequence(const Transactions& placed);
  /// Writes what has been gathered. Throws SQLiteError, and PortfolioManagerError for figures that
  /// cannot be kept.
  void flush();

  /// Takes back in memory what the transaction had done.
  void restore();

 private:
  /// A row and its place in the database before the change.
  struct Former {
    StoredPortfolioTransaction* row;
    std::optional<std::int64_t> transactionId;
    int dateSequence;
  };

  [[nodiscard]] int requiredShareDecimals() const;
  void rescaleShares(int decimals);
  void write(StoredPortfolioTransaction& row);
  [[nodiscard]] std::int64_t equityRowId(const EquityPointer& equity);
  void writeEquityTotals(int firstYear);
  void writeCashTotals(int firstYear);
  template <typename WriteYear>
  void forEachYear(int firstYear, WriteYear writeYear) const;

  SQLiteDatabase& database_;
  StoredPortfolio& portfolio_;
  const Decimal formerSharesFactor_;
  std::vector<Former> changed_;  ///< the rows that await writing
  std::vector<Former> removed_;
  std::optional<int> firstYear_;
};

}  // namespace corvane
