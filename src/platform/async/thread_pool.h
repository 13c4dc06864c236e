// The threads behind all dispatch queues.
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>

namespace corvane {

/// Runs tasks on as many threads as the machine has cores, and on more while some of them wait for
/// others, so that waiting never starves the rest. Threads that have nothing to do end after a
/// while. Lives as long as the process. Any thread.
class ThreadPool {
 public:
  using Task = std::move_only_function<void()>;

  [[nodiscard]] static ThreadPool& shared();

  void submit(Task task);

  /// To be held while the calling thread waits for other tasks.
  class Blocking {
   public:
    Blocking();
    ~Blocking();
    Blocking(const Blocking&) = delete;
    Blocking& operator=(const Blocking&) = delete;

   private:
    const bool isPoolThread_;
  };

 private:
  ThreadPool();

  void runThread();
  void growIfStarving();

  std::mutex mutex_;
  std::condition_variable hasTask_;
  std::deque<Task> tasks_;
  const unsigned cores_;
  unsigned threads_ = 0;
  unsigned idle_ = 0;
  unsigned blocked_ = 0;
};

}  // namespace corvane
