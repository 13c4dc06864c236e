// The log of the requests that go to the market-data service.
#pragma once

#include <optional>
#include <string>

#include "platform/async/notification_center.h"
#include "platform/system/uuid.h"
#include "platform/time/date.h"

namespace corvane {

/// Tells whoever wants to diagnose the network what is asked and what is answered, by notifications
/// of the default centre. Nobody posts while it is off. Any thread.
class NetworkActivityMonitor {
 public:
  NetworkActivityMonitor() = delete;

  /// One request. The same activity is posted when it starts and when it has ended; `uuid` ties the
  /// two together.
  struct Activity {
    UUID uuid;
    Date date = Date::now();
    std::string name;
    friend bool operator==(const Activity&, const Activity&) = default;
  };

  /// What is told of a request: where it goes when it starts, what was answered when it has ended.
  struct News {
    Activity activity;
    std::optional<std::string> requestURL = std::nullopt;
    std::optional<std::string> responseData = std::nullopt;
  };
  static constexpr Topic<News> notificationName{"ca.corvane.networkActivity"};

  /// As the setting "diagnosticToolsEnabled" was when this was first asked, until it is switched.
  [[nodiscard]] static bool isOn();
  /// Switches it, for requests that start from now on.
  static void setOn(bool isOn);

  /// Posts the notification on the calling thread.
  static void post(const Activity& activity, std::optional<std::string> requestURL,
                   std::optional<std::string> responseData);
};

}  // namespace corvane
