#include "platform/data/sqlite.h"

#include <sqlite3.h>

#include <algorithm>
#include <cmath>
#include <string_view>
#include <utility>

#include "platform/overloaded.h"

namespace corvane {

struct SQLiteStatement::Prepared {
  ~Prepared() { sqlite3_finalize(statement); }

  /// To be called on the first row: after a change of the table the engine has prepared anew by
  /// then, and “*” may stand for other columns.
  void forgetMovedColumns() {
    const int count = sqlite3_stmt_status(statement, SQLITE_STMTSTATUS_REPREPARE, /*resetFlg=*/0);
    if (std::exchange(repreparations, count) != count) {
      columnsByName.clear();
    }
  }

  std::string sql;
  sqlite3_stmt* statement = nullptr;
  std::map<std::string, int, std::less<>> columnsByName;
  int repreparations = 0;
  bool isUnderWay = false;
};

SQLiteStatement::SQLiteStatement(SQLiteDatabase& database, Prepared& prepared)
    : database_(&database), prepared_(&prepared) {}

SQLiteStatement::SQLiteStatement(SQLiteStatement&& other) noexcept
    : database_(other.database_),
      prepared_(std::exchange(other.prepared_, nullptr)),
      state_(other.state_) {}

SQLiteStatement::~SQLiteStatement() {
  if (prepared_ != nullptr) {
    database_->release(*prepared_);
  }
}

bool SQLiteStatement::step() {
  // The engine would run a statement that has ended once more.
  if (state_ == State::ended) {
    return false;
  }
  if (state_ == State::failed) {
    throw SQLiteError(SQLITE_MISUSE, "the statement has failed before", prepared_->sql);
  }
  switch (sqlite3_step(prepared_->statement)) {
    case SQLITE_ROW:
      if (state_ == State::notStarted) {
        prepared_->forgetMovedColumns();
      }
      state_ = State::onRow;
      return true;
    case SQLITE_DONE:
      state_ = State::ended;
      return false;
    default:
      state_ = State::failed;
      throw database_->error(prepared_->sql);
  }
}

int SQLiteStatement::column(std::string_view name) const {
  auto& columns = prepared_->columnsByName;
  if (columns.empty()) {
    for (int i = columnCount(); i-- > 0;) {
      columns[sqlite3_column_name(prepared_->statement, i)] = i;
    }
  }
  const auto found = columns.find(name);
  if (found == columns.end()) {
    throw SQLiteError(SQLITE_ERROR, "the result has no column “" + std::string(name) + "”",
                      prepared_->sql);
  }
  return found->second;
}

int SQLiteStatement::columnCount() const {
  return sqlite3_column_count(prepared_->statement);
}

int SQLiteStatement::typeOf(int column) const {
  const bool hasRow = state_ == State::onRow;
  if (!hasRow || column < 0 || column >= columnCount()) {
    throw SQLiteError(SQLITE_RANGE, hasRow ? "the result has no such column" : "there is no row",
                      prepared_->sql);
  }
  return sqlite3_column_type(prepared_->statement, column);
}

SQLiteStatement::Type SQLiteStatement::type(int column) const {
  switch (typeOf(column)) {
    case SQLITE_INTEGER:
      return Type::integer;
    case SQLITE_FLOAT:
      return Type::real;
    case SQLITE_TEXT:
      return Type::text;
    case SQLITE_BLOB:
      return Type::blob;
    default:
      return Type::null;
  }
}

std::optional<std::int64_t> SQLiteStatement::integer(int column) const {
  switch (typeOf(column)) {
    case SQLITE_NULL:
      return std::nullopt;
    case SQLITE_INTEGER:
      return sqlite3_column_int64(prepared_->statement, column);
    default:
      failType(column, "an integer");
  }
}

std::optional<double> SQLiteStatement::real(int column) const {
  switch (typeOf(column)) {
    case SQLITE_NULL:
      return std::nullopt;
    case SQLITE_INTEGER:
    case SQLITE_FLOAT:
      return sqlite3_column_double(prepared_->statement, column);
    default:
      failType(column, "a real number");
  }
}

std::optional<std::string_view> SQLiteStatement::text(int column) const {
  switch (typeOf(column)) {
    case SQLITE_NULL:
      return std::nullopt;
    case SQLITE_TEXT: {
      const auto* bytes = sqlite3_column_text(prepared_->statement, column);
      const int size = sqlite3_column_bytes(prepared_->statement, column);
      return std::string_view(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(size));
    }
    default:
      failType(column, "text");
  }
}

std::optional<std::span<const std::byte>> SQLiteStatement::blob(int column) const {
  switch (typeOf(column)) {
    case SQLITE_NULL:
      return std::nullopt;
    case SQLITE_TEXT:
    case SQLITE_BLOB: {
      const auto* bytes =
          static_cast<const std::byte*>(sqlite3_column_blob(prepared_->statement, column));
      const int size = sqlite3_column_bytes(prepared_->statement, column);
      return std::span(bytes, static_cast<std::size_t>(size));
    }
    default:
      failType(column, "a blob");
  }
}

void SQLiteStatement::failType(int column, std::string_view expected) const {
  throw SQLiteError(SQLITE_MISMATCH,
                    "the column “" +
                        std::string(sqlite3_column_name(prepared_->statement, column)) +
                        "” is not " + std::string(expected),
                    prepared_->sql);
}

namespace {

/// The name of the file at `path` for the engine, with the promise that nobody changes it.
std::string immutableName(const std::filesystem::path& path) {
  constexpr std::string_view hexDigits = "0123456789abcdef";
  std::string name = "file:";
  for (const char c : path.string()) {
    if (c == '?' || c == '#' || c == '%') {
      const auto code = static_cast<unsigned char>(c);
      name += {'%', hexDigits[code >> 4], hexDigits[code & 15]};
    } else {
      name += c;
    }
  }
  return name + "?immutable=1";
}

/// The engine counts its memory, behind a lock that it takes for every allocation. Nobody asks.
void leaveMemoryUncounted() {
  static const int result = sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0);
  // Refused where the engine is in use already, as by a test; then it goes on counting.
  static_cast<void>(result);
}

}  // namespace

