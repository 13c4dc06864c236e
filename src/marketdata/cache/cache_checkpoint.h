// The writing back of what a cache has logged, beside the thread that uses it.
#pragma once

#include <atomic>
#include <filesystem>
#include <memory>

#include "platform/async/dispatch_group.h"

namespace corvane {

/// Copies the write-ahead log of a database file into the file itself when it has grown long. That
/// waits for the disk, which whoever has just committed something must not: the engine's own way of
/// doing it at a commit is to be switched off for the file.
class CacheCheckpoint {
 public:
  explicit CacheCheckpoint(std::filesystem::path location);
  CacheCheckpoint(const CacheCheckpoint&) = delete;
  CacheCheckpoint& operator=(const CacheCheckpoint&) = delete;
  /// Waits for what is under way, so that nobody uses the file behind its owner's back.
  ~CacheCheckpoint();

  /// To be called after a commit. Starts to write back on a background queue, over a connection of
  /// its own, where that is due and has not been started already. What fails is tried again after a
  /// later commit: until then the log goes on growing, and nothing is lost.
  void runWhereDue();

 private:
  const std::filesystem::path location_;
  const std::filesystem::path log_;
  const std::shared_ptr<std::atomic<bool>> isUnderWay_ = std::make_shared<std::atomic<bool>>(false);
  const DispatchGroup group_;
};

}  // namespace corvane
