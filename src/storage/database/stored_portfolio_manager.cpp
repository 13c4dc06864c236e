#include "storage/database/stored_portfolio_manager.h"

#include <algorithm>
#include <cassert>
#include <map>
#include <span>
#include <string>
#include <string_view>

#include "ledger/accounting/calendar_years.h"
#include "ledger/edits/ledger_change.h"
#include "platform/data/sqlite_transaction.h"
#include "platform/system/log.h"
#include "storage/database/ledger_reader.h"
#include "storage/database/ledger_writer.h"
#include "storage/database/portfolio_schema.h"
#include "storage/database/storage_verification.h"

namespace corvane {
namespace {

using Failure = PortfolioManagerError;

StoredPortfolio& stored(Portfolio& portfolio) {
  assert(dynamic_cast<StoredPortfolio*>(&portfolio) != nullptr &&
         "a stored portfolio manager holds stored portfolios only");
  return static_cast<StoredPortfolio&>(portfolio);
}

std::string_view textOf(std::span<const std::byte> bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

bool isPowerOfTen(const Decimal& value) {
  return value.sign() == Sign::plus && value.mantissa() == 1 && value.exponent() >= 0;
}

/// The portfolio of the row that `row` stands on, without its totals.
std::shared_ptr<StoredPortfolio> portfolioOf(const SQLiteStatement& row,
                                             const std::weak_ptr<PortfolioManager>& manager) {
  const StoredNumbers values(row);
  const auto id = values.whole(row.column("id"));
  const auto dateCreated = values.date(row.column("dateCreated"));
  const auto name = values.text(row.column("name"));
  const auto currency = values.whole(row.column("primaryCurrency"));
  const auto sharesFactor = values.whole(row.column("sharesFactor"));
  if (!id || !dateCreated || !name || !currency || !sharesFactor ||
      !isPowerOfTen(Decimal(*sharesFactor))) {
    throw Failure(Failure::LedgerInconsistency{"Missing portfolio data."});
  }
  auto portfolio = std::make_shared<StoredPortfolio>(manager, currencyWithNumber(*currency), *id);
  portfolio->name = *name;
  portfolio->dateCreated = *dateCreated;
  portfolio->sharesFactor = *sharesFactor;
  if (const auto json = row.blob("settings")) {
    const auto settings = PortfolioSettings::fromJSON(textOf(*json));
    portfolio->allowsNegativeBalances = settings.allowsNegativeBalances;
    portfolio->usesCashAccounts = settings.usesCashAccounts;
  }
  return portfolio;
}

/// Makes the yearly totals of `portfolio` anew where they are not those of `rows`: in another time
/// zone than that of the last edit, rows around New Year fall in another year, and no walk could
/// start from the old totals. A ledger that does not balance is left as it is; every walk over it
/// says what is wrong.
void renewYearlyTotals(StoredPortfolio& portfolio, std::span<const TransactionPointer> rows,
                       const Calendar& calendar) {
  CalendarYears years(calendar);
  std::map<int, PortfolioSnapshot> totals;
  PortfolioSnapshot state;
  bool areCurrent = true;
  try {
    while (!rows.empty()) {
      const int year = years.yearOf(rows.front()->settlementDate());
      const auto next = std::ranges::find_if(rows, [&](const TransactionPointer& row) {
        return years.yearOf(row->settlementDate()) != year;
      });
      const auto count = static_cast<std::size_t>(next - rows.begin());
      state = PortfolioManager::replay(rows.first(count), std::move(state));
      const auto kept = portfolio.snapshotsByYear.find(year);
      areCurrent = areCurrent && kept != portfolio.snapshotsByYear.end() && kept->second == state;
      totals.emplace(year, state);
      rows = rows.subspan(count);
    }
  } catch (const PortfolioManagerError&) {
    return;
  }
  // A year that has no rows any more would count what has gone to another year once again.
  if (!areCurrent || (!totals.empty() && totals.size() != portfolio.snapshotsByYear.size())) {
    portfolio.snapshotsByYear = std::move(totals);
  }
}

/// Replays all `rows`, and has `tell` hear what part of them is behind.
void replayInPieces(std::span<const TransactionPointer> rows,
                    const std::function<void(double)>& tell) {
  constexpr std::size_t piece = 10'000;
  PortfolioSnapshot state;
  for (std::size_t begin = 0; begin < rows.size(); begin += piece) {
    const auto next = rows.subspan(begin, std::min(piece, rows.size() - begin));
    state = PortfolioManager::replay(next, std::move(state));
    tell(static_cast<double>(begin + next.size()) / static_cast<double>(rows.size()));
  }
}

}  // namespace

std::shared_ptr<StoredPortfolioManager> StoredPortfolioManager::open(
    std::shared_ptr<QuoteProvider> provider, const std::filesystem::path& databaseFile,
    std::string* portfolioUnderWay) {
  auto manager =
      std::make_shared<StoredPortfolioManager>(Passkey(), std::move(provider), databaseFile);
  std::string ignored;
  manager->loadPortfolios(portfolioUnderWay != nullptr ? *portfolioUnderWay : ignored);
  return manager;
}

StoredPortfolioManager::StoredPortfolioManager(Passkey /*passkey*/,
                                               std::shared_ptr<QuoteProvider> provider,
                                               const std::filesystem::path& databaseFile)
    : PortfolioManager(std::move(provider), &makeTransaction<StoredPortfolioTransaction>),
      database_(databaseFile, SQLiteDatabase::Mode::create) {
  database_.executeScript(
      "PRAGMA locking_mode = EXCLUSIVE;\n"
      "PRAGMA journal_mode = WAL;\n"
      "PRAGMA foreign_keys = ON;");
  migratePortfolioSchema(database_);
}

StoredPortfolioManager::~StoredPortfolioManager() {
  try {
    database_.close();
  } catch (const SQLiteError& error) {
    Log::write("Failed to close portfolio database: ", error.message);
  }
}

void StoredPortfolioManager::loadPortfolios(std::string& portfolioUnderWay) {
  portfolios_.clear();
  SQLiteStatement row = database_.query("SELECT * FROM portfolios ORDER BY dateCreated ASC;");
  while (row.step()) {
    portfolioUnderWay = StoredNumbers(row).text(row.column("name")).value_or("");
    auto portfolio = portfolioOf(row, weak_from_this());
    readYearlyTotals(database_, *portfolio, *quoteProvider);
    portfolios_.push_back(std::move(portfolio));
    portfolioUnderWay.clear();
  }
}

std::optional<std::string> StoredPortfolioManager::storageDamage() {
  return structuralDamage(database_);
}

void StoredPortfolioManager::verify(const PortfolioPointer& portfolio,
                                    const std::function<void(double)>& tell) {
  constexpr double partOfReplay = 0.4;
  constexpr double partBeforeWalk = 0.6;
  const auto done = [&](double part) {
    if (tell) {
      tell(part);
    }
  };
  StoredPortfolio& subject = stored(*portfolio);
  subject.requireTransactions();
  const auto& rows = subject.transactions();
  replayInPieces(rows, [&](double part) { done(part * partOfReplay); });
  StoredPortfolio inFile(weak_from_this(), subject.primaryCurrency(), subject.portfolioId);
  inFile.sharesFactor = subject.sharesFactor;
  readYearlyTotals(database_, inFile, *quoteProvider);
  requireTotalsOf(rows, inFile.snapshotsByYear, calendar);
  done(partBeforeWalk);
  // What a replay takes for granted, such as that there were shares enough, a walk asks for.
  if (!recalculateLedger(0, portfolio).empty()) {
    throw Failure(Failure::LedgerInconsistency{"Balances are not those of the transactions."});
  }
  done(1);
}

void StoredPortfolioManager::compactStorage() {
  database_.executeScript("VACUUM;");
  SQLiteStatement checkpoint = database_.query("PRAGMA wal_checkpoint(TRUNCATE);");
  if (checkpoint.step() && checkpoint.integer(0) != 0) {
    throw SQLiteError(5, "the write-ahead log is in use", "PRAGMA wal_checkpoint(TRUNCATE);");
  }
}

PortfolioPointer StoredPortfolioManager::createPortfolio(const Currency& primaryCurrency) {
  const Date now = Date::now();
  inTransaction(database_, [&] {
    database_.execute(
        "INSERT INTO portfolios\n"
        "(name, dateCreated, primaryCurrency, sharesFactor)\n"
        "VALUES (?, ?, ?, ?);",
        {"", now.timeIntervalSince1970(), std::int64_t{primaryCurrency.number}, std::int64_t{1}});
  });
  auto portfolio = std::make_shared<StoredPortfolio>(weak_from_this(), primaryCurrency,
                                                     database_.lastInsertedRowId());
  portfolio->dateCreated = now;
  portfolios_.push_back(portfolio);
  return portfolio;
}

void StoredPortfolioManager::portfolioPropertiesDidChange(const PortfolioPointer& portfolio) {
  PortfolioManager::portfolioPropertiesDidChange(portfolio);
  const std::string settings =
      PortfolioSettings{portfolio->allowsNegativeBalances, portfolio->usesCashAccounts}.json();
  inTransaction(database_, [&] {
    database_.execute(
        "UPDATE portfolios SET\n(name, settings)\n= (?, ?)\nWHERE id = ?;",
        {portfolio->name, std::as_bytes(std::span(settings)), stored(*portfolio).portfolioId});
  });
}

void StoredPortfolioManager::removePortfolio(const PortfolioPointer& portfolio) {
  if (std::ranges::find(portfolios_, portfolio) != portfolios_.end()) {
    inTransaction(database_, [&] {
      database_.execute("DELETE FROM portfolios\nWHERE id = ?", {stored(*portfolio).portfolioId});
    });
  }
  PortfolioManager::removePortfolio(portfolio);
}

void StoredPortfolioManager::deleteTransactions(const Transactions& subjects,
                                                const PortfolioPointer& portfolio,
                                                const UndoManagerPointer& undoManager) {
  for (const TransactionPointer& subject : subjects) {
    const auto* row = dynamic_cast<const StoredPortfolioTransaction*>(subject.get());
    assert(row != nullptr && "a stored portfolio holds stored rows only");
    if (!row->transactionId) {
      throw Failure(
          Failure::LedgerInconsistency{"The transaction is not commited in the stored portfolio."});
    }
  }
  PortfolioManager::deleteTransactions(subjects, portfolio, undoManager);
}

void StoredPortfolioManager::changeCalendar(const Calendar& days) {
  calendar = days;
  for (const PortfolioPointer& portfolio : portfolios_) {
    // Others get theirs when they are read.
    if (StoredPortfolio& subject = stored(*portfolio); subject.isLoaded()) {
      renewYearlyTotals(subject, subject.storedTransactions(), calendar);
    }
  }
  for (const PortfolioPointer& portfolio : portfolios_) {
    postPortfolioChange(std::nullopt, portfolio);
  }
}

PortfolioManager::Transactions StoredPortfolioManager::loadTransactions(
    StoredPortfolio& portfolio) {
  Transactions rows =
      readTransactions(database_, portfolio.shared_from_this(), *quoteProvider, readingHandler);
  renewYearlyTotals(portfolio, rows, calendar);
  return rows;
}

void StoredPortfolioManager::keepEdit(LedgerChange& change, const std::function<void()>& edit) {
  StoredPortfolio& portfolio = stored(change.portfolio());
  portfolio.requireTransactions();
  LedgerWriter writer(database_, portfolio);
  try {
    inTransaction(database_, [&] {
      edit();
      writer.write(change);
    });
  } catch (...) {
    writer.restore();
    throw;
  }
}

}  // namespace corvane
