#include "marketdata/cache/cache_checkpoint.h"

#include <cstdint>
#include <system_error>
#include <utility>

#include "platform/async/dispatch_queue.h"
#include "platform/data/sqlite.h"
#include "platform/system/log.h"

namespace corvane {
namespace {

/// About what sixteen refreshes of fifty equities write.
constexpr std::uintmax_t longLog = std::uintmax_t{8} << 20;

/// For a disk that does not answer. The copy goes on by itself then.
constexpr DispatchQueue::Duration longestWait(10);

std::filesystem::path logOf(std::filesystem::path location) {
  location += "-wal";
  return location;
}

}  // namespace

CacheCheckpoint::CacheCheckpoint(std::filesystem::path location)
    : location_(std::move(location)), log_(logOf(location_)) {}

CacheCheckpoint::~CacheCheckpoint() {
  (void)group_.wait(longestWait);
}

void CacheCheckpoint::runWhereDue() {
  std::error_code error;
  const std::uintmax_t size = std::filesystem::file_size(log_, error);
  if (error || size < longLog || isUnderWay_->exchange(true)) {
    return;
  }
  group_.enter();
  DispatchQueue::global()->async([location = location_, isUnderWay = isUnderWay_, group = group_] {
    try {
      SQLiteDatabase database(location, SQLiteDatabase::Mode::readWrite);
      // As much as nobody stands in the way of. When all of it has been written back, the next
      // commit starts the log from its beginning.
      SQLiteStatement checkpoint = database.query("PRAGMA wal_checkpoint(PASSIVE)");
      checkpoint.step();
    } catch (const Error& failure) {
      Log::write("Failed to write the log of the cache back: ", failure);
    }
    *isUnderWay = false;
    group.leave();
  });
}

}  // namespace corvane
