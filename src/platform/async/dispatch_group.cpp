#include "platform/async/dispatch_group.h"

#include <cassert>
#include <condition_variable>
#include <mutex>
#include <utility>
#include <vector>

#include "platform/async/clamped_duration.h"
#include "platform/async/thread_pool.h"

namespace corvane {

struct DispatchGroup::State {
  struct Notice {
    std::shared_ptr<DispatchQueue> queue;
    DispatchQueue::Work work;
  };
  std::mutex mutex;
  std::condition_variable ended;
  int underWay = 0;
  std::vector<Notice> notices;
};

DispatchGroup::DispatchGroup() : state_(std::make_shared<State>()) {}

void DispatchGroup::enter() const {
  const std::lock_guard lock(state_->mutex);
  ++state_->underWay;
}

void DispatchGroup::leave() const {
  std::vector<State::Notice> notices;
  {
    const std::lock_guard lock(state_->mutex);
    assert(state_->underWay > 0 && "a group is left more often than it was entered");
    if (--state_->underWay > 0) {
      return;
    }
    notices.swap(state_->notices);
    state_->ended.notify_all();
  }
  for (auto& [queue, work] : notices) {
    queue->async(std::move(work));
  }
}

void DispatchGroup::async(const std::shared_ptr<DispatchQueue>& queue,
                          DispatchQueue::Work work) const {
  enter();
  queue->async([group = *this, work = std::move(work)]() mutable {
    work();
    work = nullptr;
    group.leave();
  });
}

void DispatchGroup::notify(std::shared_ptr<DispatchQueue> queue, DispatchQueue::Work work) const {
  {
    const std::lock_guard lock(state_->mutex);
    if (state_->underWay > 0) {
      state_->notices.push_back({std::move(queue), std::move(work)});
      return;
    }
  }
  queue->async(std::move(work));
}

bool DispatchGroup::wait(DispatchQueue::Duration timeout) const {
  const ThreadPool::Blocking blocking;
  std::unique_lock lock(state_->mutex);
  return state_->ended.wait_for(lock, clampedDuration(timeout),
                                [this] { return state_->underWay == 0; });
}

}  // namespace corvane
