#include "marketdata/yahoo/network_activity_monitor.h"

#include <utility>

#include "platform/system/user_defaults.h"

namespace corvane {

bool NetworkActivityMonitor::isOn() {
  static const bool isOn =
      UserDefaults::standard().boolean("diagnosticToolsEnabled").value_or(false);
  return isOn;
}

void NetworkActivityMonitor::post(const Activity& activity, std::optional<std::string> requestURL,
                                  std::optional<std::string> responseData) {
  NotificationCenter::defaultCenter().post(
      notificationName, nullptr, {activity, std::move(requestURL), std::move(responseData)});
}

}  // namespace corvane
