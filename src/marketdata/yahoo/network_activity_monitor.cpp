#include "marketdata/yahoo/network_activity_monitor.h"

#include <atomic>
#include <utility>

#include "platform/system/user_defaults.h"

namespace corvane {

namespace {

std::atomic<bool>& activityMonitorSwitch() {
  static std::atomic<bool> isOn =
      UserDefaults::standard().boolean("diagnosticToolsEnabled").value_or(false);
  return isOn;
}

}  // namespace

bool NetworkActivityMonitor::isOn() {
  return activityMonitorSwitch().load(std::memory_order_relaxed);
}

void NetworkActivityMonitor::setOn(bool isOn) {
  activityMonitorSwitch().store(isOn, std::memory_order_relaxed);
}

void NetworkActivityMonitor::post(const Activity& activity, std::optional<std::string> requestURL,
                                  std::optional<std::string> responseData) {
  NotificationCenter::defaultCenter().post(
      notificationName, nullptr, {activity, std::move(requestURL), std::move(responseData)});
}

}  // namespace corvane
