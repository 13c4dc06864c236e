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
  struct Seen {
    UUID uuid;
    std::string name;
    std::optional<std::string> url;
    std::optional<std::string> data;
  };
  ASSERT_TRUE(NetworkActivityMonitor::isOn());
  std::mutex mutex;
  std::vector<Seen> seen;
  const auto token = NotificationCenter::defaultCenter().addObserver(
      "ca.corvane.networkActivity", nullptr, [&](const Notification& notification) {
        const auto textAt = [&](const char* key) -> std::optional<std::string> {
          const auto found = notification.userInfo.find(key);
          return found == notification.userInfo.end()
                     ? std::nullopt
                     : std::optional(std::any_cast<std::string>(found->second));
        };
        const auto activity = std::any_cast<NetworkActivityMonitor::Activity>(
            notification.userInfo.find("activity")->second);
        const std::lock_guard lock(mutex);
        seen.push_back(
            {activity.uuid, activity.name, textAt("requestURL"), textAt("responseData")});
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
  EXPECT_EQ(seen[0].name, "first");
  EXPECT_EQ(seen[0].url, url);
  EXPECT_EQ(seen[0].data, std::nullopt);
  EXPECT_EQ(seen[1].uuid, seen[0].uuid);
  EXPECT_EQ(seen[1].url, std::nullopt);
  EXPECT_EQ(seen[1].data, "{}");
  EXPECT_NE(seen[2].uuid, seen[0].uuid);
  EXPECT_EQ(seen[3].uuid, seen[2].uuid);
  EXPECT_EQ(seen[3].data, std::nullopt) << "a request without an answer has none";
}

}  // namespace
}  // namespace corvane
