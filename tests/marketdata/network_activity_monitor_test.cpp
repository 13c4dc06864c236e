// The log of requests, in a program whose diagnostic tools are on.

#include "marketdata/yahoo/network_activity_monitor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <future>

#include "marketdata/yahoo/yahoo_session.h"
#include "marketdata/yahoo_loopback_service.h"
#include "platform/async/notification_center.h"
#include "platform/system/user_defaults.h"
#include "support/temporary_folder.h"

namespace corvane {
namespace {

using ::testing::ElementsAre;
using Service = corvane::testing::YahooLoopbackService;

/// Gives the test program settings of its own, with the diagnostic tools on, before any test asks.
class DiagnosticTools : public ::testing::Environment {
 public:
  void SetUp() override {
    setenv("XDG_CONFIG_HOME", folder_.path().c_str(), 1);
    UserDefaults::standard().set("diagnosticToolsEnabled", true);
  }

 private:
  const corvane::testing::TemporaryFolder folder_;
};
const auto* const diagnosticTools =
    ::testing::AddGlobalTestEnvironment(std::make_unique<DiagnosticTools>().release());

TEST(NetworkActivityMonitor, TellsOfARequestWhenItStartsAndWhenItHasEnded) {
  ASSERT_TRUE(NetworkActivityMonitor::isOn());
  std::mutex mutex;
  std::vector<NetworkActivityMonitor::News> seen;
  const auto token = NotificationCenter::defaultCenter().addObserver(
      NetworkActivityMonitor::notificationName, nullptr, [&](const auto& news) {
        const std::lock_guard lock(mutex);
        seen.push_back(news);
      });

  Service server;
  server.script(Service::searchPath, {{.body = "{}"}, {.body = "lost", .dropsConnection = true}});
  const auto session = std::make_shared<YahooSession>(server.service());
  const std::string url =
      "http://127.0.0.1:" + std::to_string(*server.service().port) + Service::searchPath;
  for (const char* label : {"first", "second"}) {
    std::promise<void> ended;
    session->runRequest(label, URLRequest{url}, false, [&](const auto&) { ended.set_value(); });
    ended.get_future().wait();
  }
  const std::lock_guard lock(mutex);
  ASSERT_EQ(seen.size(), 4U);
  EXPECT_EQ(seen[0].activity.name, "first");
  EXPECT_EQ(seen[0].requestURL, url);
  EXPECT_EQ(seen[0].responseData, std::nullopt);
  EXPECT_EQ(seen[1].activity.uuid, seen[0].activity.uuid);
  EXPECT_EQ(seen[1].requestURL, std::nullopt);
  EXPECT_EQ(seen[1].responseData, "{}");
  EXPECT_NE(seen[2].activity.uuid, seen[0].activity.uuid);
  EXPECT_EQ(seen[3].activity.uuid, seen[2].activity.uuid);
  EXPECT_EQ(seen[3].responseData, std::nullopt) << "a request without an answer has none";
}

TEST(NetworkActivityMonitor, TellsNothingWhileItIsSwitchedOff) {
  int posts = 0;
  const auto token = NotificationCenter::defaultCenter().addObserver(
      NetworkActivityMonitor::notificationName, nullptr, [&](const auto&) { ++posts; });
  Service server;
  server.script(Service::searchPath, {{.body = "{}"}});
  const auto session = std::make_shared<YahooSession>(server.service());
  std::promise<void> ended;
  NetworkActivityMonitor::setOn(false);
  session->runRequest("quiet",
                      URLRequest{"http://127.0.0.1:" + std::to_string(*server.service().port) +
                                 Service::searchPath},
                      false, [&](const auto&) { ended.set_value(); });
  ended.get_future().wait();
  NetworkActivityMonitor::setOn(true);
  EXPECT_EQ(posts, 0);
}

}  // namespace
}  // namespace corvane
