// A piece of work that can be cancelled before it starts and waited for.
#pragma once

#include <memory>

#include "platform/async/dispatch_group.h"
#include "platform/async/dispatch_queue.h"

namespace corvane {

/// Work that runs at most once. A cheap value to copy; copies are the same piece of work. Any
/// thread.
class DispatchWorkItem {
 public:
  explicit DispatchWorkItem(DispatchQueue::Work work);

  /// Runs the work, unless it was cancelled or has been run; then it counts as ended all the same.
  void perform() const;
  /// Lets the work run on `queue`.
  void performOn(const std::shared_ptr<DispatchQueue>& queue) const;

  /// Keeps work that has not begun from running. Work that has begun can ask isCancelled().
  void cancel() const;
  [[nodiscard]] bool isCancelled() const;

  /// Waits until the work has ended, or until `timeout` has passed; whether it had ended.
  [[nodiscard]] bool wait(DispatchQueue::Duration timeout) const;
  /// Lets `work` run on `queue` when this one has ended.
  void notify(std::shared_ptr<DispatchQueue> queue, DispatchQueue::Work work) const;

 private:
  struct State;
  std::shared_ptr<State> state_;
};

}  // namespace corvane
