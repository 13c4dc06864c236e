// The portfolio manager of a workspace: everything that it changes stands in a database file.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ledger/manager/portfolio_manager.h"
#include "platform/data/sqlite.h"
#include "storage/database/stored_portfolio.h"

namespace corvane {

/// Keeps portfolios, their rows and their yearly totals in one SQLite file, which it alone has
/// open.
///
/// Every edit is one transaction of the database: it stands in memory and in the file, or in
/// neither. Opening reads the portfolios and their yearly totals; the rows of a portfolio are read
/// when they are first asked for. Beside what a portfolio manager throws, all operations throw
/// SQLiteError. One thread at a time.
class StoredPortfolioManager final : public PortfolioManager {
  struct Passkey {};

 public:
  /// Opens the file at `databaseFile`, makes it where it is missing, brings an older one up to date
  /// and loads the portfolios. Throws SQLiteError, JSONError for settings that cannot be read, and
  /// PortfolioManagerError for other portfolio data. `portfolioUnderWay` is told the name of the
  /// portfolio that is being read, and is empty while it is none.
  [[nodiscard]] static std::shared_ptr<StoredPortfolioManager> open(
      std::shared_ptr<QuoteProvider> provider, const std::filesystem::path& databaseFile,
      std::string* portfolioUnderWay = nullptr);

  StoredPortfolioManager(Passkey passkey, std::shared_ptr<QuoteProvider> provider,
                         const std::filesystem::path& databaseFile);
  /// Closes the file.
  ~StoredPortfolioManager() override;

  [[nodiscard]] SQLiteDatabase& database() { return database_; }

  /// Hears, where it is set, what part of a portfolio's rows has been read while they are: from 0
  /// to 1.
  std::function<void(double)> readingHandler;

  /// Shrinks the file to what is in use and brings all of it into the main file, so that this alone
  /// can be copied.
  void compactStorage() override;

  PortfolioPointer createPortfolio(const Currency& primaryCurrency) override;
  void portfolioPropertiesDidChange(const PortfolioPointer& portfolio) override;
  void removePortfolio(const PortfolioPointer& portfolio) override;
  void deleteTransactions(const Transactions& subjects, const PortfolioPointer& portfolio,
                          const UndoManagerPointer& undoManager) override;

  /// What the engine finds wrong with the structure of the file; none where it is sound. Reads the
  /// whole file, a good 10 milliseconds for 20,000 rows.
  [[nodiscard]] std::optional<std::string> storageDamage();

  /// Throws what is wrong with the ledger of `portfolio`: rows that cannot be read, balances that
  /// are not those of the transactions, or yearly totals in the file that are not. What a walk over
  /// the ledger mends in passing is told as well. `tell` hears, where there is one, what part of
  /// the work is done.
  void verify(const PortfolioPointer& portfolio, const std::function<void(double)>& tell = nullptr);

  /// Takes the days of all ledgers for those of `days`. No row is another one afterwards, and undo
  /// steps stay good; yearly totals are made anew in memory. Posts a change of each portfolio.
  void changeCalendar(const Calendar& days);

  /// The rows of `portfolio` as they stand in the file. Where its yearly totals are not theirs, as
  /// after a change of the user's time zone, they are made anew in memory.
  [[nodiscard]] Transactions loadTransactions(StoredPortfolio& portfolio);

 protected:
  void keepEdit(LedgerChange& change, const std::function<void()>& edit) override;

 private:
  void loadPortfolios(std::string& portfolioUnderWay);

  SQLiteDatabase database_;
};

}  // namespace corvane