SQLiteDatabase::SQLiteDatabase(const std::filesystem::path& path, Mode mode,
                               int busyTimeoutMilliseconds) {
  leaveMemoryUncounted();
  int flags = SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE;
  switch (mode) {
    case Mode::readOnly:
      flags |= SQLITE_OPEN_READONLY;
      break;
    case Mode::immutable:
      flags |= SQLITE_OPEN_READONLY | SQLITE_OPEN_URI;
      break;
    case Mode::readWrite:
      flags |= SQLITE_OPEN_READWRITE;
      break;
    case Mode::create:
      flags |= SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
      break;
  }
  const std::string name = mode == Mode::immutable ? immutableName(path) : path.string();
  if (sqlite3_open_v2(name.c_str(), &handle_, flags, nullptr) != SQLITE_OK) {
    const SQLiteError reason = error("");
    sqlite3_close(std::exchange(handle_, nullptr));
    throw reason;
  }
  sqlite3_busy_timeout(handle_, busyTimeoutMilliseconds);
}

SQLiteDatabase::~SQLiteDatabase() {
  if (isOpen()) {
    cache_.clear();
    extra_.clear();
    sqlite3_close_v2(handle_);
  }
}

void SQLiteDatabase::close() {
  requireOpen();
  const auto isUnderWay = [](const auto& prepared) { return prepared->isUnderWay; };
  if (std::ranges::any_of(extra_, isUnderWay) ||
      std::ranges::any_of(cache_, [&](const auto& entry) { return isUnderWay(entry.second); })) {
    throw SQLiteError(SQLITE_BUSY, "a statement is still under way");
  }
  cache_.clear();
  extra_.clear();
  if (sqlite3_close(handle_) != SQLITE_OK) {
    throw error("");
  }
  handle_ = nullptr;
}

void SQLiteDatabase::execute(std::string_view sql, const std::vector<SQLiteValue>& values) {
  SQLiteStatement statement = query(sql, values);
  while (statement.step()) {
  }
}

SQLiteStatement SQLiteDatabase::query(std::string_view sql,
                                      const std::vector<SQLiteValue>& values) {
  requireOpen();
  SQLiteStatement::Prepared& prepared = prepare(sql);
  prepared.isUnderWay = true;
  SQLiteStatement statement(*this, prepared);
  bind(prepared, values);
  return statement;
}

SQLiteStatement::Prepared& SQLiteDatabase::prepare(std::string_view sql) {
  const auto cached = cache_.find(sql);
  if (cached != cache_.end() && !cached->second->isUnderWay) {
    return *cached->second;
  }
  auto prepared = std::make_unique<SQLiteStatement::Prepared>();
  prepared->sql = sql;
  const char* rest = nullptr;
  if (sqlite3_prepare_v3(handle_, sql.data(), static_cast<int>(sql.size()),
                         SQLITE_PREPARE_PERSISTENT, &prepared->statement, &rest) != SQLITE_OK) {
    throw error(sql);
  }
  const std::string_view unread(rest, static_cast<std::size_t>(sql.data() + sql.size() - rest));
  if (prepared->statement == nullptr || unread.find_first_not_of(" \t\r\n;") != unread.npos) {
    throw SQLiteError(SQLITE_MISUSE, "exactly one statement is expected", std::string(sql));
  }
  if (cached != cache_.end()) {
    extra_.push_back(std::move(prepared));
    return *extra_.back();
  }
  return *cache_.emplace(sql, std::move(prepared)).first->second;
}

