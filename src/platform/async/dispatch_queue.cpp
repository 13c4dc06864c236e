#include "platform/async/dispatch_queue.h"

#include <array>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <semaphore>
#include <thread>
#include <utility>

#include "platform/async/background_thread.h"
#include "platform/async/clamped_duration.h"
#include "platform/async/thread_pool.h"
#include "platform/fatal_error.h"

namespace corvane {
namespace {

using Clock = std::chrono::steady_clock;
using Work = DispatchQueue::Work;

/// A block that is running: on which queue, whether that queue runs nothing beside it, and the
/// block that waits for it, where there is one.
struct Frame {
  const DispatchQueue* queue;
  bool isExclusive;
  const Frame* waiting;
};

thread_local const Frame* currentFrame = nullptr;

std::atomic<std::thread::id> mainThread = std::this_thread::get_id();

/// Whether `queue` cannot go on before the code that runs in `frame` has returned.
bool wouldDeadlock(const DispatchQueue& queue, const Frame* frame) {
  for (; frame != nullptr; frame = frame->waiting) {
    if (frame->queue == &queue && frame->isExclusive) {
      return true;
    }
  }
  return &queue == DispatchQueue::main().get() && std::this_thread::get_id() == mainThread.load();
}

/// A block on its way to its turn.
struct Item {
  Work work;
  bool isBarrier = false;
  const Frame* waiting = nullptr;
};

void runItem(Item item, const DispatchQueue& queue, bool isExclusive) {
  const Frame frame{&queue, isExclusive, item.waiting};
  const Frame* outer = std::exchange(currentFrame, &frame);
  [&]() noexcept { item.work(); }();
  item.work = nullptr;
  currentFrame = outer;
}

void startAfter(DispatchQueue::Duration delay, std::shared_ptr<DispatchQueue> queue, Work work);

/// What all queues have in common: blocks that run one after the other or side by side are given as
/// items.
class AnyQueue : public DispatchQueue {
 public:
  explicit AnyQueue(std::string label) : label_(std::move(label)) {}

  [[nodiscard]] const std::string& label() const override { return label_; }

  void async(Work work) override { enqueue({std::move(work)}); }
  void asyncBarrier(Work work) override { enqueue({std::move(work), true}); }
  void asyncAfter(Duration delay, Work work) override {
    startAfter(delay, shared_from_this(), std::move(work));
  }

  void sync(Work work) override {
    // Outside of its blocks too, the main thread keeps the main queue from going on while it waits.
    const Frame mainFrame{DispatchQueue::main().get(), true, nullptr};
    const bool isMainThread = std::this_thread::get_id() == mainThread.load();
    const Frame* caller = currentFrame == nullptr && isMainThread ? &mainFrame : currentFrame;
    if (wouldDeadlock(*this, caller)) {
      fatalError("Deadlock: sync onto the queue \"" + label_ + "\", which waits for its caller.");
    }
    // Shared, since the block may still be in release() when the caller has gone on.
    const auto done = std::make_shared<std::binary_semaphore>(0);
    enqueue({[&work, done] {
               work();
               work = nullptr;
               done->release();
             },
             false, caller});
    const ThreadPool::Blocking blocking;
    done->acquire();
  }

  void activate() override {}

  [[nodiscard]] bool isCurrent() const override {
    return currentFrame != nullptr && currentFrame->queue == this;
  }

 protected:
  virtual void enqueue(Item item) = 0;

 private:
  const std::string label_;
};

/// A queue whose blocks run on the thread pool.
class PoolQueue : public AnyQueue {
 public:
  PoolQueue(std::string label, bool isSerial, Start start)
      : AnyQueue(std::move(label)), isSerial_(isSerial), isActive_(start == Start::active) {}

  void activate() override {
    const std::lock_guard lock(mutex_);
    isActive_ = true;
    startWhatMayRun();
  }

 protected:
  void enqueue(Item item) override {
    item.isBarrier = item.isBarrier || isSerial_;
    const std::lock_guard lock(mutex_);
    items_.push_back(std::move(item));
    startWhatMayRun();
  }

 private:
  /// Hands the first items to the pool as far as barriers let them run. The lock is held.
  void startWhatMayRun() {
    while (isActive_ && !items_.empty() && !barrierIsRunning_ &&
           (running_ == 0 || !items_.front().isBarrier)) {
      ++running_;
      barrierIsRunning_ = items_.front().isBarrier;
      ThreadPool::shared().submit(
          [self = std::static_pointer_cast<PoolQueue>(shared_from_this()),
           item = std::exchange(items_.front(), {})]() mutable { self->run(std::move(item)); });
      items_.pop_front();
    }
  }

  void run(Item item) {
    const bool isBarrier = item.isBarrier;
    runItem(std::move(item), *this, isBarrier);
    const std::lock_guard lock(mutex_);
    --running_;
    barrierIsRunning_ = false;
    startWhatMayRun();
  }

  const bool isSerial_;
  std::mutex mutex_;
  std::deque<Item> items_;
  bool isActive_;
  int running_ = 0;
  bool barrierIsRunning_ = false;
};

/// The queue that the main loop pumps.
class MainQueue : public AnyQueue {
 public:
  MainQueue() : AnyQueue("main") {}

  static MainQueue& shared() { return static_cast<MainQueue&>(*DispatchQueue::main()); }

