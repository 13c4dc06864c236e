#include "platform/async/dispatch_work_item.h"

#include <atomic>
#include <utility>

namespace corvane {

struct DispatchWorkItem::State {
  explicit State(DispatchQueue::Work itsWork) : work(std::move(itsWork)) { ended.enter(); }

  DispatchQueue::Work work;
  std::atomic<bool> hasBegun = false;
  std::atomic<bool> isCancelled = false;
  DispatchGroup ended;
};

DispatchWorkItem::DispatchWorkItem(DispatchQueue::Work work)
    : state_(std::make_shared<State>(std::move(work))) {}

void DispatchWorkItem::perform() const {
  if (state_->hasBegun.exchange(true)) {
    return;
  }
  if (!state_->isCancelled) {
    state_->work();
  }
  state_->work = nullptr;
  state_->ended.leave();
}

void DispatchWorkItem::performOn(const std::shared_ptr<DispatchQueue>& queue) const {
  queue->async([item = *this] { item.perform(); });
}

void DispatchWorkItem::cancel() const {
  state_->isCancelled = true;
}

bool DispatchWorkItem::isCancelled() const {
  return state_->isCancelled;
}

bool DispatchWorkItem::wait(DispatchQueue::Duration timeout) const {
  return state_->ended.wait(timeout);
}

void DispatchWorkItem::notify(std::shared_ptr<DispatchQueue> queue,
                              DispatchQueue::Work work) const {
  state_->ended.notify(std::move(queue), std::move(work));
}

}  // namespace corvane