void SQLiteDatabase::bind(SQLiteStatement::Prepared& prepared,
                          const std::vector<SQLiteValue>& values) {
  sqlite3_stmt* statement = prepared.statement;
  if (static_cast<int>(values.size()) != sqlite3_bind_parameter_count(statement)) {
    throw SQLiteError(SQLITE_RANGE, "the number of values is not that of the parameters",
                      prepared.sql);
  }
  int index = 0;
  for (const SQLiteValue& value : values) {
    ++index;
    if (const auto* real = std::get_if<double>(&value); real != nullptr && std::isnan(*real)) {
      throw SQLiteError(SQLITE_MISMATCH, "a value is not a number", prepared.sql);
    }
    const int result = std::visit(
        Overloaded{
            [&](std::nullptr_t) { return sqlite3_bind_null(statement, index); },
            [&](std::int64_t integer) { return sqlite3_bind_int64(statement, index, integer); },
            [&](double real) { return sqlite3_bind_double(statement, index, real); },
            [&](std::string_view text) {
              const char* bytes = text.data() == nullptr ? "" : text.data();
              return sqlite3_bind_text64(statement, index, bytes, text.size(), SQLITE_TRANSIENT,
                                         SQLITE_UTF8);
            },
            [&](std::span<const std::byte> blob) {
              return blob.empty() ? sqlite3_bind_zeroblob(statement, index, 0)
                                  : sqlite3_bind_blob64(statement, index, blob.data(), blob.size(),
                                                        SQLITE_TRANSIENT);
            }},
        value);
    if (result != SQLITE_OK) {
      throw error(prepared.sql);
    }
  }
}

void SQLiteDatabase::release(SQLiteStatement::Prepared& prepared) {
  // What the reset reports is the failure of the last step, which has been thrown by then.
  sqlite3_reset(prepared.statement);
  sqlite3_clear_bindings(prepared.statement);
  prepared.isUnderWay = false;
  std::erase_if(extra_, [&](const auto& known) { return known.get() == &prepared; });
}

void SQLiteDatabase::executeScript(const std::string& script) {
  requireOpen();
  if (sqlite3_exec(handle_, script.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
    throw error(script);
  }
}

std::int64_t SQLiteDatabase::lastInsertedRowId() const {
  requireOpen();
  return sqlite3_last_insert_rowid(handle_);
}

std::int64_t SQLiteDatabase::changesCount() const {
  requireOpen();
  return sqlite3_changes64(handle_);
}

std::string SQLiteDatabase::lastError() const {
  requireOpen();
  return sqlite3_errmsg(handle_);
}

void SQLiteDatabase::begin(TransactionKind kind) {
  switch (kind) {
    case TransactionKind::deferred:
      execute("BEGIN DEFERRED");
      break;
    case TransactionKind::immediate:
      execute("BEGIN IMMEDIATE");
      break;
    case TransactionKind::exclusive:
      execute("BEGIN EXCLUSIVE");
      break;
  }
}

void SQLiteDatabase::commit() {
  execute("COMMIT");
}

void SQLiteDatabase::rollback() {
  execute("ROLLBACK");
}

bool SQLiteDatabase::isInTransaction() const {
  requireOpen();
  return sqlite3_get_autocommit(handle_) == 0;
}

void SQLiteDatabase::requireOpen() const {
  if (!isOpen()) {
    throw SQLiteError(SQLITE_MISUSE, "the database is closed");
  }
}

SQLiteError SQLiteDatabase::error(std::string_view sql) const {
  if (handle_ == nullptr) {
    return {SQLITE_NOMEM, "out of memory", std::string(sql)};
  }
  return {sqlite3_extended_errcode(handle_), sqlite3_errmsg(handle_), std::string(sql)};
}

SQLiteTransaction::SQLiteTransaction(SQLiteDatabase& database, SQLiteDatabase::TransactionKind kind)
    : database_(database) {
  database_.begin(kind);
}

SQLiteTransaction::~SQLiteTransaction() {
  // Some failures have rolled back already; and a rollback that fails leaves a transaction that the
  // next opening of the file rolls back.
  try {
    if (database_.isOpen() && !isCommitted_ && database_.isInTransaction()) {
      database_.rollback();
    }
  } catch (const SQLiteError&) {  // NOLINT(bugprone-empty-catch): see above
  }
}

void SQLiteTransaction::commit() {
  database_.commit();
  isCommitted_ = true;
}

}  // namespace corvane