  void setWakeUp(std::function<void()> wakeUp) {
    const std::lock_guard lock(wakeUpMutex_);
    wakeUp_ = std::move(wakeUp);
    // What was posted before the loop could be woken must not wait for the next post.
    if (wakeUp_ && size() > 0) {
      wakeUp_();
    }
  }

  /// Runs the next block, for which it waits no longer than until `deadline`.
  void runOne(Clock::time_point deadline) {
    mainThread = std::this_thread::get_id();
    Item item;
    {
      std::unique_lock lock(mutex_);
      if (!changed_.wait_until(lock, deadline, [this] { return !items_.empty(); })) {
        return;
      }
      item = std::move(items_.front());
      items_.pop_front();
    }
    runItem(std::move(item), *this, true);
  }

  [[nodiscard]] std::size_t size() {
    const std::lock_guard lock(mutex_);
    return items_.size();
  }

 protected:
  void enqueue(Item item) override {
    {
      const std::lock_guard lock(mutex_);
      items_.push_back(std::move(item));
    }
    changed_.notify_one();
    // Under a lock of its own, so that no call is under way when setWakeUp() has returned.
    const std::lock_guard lock(wakeUpMutex_);
    if (wakeUp_) {
      wakeUp_();
    }
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Item> items_;
  std::mutex wakeUpMutex_;
  std::function<void()> wakeUp_;
};

/// Holds blocks back until they are due; those of one moment keep their order.
class Delays {
 public:
  static Delays& shared() {
    // Never destroyed: its thread may outlast the destruction of static objects.
    static auto* delays = new Delays;  // NOLINT(cppcoreguidelines-owning-memory)
    return *delays;
  }

  void add(Clock::time_point due, std::shared_ptr<DispatchQueue> queue, Work work) {
    {
      const std::lock_guard lock(mutex_);
      waiting_.emplace(due, Delayed{std::move(queue), std::move(work)});
    }
    changed_.notify_one();
  }

 private:
  struct Delayed {
    std::shared_ptr<DispatchQueue> queue;
    Work work;
  };

  Delays() {
    startBackgroundThread([this] { run(); }).detach();
  }

  void run() {
    std::unique_lock lock(mutex_);
    while (true) {
      if (waiting_.empty()) {
        changed_.wait(lock);
        continue;
      }
      const Clock::time_point due = waiting_.begin()->first;
      if (Clock::now() < due) {
        changed_.wait_until(lock, due);
        continue;
      }
      auto delayed = waiting_.extract(waiting_.begin());
      lock.unlock();
      delayed.mapped().queue->async(std::move(delayed.mapped().work));
      delayed = {};
      lock.lock();
    }
  }

  std::mutex mutex_;
  std::condition_variable changed_;
  std::multimap<Clock::time_point, Delayed> waiting_;
};

void startAfter(DispatchQueue::Duration delay, std::shared_ptr<DispatchQueue> queue, Work work) {
  Delays::shared().add(Clock::now() + clampedDuration(delay), std::move(queue), std::move(work));
}

std::atomic<bool> isStopping = false;

/// How often a condition is asked again that no block has changed.
constexpr std::chrono::milliseconds askAgainAfter{10};

}  // namespace

// The shared queues are never destroyed: threads of the pool may outlast static objects.

const std::shared_ptr<DispatchQueue>& DispatchQueue::main() {
  static const auto& queue = *new std::shared_ptr<DispatchQueue>(std::make_shared<MainQueue>());
  return queue;
}

const std::shared_ptr<DispatchQueue>& DispatchQueue::global(QualityOfService quality) {
  static const auto& queues = *new std::array<std::shared_ptr<DispatchQueue>, 3>{
      std::make_shared<PoolQueue>("global user-initiated", false, Start::active),
      std::make_shared<PoolQueue>("global standard", false, Start::active),
      std::make_shared<PoolQueue>("global utility", false, Start::active)};
  return queues[static_cast<std::size_t>(quality)];
}

std::shared_ptr<DispatchQueue> DispatchQueue::serial(std::string label, Start start) {
  return std::make_shared<PoolQueue>(std::move(label), true, start);
}

std::shared_ptr<DispatchQueue> DispatchQueue::concurrent(std::string label,
                                                         QualityOfService /*quality*/,
                                                         Start start) {
  return std::make_shared<PoolQueue>(std::move(label), false, start);
}

void MainLoop::run() {
  isStopping = false;
  while (!isStopping) {
    MainQueue::shared().runOne(Clock::now() + std::chrono::hours(1));
  }
}

void MainLoop::stop() {
  DispatchQueue::main()->async([] { isStopping = true; });
}

bool MainLoop::runUntil(const std::function<bool()>& isDone, DispatchQueue::Duration timeout) {
  const auto end = Clock::now() + clampedDuration(timeout);
  while (!isDone()) {
    const auto now = Clock::now();
    if (now >= end) {
      return false;
    }
    MainQueue::shared().runOne(std::min(end, now + askAgainAfter));
  }
  return true;
}

void MainLoop::drain() {
  for (std::size_t due = MainQueue::shared().size(); due > 0; --due) {
    MainQueue::shared().runOne(Clock::now());
  }
}

void MainLoop::setWakeUp(std::function<void()> wakeUp) {
  MainQueue::shared().setWakeUp(std::move(wakeUp));
}

}  // namespace corvane
