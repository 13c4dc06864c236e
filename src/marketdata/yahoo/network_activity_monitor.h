// The log of the requests that go to the market-data service.
#pragma once

#include <optional>
#include <string>
#include <string_view>

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

  static constexpr std::string_view notificationName = "ca.corvane.networkActivity";
  /// The keys of the notification: an Activity, always; a std::string each, where there is one.
  static constexpr std::string_view activityKey = "activity";
  static constexpr std::string_view requestURLKey = "requestURL";
  static constexpr std::string_view responseDataKey = "responseData";

  /// Whether the setting "diagnosticToolsEnabled" was on when this was first asked.
  [[nodiscard]] static bool isOn();

  /// Posts the notification on the calling thread.
  static void post(const Activity& activity, std::optional<std::string> requestURL,
                   std::optional<std::string> responseData);
};

}  // namespace corvane
