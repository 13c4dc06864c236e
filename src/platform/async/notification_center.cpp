#include "platform/async/notification_center.h"

#include <utility>

namespace corvane {

struct NotificationCenter::Observation {
  std::string name;
  const void* object;
  Handler handler;
  std::shared_ptr<DispatchQueue> queue;
};

NotificationCenter& NotificationCenter::defaultCenter() {
  static NotificationCenter center;
  return center;
}

NotificationCenter::Token NotificationCenter::addObserver(std::string name, const void* object,
                                                          Handler handler,
                                                          std::shared_ptr<DispatchQueue> queue) {
  auto observation = std::make_shared<Observation>(
      Observation{std::move(name), object, std::move(handler), std::move(queue)});
  const std::lock_guard lock(mutex_);
  std::erase_if(observations_, [](const auto& known) { return known.expired(); });
  observations_.push_back(observation);
  return Token(std::move(observation));
}

void NotificationCenter::post(std::string name, const void* object, UserInfo userInfo) {
  std::vector<std::weak_ptr<Observation>> observations;
  {
    const std::lock_guard lock(mutex_);
    observations = observations_;
  }
  const auto notification = std::make_shared<const Notification>(
      Notification{std::move(name), object, std::move(userInfo)});
  for (const auto& weakObservation : observations) {
    const auto observation = weakObservation.lock();
    if (observation == nullptr || observation->name != notification->name ||
        (observation->object != nullptr && observation->object != object)) {
      continue;
    }
    if (observation->queue == nullptr) {
      observation->handler(*notification);
      continue;
    }
    observation->queue->async([weakObservation, notification] {
      if (const auto living = weakObservation.lock()) {
        living->handler(*notification);
      }
    });
  }
}

}  // namespace corvane
