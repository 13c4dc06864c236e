// Reads the rows and the yearly totals of a portfolio from the database.
#pragma once

#include <functional>
#include <vector>

#include "core/market/quote_provider.h"
#include "platform/data/sqlite.h"
#include "storage/database/stored_portfolio.h"

namespace corvane {

/// The columns of one result as numbers, where a column that is missing from a row and one of
/// another kind are the same: nothing.
class StoredNumbers {
 public:
  explicit StoredNumbers(const SQLiteStatement& row) : row_(row) {}

  [[nodiscard]] std::optional<std::int64_t> whole(int column) const;
  /// A whole number, or a double as the shortest decimal that it stands for.
  [[nodiscard]] std::optional<Decimal> number(int column) const;
  /// A finite count of seconds since 1970.
  [[nodiscard]] std::optional<Date> date(int column) const;
  [[nodiscard]] std::optional<std::string_view> text(int column) const;

 private:
  const SQLiteStatement& row_;
};

/// The currency with this ISO 4217 number. Throws PortfolioManagerError::UnknownCurrency.
[[nodiscard]] const Currency& currencyWithNumber(std::int64_t number);

/// The ledger of `portfolio` in its order, with the balances that stand in the file. `tell` hears,
/// where there is one, what part of the rows has been read. Throws SQLiteError, and
/// PortfolioManagerError for a row that is not as it should be.
[[nodiscard]] std::vector<TransactionPointer> readTransactions(
    SQLiteDatabase& database, const std::shared_ptr<StoredPortfolio>& portfolio,
    QuoteProvider& provider, const std::function<void(double)>& tell = nullptr);

/// The dates of all rows of all portfolios, each once. Dates that are none are passed over. Throws
/// SQLiteError.
[[nodiscard]] std::vector<Date> readDifferentDates(SQLiteDatabase& database);

/// Fills `snapshotsByYear` of `portfolio`. Throws like readTransactions.
void readYearlyTotals(SQLiteDatabase& database, StoredPortfolio& portfolio,
                      QuoteProvider& provider);

}  // namespace corvane
