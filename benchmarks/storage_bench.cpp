// The portfolio database: opening it, reading a ledger, recording and editing one, each next to the
// bare calls of the database engine on the same rows.

#include <benchmark/benchmark.h>
#include <sqlite3.h>
#include <stdlib.h>

#include <array>
#include <filesystem>

#include "ledger_world.h"
#include "storage/database/stored_portfolio_manager.h"

namespace corvane {
namespace storage_bench {

constexpr int rowCount = 100'000;

/// A folder for the databases of this run.
const std::filesystem::path& folder() {
  static const struct Folder {
    Folder() {
      std::string pattern = std::filesystem::temp_directory_path() / "corvane-bench-XXXXXX";
      path = mkdtemp(pattern.data());
    }
    ~Folder() { std::filesystem::remove_all(path); }
    std::filesystem::path path;
  } made;
  return made.path;
}

std::filesystem::path freshFile(const std::string& name) {
  const auto file = folder() / name;
  for (const auto* suffix : {"", "-wal"}) {
    std::filesystem::remove(file.string() + suffix);
  }
  return file;
}

std::unique_ptr<World> storedWorld(const std::filesystem::path& file) {
  const auto provider = std::make_shared<QuoteProvider>();
  return std::make_unique<World>(provider, StoredPortfolioManager::open(provider, file));
}

/// The database of a ledger of 100,000 rows, all of it in its main file, closed.
const std::filesystem::path& largeFile() {
  static const std::filesystem::path file = [] {
    auto made = freshFile("large");
    auto world = storedWorld(made);
    world->record(rowCount);
    world->manager->compactStorage();
    return made;
  }();
  return file;
}

/// A connection through the engine's own interface, set up like the program's.
class BareDatabase {
 public:
  explicit BareDatabase(const std::filesystem::path& file) {
    sqlite3_open(file.c_str(), &handle_);
    run("PRAGMA locking_mode = EXCLUSIVE; PRAGMA journal_mode = WAL; PRAGMA foreign_keys = ON;");
  }
  BareDatabase(const BareDatabase&) = delete;
  BareDatabase& operator=(const BareDatabase&) = delete;
  ~BareDatabase() { sqlite3_close_v2(handle_); }

  void run(const char* sql) { sqlite3_exec(handle_, sql, nullptr, nullptr, nullptr); }
  sqlite3_stmt* prepare(const char* sql) {
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(handle_, sql, -1, &statement, nullptr);
    return statement;
  }

