// News by name: who has changed something posts it, who wants to know observes it.
#pragma once

#include <any>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "platform/async/dispatch_queue.h"

namespace corvane {

/// One piece of news.
struct Notification {
  using UserInfo = std::map<std::string, std::any, std::less<>>;

  std::string name;
  /// Who posted it, an identity to be compared and not to be used otherwise; may be null.
  const void* object = nullptr;
  UserInfo userInfo;
};

/// Hands posted notifications to their observers. Safe on any thread; observers may be added and
/// ended while others are being called.
class NotificationCenter {
 public:
  using UserInfo = Notification::UserInfo;
  using Handler = std::function<void(const Notification&)>;

 private:
  struct Observation;

 public:
  /// Keeps an observation alive; it ends with its scope. An observer on a queue is not called after
  /// its end where that happens on the queue itself. Inline, a call that has begun on another
  /// thread may still be going on.
  class [[nodiscard]] Token {
   public:
    Token() = default;

   private:
    friend class NotificationCenter;
    explicit Token(std::shared_ptr<Observation> observation)
        : observation_(std::move(observation)) {}
    std::shared_ptr<Observation> observation_;
  };

  /// The centre that the whole program shares.
  [[nodiscard]] static NotificationCenter& defaultCenter();

  /// Calls `handler` for every notification with this name, on the posting thread before post()
  /// returns, or later on `queue` where one is given. With an `object`, only for those that it
  /// posts.
  Token addObserver(std::string name, const void* object, Handler handler,
                    std::shared_ptr<DispatchQueue> queue = nullptr);

  /// Tells all observers, in the order in which they came.
  void post(std::string name, const void* object, UserInfo userInfo = {});

 private:
  std::mutex mutex_;
  std::vector<std::weak_ptr<Observation>> observations_;
};

}  // namespace corvane
