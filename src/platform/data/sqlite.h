// A thin handle on an SQLite database.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <variant>
#include <vector>

#include "platform/error.h"

struct sqlite3;
struct sqlite3_stmt;

namespace corvane {

/// What the database engine refused, or what was asked of it wrongly.
class SQLiteError : public ErrorValue<SQLiteError> {
 public:
  SQLiteError(int resultCode, std::string text, std::string statement = "")
      : code(resultCode), message(std::move(text)), sql(std::move(statement)) {}

  int code;             ///< the extended result code; its low byte is the primary one
  std::string message;  ///< in the engine's words
  std::string sql;      ///< the statement, where there was one

  [[nodiscard]] int primaryCode() const { return code & 0xFF; }
  /// Whether the lock of another connection stood in the way.
  [[nodiscard]] bool isForALock() const { return primaryCode() == 5; }
  [[nodiscard]] std::optional<std::string> description() const override {
    return "The database reports: " + message + ".";
  }
  [[nodiscard]] bool hasSameValues(const SQLiteError& other) const {
    return code == other.code && message == other.message && sql == other.sql;
  }
};

/// A value to be bound to a statement. Texts and blobs are only looked at while the statement runs.
/// A real that is not a number is refused, since the engine would keep it as null.
using SQLiteValue = std::variant<std::nullptr_t, std::int64_t, double, std::string_view,
                                 std::span<const std::byte>>;

class SQLiteDatabase;

/// A prepared statement on its way through its rows. It holds its place in the database's cache
/// until it ends, and must not outlive the database.
///
/// A column is read as the type that it has: asking for another one is an error and never a
/// conversion. Null reads as nothing. Texts and blobs are good until the next row.
class SQLiteStatement {
 public:
  SQLiteStatement(SQLiteStatement&& other) noexcept;
  SQLiteStatement& operator=(SQLiteStatement&&) = delete;
  ~SQLiteStatement();

  /// Goes to the next row; false after the last, and from then on. A statement never starts over:
  /// after a failure it is misuse to go on.
  bool step();

  /// The position of the column called `name`, to be asked once step() has been called: until then
  /// a change of the table may move it. Throws SQLiteError where there is none.
  [[nodiscard]] int column(std::string_view name) const;
  [[nodiscard]] int columnCount() const;

  enum class Type { null, integer, real, text, blob };
  [[nodiscard]] Type type(int column) const;
  [[nodiscard]] bool isNull(int column) const { return type(column) == Type::null; }
  [[nodiscard]] std::optional<std::int64_t> integer(int column) const;
  /// An integer column reads as a real one too, as its value.
  [[nodiscard]] std::optional<double> real(int column) const;
  [[nodiscard]] std::optional<std::string_view> text(int column) const;
  /// A text column reads as the bytes of its text.
  [[nodiscard]] std::optional<std::span<const std::byte>> blob(int column) const;

  [[nodiscard]] std::optional<std::int64_t> integer(std::string_view name) const {
    return integer(column(name));
  }
  [[nodiscard]] std::optional<double> real(std::string_view name) const {
    return real(column(name));
  }
  [[nodiscard]] std::optional<std::string_view> text(std::string_view name) const {
    return text(column(name));
  }
  [[nodiscard]] std::optional<std::span<const std::byte>> blob(std::string_view name) const {
    return blob(column(name));
  }

 private:
  friend class SQLiteDatabase;
  struct Prepared;
  enum class State { notStarted, onRow, ended, failed };
  SQLiteStatement(SQLiteDatabase& database, Prepared& prepared);
  [[noreturn]] void failType(int column, std::string_view expected) const;
  /// The column's type; throws where there is no such column or no row.
  [[nodiscard]] int typeOf(int column) const;

  SQLiteDatabase* database_;
  Prepared* prepared_;
  State state_ = State::notStarted;
};

/// An open database file. One thread at a time; nothing is locked. Every failure is a SQLiteError.
class SQLiteDatabase {
 public:
  enum class Mode {
    readOnly,
    /// Reads a file that nobody changes: without locks, and without a file beside it.
    immutable,
    readWrite,
    create
  };
  enum class TransactionKind { deferred, immediate, exclusive };

  /// Opens the file at `path`, or makes it where the mode is `create`. Another program's lock is
  /// waited for no longer than `busyTimeoutMilliseconds`.
  SQLiteDatabase(const std::filesystem::path& path, Mode mode, int busyTimeoutMilliseconds = 0);
  SQLiteDatabase(const SQLiteDatabase&) = delete;
  SQLiteDatabase& operator=(const SQLiteDatabase&) = delete;
  /// Closes the file; what that reports is lost, unlike with close().
  ~SQLiteDatabase();

  void close();
  [[nodiscard]] bool isOpen() const { return handle_ != nullptr; }

  /// Runs a statement that answers no rows.
  void execute(std::string_view sql, const std::vector<SQLiteValue>& values = {});
  /// Starts a statement that answers rows. Several may be under way, also of one text.
  [[nodiscard]] SQLiteStatement query(std::string_view sql,
                                      const std::vector<SQLiteValue>& values = {});
  /// Runs statements that are parted by semicolons, without values. The ones before a failing one
  /// stay done.
  void executeScript(const std::string& script);

  [[nodiscard]] std::int64_t lastInsertedRowId() const;
  /// Rows that the last statement inserted, updated or deleted.
  [[nodiscard]] std::int64_t changesCount() const;
  [[nodiscard]] std::string lastError() const;

  /// Transactions are not nested: beginning one inside another is refused.
  void begin(TransactionKind kind = TransactionKind::deferred);
  void commit();
  void rollback();
  [[nodiscard]] bool isInTransaction() const;

 private:
  friend class SQLiteStatement;
  struct TextHash : std::hash<std::string_view> {
    using is_transparent = void;
  };

  void requireOpen() const;
  [[nodiscard]] SQLiteError error(std::string_view sql) const;
  SQLiteStatement::Prepared& prepare(std::string_view sql);
  void bind(SQLiteStatement::Prepared& prepared, const std::vector<SQLiteValue>& values);
  void release(SQLiteStatement::Prepared& prepared);

  sqlite3* handle_ = nullptr;
  std::unordered_map<std::string, std::unique_ptr<SQLiteStatement::Prepared>, TextHash,
                     std::equal_to<>>
      cache_;
  /// Further runs of a statement whose cached form is under way.
  std::vector<std::unique_ptr<SQLiteStatement::Prepared>> extra_;
};

/// A transaction that is rolled back where its scope ends before commit().
class SQLiteTransaction {
 public:
  explicit SQLiteTransaction(
      SQLiteDatabase& database,
      SQLiteDatabase::TransactionKind kind = SQLiteDatabase::TransactionKind::deferred);
  SQLiteTransaction(const SQLiteTransaction&) = delete;
  SQLiteTransaction& operator=(const SQLiteTransaction&) = delete;
  ~SQLiteTransaction();

  void commit();

 private:
  SQLiteDatabase& database_;
  bool isCommitted_ = false;
};

}  // namespace corvane
