// Queues of work on one pool of threads, and the main queue that the program's event loop pumps.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

namespace corvane {

/// What a queue's work is for. All qualities share the same threads.
enum class QualityOfService { userInitiated, standard, utility };

/// Runs blocks of work in the order in which they were given, one at a time (main, serial) or many
/// at a time (concurrent, global). Held by shared pointer only. All operations are safe on any
/// thread.
///
/// Blocks must not throw; one that does ends the program. A queue lives as long as it has work to
/// do, but blocks that an inactive queue still keeps when its last holder lets go are destroyed
/// unrun.
class DispatchQueue : public std::enable_shared_from_this<DispatchQueue> {
 public:
  using Work = std::move_only_function<void()>;
  using Duration = std::chrono::duration<double>;

  /// Whether a new queue runs its work at once or keeps it until activate().
  enum class Start { active, inactive };

  /// The queue of the main event loop. Its blocks run only while that loop pumps it.
  [[nodiscard]] static const std::shared_ptr<DispatchQueue>& main();
  /// The shared concurrent queue of a quality.
  [[nodiscard]] static const std::shared_ptr<DispatchQueue>& global(
      QualityOfService quality = QualityOfService::standard);
  /// A queue that runs one block at a time.
  [[nodiscard]] static std::shared_ptr<DispatchQueue> serial(std::string label,
                                                             Start start = Start::active);
  /// A queue that runs blocks side by side, but for barriers.
  [[nodiscard]] static std::shared_ptr<DispatchQueue> concurrent(
      std::string label, QualityOfService quality = QualityOfService::standard,
      Start start = Start::active);

  virtual ~DispatchQueue() = default;

  [[nodiscard]] virtual const std::string& label() const = 0;

  /// Lets `work` run later.
  virtual void async(Work work) = 0;
  /// As async, but not before `delay` has passed.
  virtual void asyncAfter(Duration delay, Work work) = 0;
  /// As async; on a concurrent queue the block runs alone: after all that were given before it have
  /// ended, and before any that is given after it starts.
  virtual void asyncBarrier(Work work) = 0;
  /// Runs `work` and returns when it has ended. Waiting for a queue that the caller itself, or one
  /// that waits for it, keeps from going on is a fault of the program and stops it with a text that
  /// says so. Two threads that wait for each other's queues are not found out.
  virtual void sync(Work work) = 0;

  /// Lets an inactive queue start with what it has kept. Does nothing on an active one.
  virtual void activate() = 0;

  /// Whether the calling code runs in a block of this queue.
  [[nodiscard]] virtual bool isCurrent() const = 0;
};

/// The pump of the main queue; what runs it is the main thread. One loop at a time.
class MainLoop {
 public:
  /// Runs blocks of the main queue until stop() is called.
  static void run();
  static void stop();
  /// Runs blocks until `isDone()` holds, asked after every block, or until `timeout` has passed;
  /// whether it held. For tests and for the console.
  static bool runUntil(const std::function<bool()>& isDone, DispatchQueue::Duration timeout);
  /// Runs the blocks that are due now, and returns. For an event loop of somebody else.
  static void drain();
  /// `wakeUp` is called from any thread whenever drain() has something to do, at once where that is
  /// so already; no call is under way when the next setWakeUp() has returned. It must not post to
  /// the main queue itself. Empty for none.
  static void setWakeUp(std::function<void()> wakeUp);
};

}  // namespace corvane
