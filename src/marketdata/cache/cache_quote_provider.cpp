#include "marketdata/cache/cache_quote_provider.h"

#include <cassert>
#include <chrono>
#include <typeinfo>
#include <utility>

#include "core/market/price_adjuster.h"
#include "marketdata/cache/quote_cache_schema.h"
#include "platform/async/dispatch_queue.h"
#include "platform/system/class_name.h"
#include "platform/system/file_manager.h"
#include "platform/system/log.h"

namespace corvane {
namespace {

/// How long another running program may keep the file locked: it writes one answer at a time.
constexpr int busyTimeoutMilliseconds = 1000;

/// Keeps a log beside the file. The engine never waits for a lock while it changes to that, and
/// where several programs start together on a new file some would fail.
void useWriteAheadLog(SQLiteDatabase& database) {
  const auto end =
      std::chrono::steady_clock::now() + std::chrono::milliseconds(busyTimeoutMilliseconds);
  for (;;) {
    try {
      database.executeScript("PRAGMA journal_mode = WAL;");
      return;
    } catch (const SQLiteError& error) {
      if (!error.isForALock() || std::chrono::steady_clock::now() >= end) {
        throw;
      }
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
}

/// The id of a row that is gone; another equity's may have its old one by now.
constexpr std::int64_t noRow = -1;

/// Runs `completion(outcome)` later, on a background queue.
template <typename Completion, typename Outcome>
void completeLater(Completion completion, Outcome outcome) {
  DispatchQueue::global()->async(
      [completion = std::move(completion), outcome = std::move(outcome)]() mutable {
        completion(std::move(outcome));
      });
}

}  // namespace

CacheQuoteProvider::CacheQuoteProvider(const std::filesystem::path& location)
    : database_(location, SQLiteDatabase::Mode::create, busyTimeoutMilliseconds),
      checkpoint_(location) {
  useWriteAheadLog(database_);
  database_.executeScript("PRAGMA foreign_keys = ON;");
  // A commit does not wait for the disk: a cache may lose its last second, but the file stays
  // sound. Nor does it write the log back, which waits too.
  database_.executeScript("PRAGMA synchronous = NORMAL;\nPRAGMA wal_autocheckpoint = 0;");
  migrateQuoteCacheSchema(database_);
  dataVersion_ = dataVersion();
}

CacheQuoteProvider::~CacheQuoteProvider() {
  try {
    database_.close();
  } catch (const SQLiteError& error) {
    Log::write("Failed to close cache database: ", error.message);
  }
}

std::filesystem::path CacheQuoteProvider::defaultLocation(const QuoteProvider& source) {
  return files::cachesDirectory() / (className(typeid(source)) + "Cache.sqlite3");
}

SQLiteDatabase& CacheQuoteProvider::database() const {
  assert(std::this_thread::get_id() == thread_ && "the cache is for one thread");
  return database_;
}

EquityPointer CacheQuoteProvider::equityWithId(std::string_view id) {
  EquityPointer equity = QuoteProvider::equityWithId(id);
  if (equity->isAuthoritative) {
    return equity;
  }
  try {
    SQLiteStatement row =
        database().query("SELECT * FROM equities WHERE identifier = ? LIMIT 1;", {id});
    if (row.step()) {
      loadEquityRow(*equity, row);
    }
  } catch (const Error& error) {
    Log::write("Error while fetching or updating equity ", id, " from cache: ", error);
  }
  return equity;
}

void CacheQuoteProvider::searchEquities(std::string text, EquitiesCompletion completion) {
  std::vector<EquityPointer> found;
  if (EquityPointer equity = equityWithId(text); equity->isAuthoritative) {
    found.push_back(std::move(equity));
  }
  completeLater(std::move(completion), std::move(found));
}

void CacheQuoteProvider::refreshEquities(std::vector<EquityPointer> equities,
                                         RefreshCompletion completion) {
  ErrorPointer firstError;
  try {
    for (const EquityPointer& equity : equities) {
      const auto rowId = rowIdOf(*equity);
      if (!rowId) {
        continue;
      }
      SQLiteStatement row =
          database().query("SELECT * FROM equities WHERE id = ? LIMIT 1;", {*rowId});
      if (!row.step()) {
        throw QuoteProviderError(QuoteProviderError::NotAvailable{});
      }
      loadEquityRow(*equity, row);
    }
  } catch (const Error& error) {
    firstError = error.copy();
  }
  completeLater(std::move(completion), std::move(firstError));
}

void CacheQuoteProvider::fetchQuotes(QuoteQuery query, std::shared_ptr<PriceAdjuster> /*adjuster*/,
                                     QuoteCompletion completion) {
  auto read = [&]() -> Result<QuoteFetchResult> {
    try {
      return readQuery(query);
    } catch (const Error& error) {
      return failure(error);
    }
  };
  completeLater(std::move(completion), read());
}

std::set<QuoteInterval> CacheQuoteProvider::availableIntervals(const EquityPointer& equity,
                                                               const DateRange& range) const {
  std::set<QuoteInterval> available;
  for (const QuoteInterval interval : allQuoteIntervals) {
    try {
      const QuoteQuery query = {equity, range,
                                QuoteQuery::Quotes{interval, PriceAdjustment::marketNominal}};
      if (coveragePlan(query).missingQueries.empty()) {
        available.insert(interval);
      }
    } catch (const Error&) {  // NOLINT(bugprone-empty-catch): what cannot be planned cannot be had
    }
  }
  return available;
}

std::int64_t CacheQuoteProvider::dataVersion() const {
  SQLiteStatement version = database().query("PRAGMA data_version");
  return version.step() ? version.integer(0).value_or(0) : 0;
}

void CacheQuoteProvider::findRowsAgain() const {
  for (auto& [identifier, rowId] : equityRowIdsById_) {
    SQLiteStatement row = database().query("SELECT id FROM equities WHERE identifier = ? LIMIT 1;",
                                           {std::string_view(identifier)});
    rowId = row.step() ? row.integer("id").value() : noRow;
  }
}

std::optional<std::int64_t> CacheQuoteProvider::rowIdOf(const EquityInfo& equity) const {
  if (const std::int64_t version = dataVersion(); version != dataVersion_) {
    dataVersion_ = version;
    findRowsAgain();
  }
  const auto found = equityRowIdsById_.find(equity.id());
  return found == equityRowIdsById_.end() ? std::nullopt : std::optional(found->second);
}

}  // namespace corvane