 private:
  sqlite3* handle_ = nullptr;
};

constexpr const char* selectSql =
    "SELECT transactions.*, equities.equityIdentifier FROM transactions "
    "LEFT JOIN equities ON equities.id = transactions.equityId "
    "WHERE transactions.portfolioId = 1 "
    "ORDER BY settlementDate ASC, sequence ASC, transactions.id ASC";

void setRate(benchmark::State& state) {
  state.SetItemsProcessed(state.iterations() * rowCount);
}

void openManyPortfolios(benchmark::State& state) {
  static const std::filesystem::path file = [] {
    auto made = freshFile("many");
    const auto provider = std::make_shared<QuoteProvider>();
    const auto manager = StoredPortfolioManager::open(provider, made);
    for (int i = 0; i < 100; ++i) {
      World(provider, manager).record(2000);
      // The world's portfolio is the manager's newest.
    }
    manager->compactStorage();
    return made;
  }();
  const auto provider = std::make_shared<QuoteProvider>();
  for (auto _ : state) {
    benchmark::DoNotOptimize(StoredPortfolioManager::open(provider, file));
  }
}
BENCHMARK(openManyPortfolios)
    ->Name("Storage/open 100 portfolios of 2,000 rows")
    ->Unit(benchmark::kMillisecond);

void selectBare(benchmark::State& state) {
  BareDatabase database(largeFile());
  sqlite3_stmt* statement = database.prepare(selectSql);
  for (auto _ : state) {
    std::int64_t sum = 0;
    while (sqlite3_step(statement) == SQLITE_ROW) {
      for (int column = 0; column < 16; ++column) {
        if (sqlite3_column_type(statement, column) == SQLITE_TEXT) {
          sum += *sqlite3_column_text(statement, column);
        } else {
          sum += sqlite3_column_int64(statement, column);
        }
      }
    }
    benchmark::DoNotOptimize(sum);
    sqlite3_reset(statement);
  }
  sqlite3_finalize(statement);
  setRate(state);
}
BENCHMARK(selectBare)->Name("Storage/bare select")->Unit(benchmark::kMillisecond);

void loadLedger(benchmark::State& state) {
  const auto provider = std::make_shared<QuoteProvider>();
  const auto manager = StoredPortfolioManager::open(provider, largeFile());
  auto& portfolio = dynamic_cast<StoredPortfolio&>(*manager->portfolios()[0]);
  for (auto _ : state) {
    auto rows = manager->loadTransactions(portfolio);
    benchmark::DoNotOptimize(rows);
    state.PauseTiming();
    rows.clear();
    state.ResumeTiming();
  }
  setRate(state);
}
BENCHMARK(loadLedger)->Name("Storage/load a ledger")->Unit(benchmark::kMillisecond);

void insertBare(benchmark::State& state) {
  for (auto _ : state) {
    state.PauseTiming();
    const auto file = freshFile("bare");
    StoredPortfolioManager::open(std::make_shared<QuoteProvider>(), file)
        ->createPortfolio(Currency::cad());
    auto database = std::make_unique<BareDatabase>(file);
    database->run("INSERT INTO equities VALUES (1, 1, 'ABC')");
    sqlite3_stmt* statement = database->prepare(
        "INSERT INTO transactions (portfolioId, type, tradeDate, settlementDate, sequence, "
        "currency, cashAdded, cashNet, equityId, shareUnitsAdded, shareUnitsNet, "
        "equivalentCashAdded, costBasePrior, note) "
        "VALUES (1, 2, ?, ?, 0, 124, ?, ?, 1, ?, ?, ?, ?, NULL)");
    state.ResumeTiming();
    database->run("BEGIN");
    for (int i = 0; i < rowCount; ++i) {
      sqlite3_bind_double(statement, 1, 1.1e9 + i * 6000.5);
      sqlite3_bind_double(statement, 2, 1.1e9 + i * 6000.5);
      for (int column = 3; column <= 8; ++column) {
        sqlite3_bind_int64(statement, column, 1000 + i * column);
      }
      sqlite3_step(statement);
      sqlite3_reset(statement);
    }
    database->run("COMMIT");
    state.PauseTiming();
    sqlite3_finalize(statement);
    database.reset();
    state.ResumeTiming();
  }
  setRate(state);
}
BENCHMARK(insertBare)->Name("Storage/bare inserts")->Unit(benchmark::kMillisecond);

void importLedger(benchmark::State& state) {
  for (auto _ : state) {
    state.PauseTiming();
    auto world = storedWorld(freshFile("import"));
    auto transactions = world->transactions(rowCount);
    state.ResumeTiming();
    world->manager->recordTransactions(std::move(transactions), world->portfolio, nullptr);
    state.PauseTiming();
    world.reset();
    state.ResumeTiming();
  }
  setRate(state);
}
BENCHMARK(importLedger)->Name("Storage/import in date order")->Unit(benchmark::kMillisecond);

void updateBare(benchmark::State& state) {
  BareDatabase database(largeFile());
  sqlite3_stmt* statement = database.prepare("UPDATE transactions SET note = ? WHERE id = 100000");
  int count = 0;
  for (auto _ : state) {
    const std::string note = std::to_string(count++);
    sqlite3_bind_text(statement, 1, note.c_str(), -1, SQLITE_TRANSIENT);
    database.run("BEGIN");
    sqlite3_step(statement);
    sqlite3_reset(statement);
    database.run("COMMIT");
  }
  sqlite3_finalize(statement);
}
BENCHMARK(updateBare)->Name("Storage/bare update and commit")->Unit(benchmark::kMicrosecond);

void editAtTheEnd(benchmark::State& state) {
  const auto provider = std::make_shared<QuoteProvider>();
  const auto manager = StoredPortfolioManager::open(provider, largeFile());
  const auto portfolio = manager->portfolios()[0];
  const auto row = portfolio->transactions().back();
  int count = 0;
  for (auto _ : state) {
    BasicTransaction revised = row->basic;
    revised.note = std::to_string(count++);
    revised.kind = BasicTransaction::Transfer{{Currency::usd(), count}};
    manager->reviseTransactions({row}, {revised}, std::nullopt, portfolio, nullptr);
  }
}
BENCHMARK(editAtTheEnd)->Name("Storage/edit at the end")->Unit(benchmark::kMicrosecond);

}  // namespace storage_bench
}  // namespace corvane
