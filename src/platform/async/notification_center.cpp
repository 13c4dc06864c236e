#include "platform/async/notification_center.h"

#include <cassert>

namespace corvane {

struct NotificationCenter::Observation {
  Subject subject;
  const void* object;
  Handler handler;
  std::shared_ptr<DispatchQueue> queue;
};

NotificationCenter& NotificationCenter::defaultCenter() {
  static NotificationCenter center;
  return center;
}

Subscription NotificationCenter::add(Subject subject, const void* object, Handler handler,
                                     std::shared_ptr<DispatchQueue> queue) {
  auto observation = std::make_shared<Observation>(
      Observation{subject, object, std::move(handler), std::move(queue)});
  const std::lock_guard lock(mutex_);
  std::erase_if(observations_, [](const auto& known) { return known.expired(); });
  observations_.push_back(observation);
  return Subscription(std::move(observation));
}

void NotificationCenter::tell(Subject subject, const void* object,
                              const std::shared_ptr<const void>& payload) {
  std::vector<std::weak_ptr<Observation>> observations;
  {
    const std::lock_guard lock(mutex_);
    observations = observations_;
  }
  for (const auto& weakObservation : observations) {
    const auto observation = weakObservation.lock();
    if (observation == nullptr || observation->subject.topic != subject.topic ||
        (observation->object != nullptr && observation->object != object)) {
      continue;
    }
    assert(observation->subject.payload == subject.payload && "two topics have one name");
    if (observation->queue == nullptr) {
      observation->handler(payload.get());
      continue;
    }
    observation->queue->async([weakObservation, payload] {
      if (const auto living = weakObservation.lock()) {
        living->handler(payload.get());
      }
    });
  }
}

}  // namespace corvane
