// Something that happens after a while, once or again and again.
#pragma once

#include <functional>
#include <memory>

#include "platform/async/dispatch_queue.h"

namespace corvane {

/// Calls its handler on a queue, the main queue for most. Ends with its last holder, or earlier by
/// invalidate(). Any thread.
class Timer : public std::enable_shared_from_this<Timer> {
 public:
  using Handler = std::function<void(Timer&)>;

  /// A timer that fires `interval` from now, and then, where it repeats, `interval` after each
  /// firing has ended.
  [[nodiscard]] static std::shared_ptr<Timer> scheduled(
      DispatchQueue::Duration interval, bool repeats, Handler handler,
      std::shared_ptr<DispatchQueue> queue = DispatchQueue::main());

  Timer(const Timer&) = delete;
  Timer& operator=(const Timer&) = delete;
  ~Timer();

  /// No firing begins after this where it is called on the timer's own queue; elsewhere, one that
  /// has begun goes on.
  void invalidate();
  /// Whether it will fire again.
  [[nodiscard]] bool isValid() const;

 private:
  struct State;
  explicit Timer(std::shared_ptr<State> state);
  void schedule();

  std::shared_ptr<State> state_;
};

}  // namespace corvane
