// Waiting for several pieces of work.
#pragma once

#include <memory>

#include "platform/async/dispatch_queue.h"

namespace corvane {

/// Counts pieces of work that have begun and not ended. A cheap value to copy; copies are the same
/// group. Any thread.
class DispatchGroup {
 public:
  DispatchGroup();

  /// A piece begins or ends. Ending more than have begun is a fault of the program.
  void enter() const;
  void leave() const;

  /// Lets `work` run on `queue` as a piece of the group.
  void async(const std::shared_ptr<DispatchQueue>& queue, DispatchQueue::Work work) const;

  /// Lets `work` run on `queue`, once, when no piece is under way: now or when the last has ended.
  void notify(std::shared_ptr<DispatchQueue> queue, DispatchQueue::Work work) const;

  /// Waits until no piece is under way, or until `timeout` has passed; whether none was.
  [[nodiscard]] bool wait(DispatchQueue::Duration timeout) const;

 private:
  struct State;
  std::shared_ptr<State> state_;
};

}  // namespace corvane
