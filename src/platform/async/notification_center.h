// News by topic: who has changed something posts it, who wants to know observes it.
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string_view>
#include <type_traits>
#include <typeinfo>
#include <utility>
#include <vector>

#include "platform/async/dispatch_queue.h"
#include "platform/async/subscription.h"

namespace corvane {

/// What news is about, by name, and what each piece of it carries. A constant beside the class that
/// posts it; two topics never share a name.
template <typename PayloadType>
struct Topic {
  using Payload = PayloadType;
  std::string_view name;  ///< of static lifetime
};

/// The payload of news that says all by its topic.
struct NoPayload {};

/// Hands posted news to its observers. Safe on any thread; observers may be added and ended while
/// others are being called.
class NotificationCenter {
 public:
  /// The centre that the whole program shares.
  [[nodiscard]] static NotificationCenter& defaultCenter();

  /// Calls `handler` with the payload of all news of this topic, on the posting thread before
  /// post() returns, or later on `queue` where one is given. With an `object`, only for what that
  /// one posts. An observer on a queue is not called after the subscription's end where that
  /// happens on the queue itself. Inline, a call that has begun on another thread may still be
  /// going on.
  template <typename Payload>
  [[nodiscard]] Subscription addObserver(
      const Topic<Payload>& topic, const void* object,
      std::type_identity_t<std::function<void(const Payload&)>> handler,
      std::shared_ptr<DispatchQueue> queue = nullptr) {
    return add(
        {topic.name, typeid(Payload)}, object,
        [handler = std::move(handler)](const void* payload) {
          handler(*static_cast<const Payload*>(payload));
        },
        std::move(queue));
  }

  /// Tells all observers, in the order in which they came. `object` is who posts it, an identity
  /// to be compared and not to be used otherwise; it may be null.
  template <typename Payload>
  void post(const Topic<Payload>& topic, const void* object,
            std::type_identity_t<Payload> payload) {
    tell({topic.name, typeid(Payload)}, object,
         std::make_shared<const Payload>(std::move(payload)));
  }
  void post(const Topic<NoPayload>& topic, const void* object) { post(topic, object, {}); }

 private:
  struct Observation;
  struct Subject {
    std::string_view topic;
    const std::type_info& payload;
  };
  using Handler = std::function<void(const void* payload)>;

  Subscription add(Subject subject, const void* object, Handler handler,
                   std::shared_ptr<DispatchQueue> queue);
  void tell(Subject subject, const void* object, const std::shared_ptr<const void>& payload);

  std::mutex mutex_;
  std::vector<std::weak_ptr<Observation>> observations_;
};

}  // namespace corvane
