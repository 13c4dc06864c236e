#include "platform/async/timer.h"

#include <atomic>
#include <cassert>
#include <utility>

namespace corvane {

struct Timer::State {
  DispatchQueue::Duration interval;
  bool repeats;
  Handler handler;
  std::shared_ptr<DispatchQueue> queue;
  std::atomic<bool> isValid = true;
};

std::shared_ptr<Timer> Timer::scheduled(DispatchQueue::Duration interval, bool repeats,
                                        Handler handler, std::shared_ptr<DispatchQueue> queue) {
  assert(interval.count() >= 0);
  auto state = std::make_shared<State>();
  state->interval = interval;
  state->repeats = repeats;
  state->handler = std::move(handler);
  state->queue = std::move(queue);
  std::shared_ptr<Timer> timer(new Timer(std::move(state)));
  timer->schedule();
  return timer;
}

Timer::Timer(std::shared_ptr<State> state) : state_(std::move(state)) {}

Timer::~Timer() = default;

void Timer::schedule() {
  state_->queue->asyncAfter(state_->interval, [weakTimer = weak_from_this()] {
    const auto timer = weakTimer.lock();
    if (timer == nullptr || !timer->isValid()) {
      return;
    }
    State& state = *timer->state_;
    if (!state.repeats) {
      state.isValid = false;
    }
    state.handler(*timer);
    if (state.isValid) {
      timer->schedule();
    }
  });
}

void Timer::invalidate() {
  state_->isValid = false;
}

bool Timer::isValid() const {
  return state_->isValid;
}

}  // namespace corvane
