// A portfolio in a database file, and what a second look at that file finds.
#pragma once

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "storage/database/stored_portfolio_manager.h"
#include "support/ledger_builder.h"
#include "support/temporary_folder.h"

namespace corvane::testing {

/// All that the file keeps of a portfolio, as a manager has it in memory.
struct StoredState {
  struct Row {
    std::optional<std::int64_t> id;
    int sequence = 0;
    BasicTransaction basic;
    std::optional<Decimal> cashNet, sharesNet, costBasePrior;
    bool operator==(const Row&) const = default;
  };
  std::string name;
  bool allowsNegativeBalances = false, usesCashAccounts = true;
  Decimal sharesFactor;
  std::vector<Row> rows;
  /// The totals at the end of every year from the first to the last that has any.
  std::map<int, PortfolioSnapshot> years;
  bool operator==(const StoredState&) const = default;

  static StoredState of(const PortfolioPointer& portfolio) {
    auto& stored = dynamic_cast<StoredPortfolio&>(*portfolio);
    StoredState state = {stored.name,
                         stored.allowsNegativeBalances,
                         stored.usesCashAccounts,
                         stored.sharesFactor,
                         {},
                         {}};
    for (const auto& pointer : stored.transactions()) {
      const auto& row = dynamic_cast<const StoredPortfolioTransaction&>(*pointer);
      Row kept = {row.transactionId, row.dateSequence, row.basic,
                  row.cashNet,       row.sharesNet,    row.costBasePrior};
      // No cost base and one of 0 are the same to the ledger and to the file.
      if (auto* journaled = std::get_if<BasicTransaction::JournaledShares>(&kept.basic.kind);
          journaled != nullptr && journaled->costBaseAdded == Decimal(0)) {
        journaled->costBaseAdded.reset();
      }
      state.rows.push_back(std::move(kept));
    }
    const auto& years = stored.snapshotsByYear;
    for (int year = years.empty() ? 1 : years.begin()->first;
         !years.empty() && year <= years.rbegin()->first; ++year) {
      state.years[year] = std::prev(years.upper_bound(year))->second;
    }
    return state;
  }

  friend std::ostream& operator<<(std::ostream& out, const StoredState& state) {
    out << state.name << " " << state.allowsNegativeBalances << state.usesCashAccounts << " "
        << state.sharesFactor;
    for (const Row& row : state.rows) {
      out << "\n  " << row.id.value_or(-1) << " " << row.sequence << " " << row.basic;
      for (const auto& figure : {row.cashNet, row.sharesNet, row.costBasePrior}) {
        out << " " << (figure ? figure->description() : "-");
      }
    }
    for (const auto& [year, snapshot] : state.years) {
      out << "\n  " << year << ":";
      for (const auto& [currency, cash] : snapshot.currencySnapshots) {
        out << " " << currency << " " << cash.cashOnHand << "/" << cash.netCashDeposited;
      }
      for (const auto& [equity, holding] : snapshot.equitySnapshots) {
        out << " " << equity->id() << " " << holding.sharesHeld << "/" << holding.costBase << "/"
            << holding.cumulativeCapitalGain;
      }
    }
    return out;
  }
};

/// A new database with one portfolio in Canadian dollars. `ledger` makes transactions; its own
/// manager is not used.
class StoredLedger {
 public:
  StoredLedger() { portfolio = manager->createPortfolio(Currency::cad()); }

  TemporaryFolder folder;
  std::filesystem::path file = folder / "LocalPortfolios.sqlite3";
  Ledger make;
  std::shared_ptr<StoredPortfolioManager> manager = open(file);
  std::shared_ptr<UndoManager> undo = std::make_shared<UndoManager>();
  PortfolioPointer portfolio;

  [[nodiscard]] std::shared_ptr<StoredPortfolioManager> open(
      const std::filesystem::path& path) const {
    auto opened = StoredPortfolioManager::open(make.provider, path);
    opened->calendar = make.manager->calendar;
    opened->presentError = [](const Error& error) { ADD_FAILURE() << error; };
    return opened;
  }

  /// Closes the file and opens it again.
  void reopen() {
    portfolio.reset();
    manager.reset();
    manager = open(file);
    portfolio = manager->portfolios().empty() ? nullptr : manager->portfolios().front();
  }

  /// A manager on a copy of the file as it stands on the disk.
  [[nodiscard]] std::shared_ptr<StoredPortfolioManager> openCopy() const {
    const auto copy = folder / "copy.sqlite3";
    for (const auto* suffix : {"", "-wal"}) {
      std::filesystem::remove(copy.string() + suffix);
      if (std::filesystem::exists(file.string() + suffix)) {
        std::filesystem::copy_file(file.string() + suffix, copy.string() + suffix);
      }
    }
    return open(copy);
  }

  std::vector<TransactionPointer> record(std::vector<BasicTransaction> basics) {
    return manager->recordTransactions(std::move(basics), portfolio, undo);
  }
  [[nodiscard]] const std::vector<TransactionPointer>& rows() const {
    return portfolio->transactions();
  }
  [[nodiscard]] StoredState state() const { return StoredState::of(portfolio); }

  /// What the file says is what is in memory.
  void expectFileIsMemory() const {
    const auto copy = openCopy();
    ASSERT_EQ(copy->portfolios().size(), manager->portfolios().size());
    for (std::size_t i = 0; i < copy->portfolios().size(); ++i) {
      StoredState inMemory = StoredState::of(manager->portfolios()[i]);
      const StoredState inFile = StoredState::of(copy->portfolios()[i]);
      // The file has no name until the properties are saved for the first time.
      if (inFile.name.empty() && inMemory.name == "Untitled Portfolio") {
        inMemory.name.clear();
      }
      EXPECT_EQ(inFile, inMemory);
    }
  }

  /// The result of `sql` on the open database, a line for each row, columns parted by blanks.
  [[nodiscard]] std::string query(std::string_view sql) const {
    std::string lines;
    SQLiteStatement statement = manager->database().query(sql);
    while (statement.step()) {
      for (int column = 0; column < statement.columnCount(); ++column) {
        lines += column == 0 ? "" : " ";
        switch (statement.type(column)) {
          case SQLiteStatement::Type::null:
            lines += "-";
            break;
          case SQLiteStatement::Type::integer:
            lines += std::to_string(*statement.integer(column));
            break;
          case SQLiteStatement::Type::real:
            lines += "~" + Decimal::fromDouble(*statement.real(column)).description();
            break;
          case SQLiteStatement::Type::text:
            lines += *statement.text(column);
            break;
          case SQLiteStatement::Type::blob: {
            const auto bytes = *statement.blob(column);
            lines.append(reinterpret_cast<const char*>(bytes.data()), bytes.size());
          }
        }
      }
      lines += "\n";
    }
    return lines;
  }
};

}  // namespace corvane::testing
