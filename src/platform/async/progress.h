// How far a long piece of work has come, and whether it shall go on.
#pragma once

#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <string>

#include "platform/async/subscription.h"

namespace corvane {

/// Shared by the work, which counts its units, and the screen, which shows them and may cancel. Any
/// thread; observers run on the thread that made the change.
class Progress {
 public:
  using Observer = std::function<void(const Progress&)>;

  /// Without a total, or with one of 0, nobody knows how long it will take.
  explicit Progress(std::int64_t totalUnitCount = 0) : totalUnitCount_(totalUnitCount) {}
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  [[nodiscard]] std::int64_t totalUnitCount() const;
  [[nodiscard]] std::int64_t completedUnitCount() const;
  void setTotalUnitCount(std::int64_t count);
  void setCompletedUnitCount(std::int64_t count);

  /// From 0 to 1; 0 where the total is not known.
  [[nodiscard]] double fractionCompleted() const;
  [[nodiscard]] bool isIndeterminate() const { return totalUnitCount() <= 0; }
  [[nodiscard]] bool isFinished() const;

  /// What the work is doing, in words for the user.
  [[nodiscard]] std::string localizedDescription() const;
  void setLocalizedDescription(std::string text);

  /// Asks the work to end. It does so when it next looks at isCancelled().
  void cancel();
  [[nodiscard]] bool isCancelled() const;

  /// Calls `observer` after every change.
  [[nodiscard]] Subscription addObserver(Observer observer);

 private:
  template <typename Change>
  void apply(Change change);

  mutable std::mutex mutex_;
  std::int64_t totalUnitCount_;
  std::int64_t completedUnitCount_ = 0;
  std::string localizedDescription_;
  bool isCancelled_ = false;
  std::list<std::weak_ptr<const Observer>> observers_;
};

}  // namespace corvane
