#include "marketdata/yahoo/network_activity_monitor.h"

#include <utility>

#include "platform/async/notification_center.h"
#include "platform/system/user_defaults.h"

namespace corvane {

bool NetworkActivityMonitor::isOn() {
  static const bool isOn =
      UserDefaults::standard().boolean("diagnosticToolsEnabled").value_or(false);
  return isOn;
}

void NetworkActivityMonitor::post(const Activity& activity, std::optional<std::string> requestURL,
                                  std::optional<std::string> responseData) {
  NotificationCenter::UserInfo info;
  info.emplace(activityKey, activity);
  if (requestURL) {
    info.emplace(requestURLKey, *std::move(requestURL));
  }
  if (responseData) {
    info.emplace(responseDataKey, *std::move(responseData));
  }
  NotificationCenter::defaultCenter().post(std::string(notificationName), nullptr, std::move(info));
}

}  // namespace corvane
