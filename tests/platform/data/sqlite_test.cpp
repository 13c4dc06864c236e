#include "platform/data/sqlite.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <stdexcept>

#include "support/temporary_folder.h"

namespace corvane {
namespace {

using Mode = SQLiteDatabase::Mode;

// Primary result codes of the engine.
constexpr int engineError = 1, busy = 5, readOnly = 8, corrupt = 11, full = 13, cannotOpen = 14,
              constraint = 19, mismatch = 20, misuse = 21, range = 25, notADatabase = 26;

template <typename Statement>
int codeOf(Statement&& statement) {
  try {
    statement();
  } catch (const SQLiteError& error) {
    return error.primaryCode();
  }
  return 0;
}

class SQLiteTest : public ::testing::Test {
 protected:
  void makeTable() {
    database.executeScript("CREATE TABLE t (i INTEGER, x REAL, s TEXT, b BLOB);");
  }
  std::int64_t rowCount() {
    auto statement = database.query("SELECT COUNT(*) AS n FROM t");
    statement.step();
    return *statement.integer("n");
  }

  testing::TemporaryFolder folder;
  SQLiteDatabase database{folder / "test.sqlite3", Mode::create};
};

TEST_F(SQLiteTest, KeepsEveryValueAsItIs) {
  makeTable();
  const std::string withNul("a\0b", 3);
  const std::array bytes = {std::byte{0}, std::byte{255}};
  for (const std::int64_t integer :
       {std::numeric_limits<std::int64_t>::min(), std::int64_t{0}, (std::int64_t{1} << 53) + 1,
        std::numeric_limits<std::int64_t>::max()}) {
    database.execute("INSERT INTO t VALUES (?, ?, ?, ?)", {integer, 0.1, withNul, bytes});
    auto row = database.query("SELECT * FROM t WHERE rowid = ?", {database.lastInsertedRowId()});
    ASSERT_TRUE(row.step());
    EXPECT_EQ(row.integer("i"), integer);
    EXPECT_EQ(row.real("x"), 0.1);
    EXPECT_EQ(row.text("s"), withNul);
    EXPECT_TRUE(std::ranges::equal(*row.blob("b"), bytes));
    EXPECT_FALSE(row.step());
  }
  database.execute("UPDATE t SET i = ?, x = ?, s = ?, b = ?",
                   {nullptr, nullptr, std::string_view(), std::span<const std::byte>()});
  EXPECT_EQ(database.changesCount(), 4);
  auto row = database.query("SELECT * FROM t");
  row.step();
  EXPECT_EQ(row.integer(0), std::nullopt);
  EXPECT_EQ(row.real(1), std::nullopt);
  EXPECT_EQ(row.text(2), "");
  EXPECT_TRUE(row.blob(3)->empty());
}

TEST_F(SQLiteTest, ConvertsNothing) {
  auto row = database.query("SELECT 1 AS i, 1.5 AS x, '7' AS s, x'00' AS b");
  EXPECT_EQ(codeOf([&] { (void)row.integer(0); }), range) << "there is no row yet";
  row.step();
  EXPECT_EQ(codeOf([&] { (void)row.integer("x"); }), mismatch);
  EXPECT_EQ(codeOf([&] { (void)row.integer("s"); }), mismatch);
  EXPECT_EQ(codeOf([&] { (void)row.real("s"); }), mismatch);
  EXPECT_EQ(codeOf([&] { (void)row.text("i"); }), mismatch);
  EXPECT_EQ(codeOf([&] { (void)row.blob("i"); }), mismatch);
  EXPECT_EQ(row.real("i"), 1.0);
  EXPECT_EQ(codeOf([&] { (void)row.integer("absent"); }), engineError);
  EXPECT_EQ(codeOf([&] { (void)row.integer(9); }), range);
}

TEST_F(SQLiteTest, RunsOneStatementManyTimesAlsoInsideItself) {
  makeTable();
  for (std::int64_t i = 0; i < 3; ++i) {
    database.execute("INSERT INTO t (i) VALUES (?)", {i});
  }
  const char* const sql = "SELECT i FROM t WHERE i >= ? ORDER BY i";
  int pairs = 0;
  for (auto outer = database.query(sql, {std::int64_t{0}}); outer.step();) {
    for (auto inner = database.query(sql, {*outer.integer(0)}); inner.step();) {
      ++pairs;
    }
  }
  EXPECT_EQ(pairs, 6);
}

TEST_F(SQLiteTest, GoesOnAfterAStatementThatFailed) {
  database.executeScript("CREATE TABLE u (i INTEGER UNIQUE);");
  const char* const sql = "INSERT INTO u VALUES (?)";
  database.execute(sql, {std::int64_t{1}});
  EXPECT_EQ(codeOf([&] { database.execute(sql, {std::int64_t{1}}); }), constraint);
  EXPECT_EQ(codeOf([&] { database.execute(sql); }), range);
  database.execute(sql, {std::int64_t{2}});
  EXPECT_EQ(codeOf([&] { database.execute("SELEKT"); }), engineError);
  EXPECT_NE(database.lastError().find("SELEKT"), std::string::npos);
  EXPECT_EQ(codeOf([&] { database.execute("SELECT 1; SELECT 2"); }), misuse);
  EXPECT_EQ(codeOf([&] { database.execute(""); }), misuse);
  EXPECT_EQ(codeOf([&] {
              database.executeScript("INSERT INTO u VALUES (3); INSERT INTO u VALUES (3);");
            }),
            constraint);
  auto row = database.query("SELECT MAX(i) FROM u");
  row.step();
  EXPECT_EQ(row.integer(0), 3);
}

TEST_F(SQLiteTest, RunsAStatementOnceAndNotAgainAfterItsEnd) {
  makeTable();
  {
    auto insertion = database.query("INSERT INTO t (i) VALUES (1)");
    EXPECT_FALSE(insertion.step());
    EXPECT_FALSE(insertion.step());
  }
  EXPECT_EQ(rowCount(), 1);
  database.executeScript("CREATE UNIQUE INDEX u ON t (i);");
  auto failing = database.query("INSERT INTO t (i) VALUES (1)");
  EXPECT_EQ(codeOf([&] { failing.step(); }), constraint);
  database.execute("DELETE FROM t");
  EXPECT_EQ(codeOf([&] { failing.step(); }), misuse);
  EXPECT_EQ(rowCount(), 0);
  EXPECT_EQ(codeOf([&] { database.execute("INSERT INTO t (x) VALUES (?)", {std::nan("")}); }),
            mismatch)
      << "it would read as null";
}

TEST_F(SQLiteTest, ReadsColumnsByNameAlsoAfterTheTableHasChanged) {
  database.executeScript("CREATE TABLE v (a, b, c); INSERT INTO v VALUES ('A', 'B', 'C');");
  const auto readB = [&] {
    auto row = database.query("SELECT * FROM v");
    row.step();
    return std::string(*row.text("b"));
  };
  EXPECT_EQ(readB(), "B");
  database.executeScript("ALTER TABLE v DROP COLUMN a;");
  EXPECT_EQ(readB(), "B");
}

TEST_F(SQLiteTest, RollsBackWhatIsNotCommitted) {
  makeTable();
  const auto insert = [&] { database.execute("INSERT INTO t (i) VALUES (1)"); };
  try {
    const SQLiteTransaction transaction(database);
    insert();
    throw std::runtime_error("in between");
  } catch (const std::runtime_error&) {
    EXPECT_FALSE(database.isInTransaction());
  }
  EXPECT_EQ(rowCount(), 0);
  SQLiteTransaction transaction(database, SQLiteDatabase::TransactionKind::exclusive);
  EXPECT_EQ(codeOf([&] { database.begin(); }), engineError) << "transactions are not nested";
  insert();
  transaction.commit();
  EXPECT_EQ(rowCount(), 1);
  EXPECT_EQ(codeOf([&] { database.rollback(); }), engineError);
}

TEST_F(SQLiteTest, ReportsAFullDiskAndKeepsWhatWasThere) {
  makeTable();
  database.execute("INSERT INTO t (s) VALUES ('kept')");
  database.execute("PRAGMA max_page_count = 3");
  const std::string large(100'000, 'x');
  {
    const SQLiteTransaction transaction(database);
    EXPECT_EQ(codeOf([&] { database.execute("INSERT INTO t (s) VALUES (?)", {large}); }), full);
  }
  EXPECT_FALSE(database.isInTransaction());
  EXPECT_EQ(rowCount(), 1);
}

TEST_F(SQLiteTest, ReportsTheLockOfAnother) {
  makeTable();
  SQLiteDatabase other(folder / "test.sqlite3", Mode::readWrite);
  database.begin(SQLiteDatabase::TransactionKind::exclusive);
  EXPECT_EQ(codeOf([&] { other.execute("INSERT INTO t (i) VALUES (1)"); }), busy);
  database.commit();
  other.execute("INSERT INTO t (i) VALUES (1)");
  SQLiteDatabase reader(folder / "test.sqlite3", Mode::readOnly);
  EXPECT_EQ(codeOf([&] { reader.execute("DELETE FROM t"); }), readOnly);
}

TEST_F(SQLiteTest, RefusesFilesThatAreNoSoundDatabases) {
  EXPECT_EQ(codeOf([&] { SQLiteDatabase(folder / "absent", Mode::readWrite); }), cannotOpen);
  testing::writeText(folder / "text", std::string(5000, 'x'));
  SQLiteDatabase text(folder / "text", Mode::readWrite);
  EXPECT_EQ(codeOf([&] { text.execute("SELECT * FROM sqlite_master"); }), notADatabase);

  makeTable();
  for (int i = 0; i < 200; ++i) {
    database.execute("INSERT INTO t (s) VALUES (?)", {std::string(100, 'x')});
  }
  database.close();
  std::string bytes = testing::readText(folder / "test.sqlite3");
  std::fill(bytes.begin() + 4096, bytes.end(), '\x7F');
  testing::writeText(folder / "test.sqlite3", bytes);
  SQLiteDatabase damaged(folder / "test.sqlite3", Mode::readOnly);
  EXPECT_EQ(codeOf([&] { damaged.execute("SELECT * FROM t"); }), corrupt);
}

TEST_F(SQLiteTest, ClosesOnceAndNotUnderAStatement) {
  {
    auto row = database.query("SELECT 1");
    row.step();
    EXPECT_EQ(codeOf([&] { database.close(); }), busy);
  }
  database.close();
  EXPECT_FALSE(database.isOpen());
  EXPECT_EQ(codeOf([&] { database.close(); }), misuse);
  EXPECT_EQ(codeOf([&] { database.execute("SELECT 1"); }), misuse);
}

}  // namespace
}  // namespace corvane
