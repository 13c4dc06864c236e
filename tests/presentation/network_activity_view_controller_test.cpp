#include "presentation/frame/network_activity_view_controller.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace corvane {
namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using Activity = NetworkActivityMonitor::Activity;

const Date noon = Date::since1970(1700000000);

class NetworkActivityViewTest : public ::testing::Test {
 protected:
  void SetUp() override {
    view.dateFormatter.timeZone = TimeZone();
    view.dateFormatter.locale = Locale{"en_GB"};
    view.viewDidLoad();
    view.viewWillAppear();
  }

  static Activity activity(const std::string& name, Date date = noon) {
    return {.uuid = UUID(), .date = date, .name = name};
  }

  static void post(const Activity& activity, std::optional<std::string> url,
                   std::optional<std::string> data) {
    NetworkActivityMonitor::post(activity, std::move(url), std::move(data));
    MainLoop::drain();
  }

  NetworkActivityViewController view;
};

TEST_F(NetworkActivityViewTest, ShowsARequestAndThenItsAnswer) {
  EXPECT_THAT(view.entryPopUpButton.titles(), ElementsAre("No activity."));
  EXPECT_FALSE(view.entryPopUpButton.isEnabled);
  EXPECT_TRUE(view.requestTextView.isMonospaced && view.responseTextView.isMonospaced);

  int changes = 0;
  view.didChange = [&] { ++changes; };
  const Activity search = activity("Search for “ABC”");
  post(search, "https://example.com/search?q=ABC", std::nullopt);
  EXPECT_THAT(view.entryPopUpButton.titles(), ElementsAre("22:13:20 – Search for “ABC”"));
  EXPECT_TRUE(view.entryPopUpButton.isEnabled);
  EXPECT_EQ(view.entryPopUpButton.selectedIndex, 0U);
  EXPECT_EQ(view.requestTextView.text, "https://example.com/search?q=ABC");
  EXPECT_EQ(view.responseTextView.text, "");

  post(search, std::nullopt, "{}");
  EXPECT_EQ(view.activityEntries().size(), 1U);
  EXPECT_EQ(view.requestTextView.text, "https://example.com/search?q=ABC");
  EXPECT_EQ(view.responseTextView.text, "{}");
  EXPECT_EQ(changes, 2);

  post(search, std::nullopt, "\xff\xfe");
  EXPECT_EQ(view.responseTextView.text, "") << "an answer that is no text shows none";
}

TEST_F(NetworkActivityViewTest, FollowsTheNewestEntryUntilTheUserGoesBack) {
  const Activity first = activity("first");
  post(first, "1", std::nullopt);
  post(activity("second"), "2", std::nullopt);
  EXPECT_EQ(view.requestTextView.text, "2");
  view.selectEntry(0);
  post(activity("third"), "3", std::nullopt);
  EXPECT_EQ(view.entryPopUpButton.selectedIndex, 0U);
  EXPECT_EQ(view.requestTextView.text, "1");
  post(first, std::nullopt, "answer");
  EXPECT_EQ(view.responseTextView.text, "answer");
  view.selectEntry(2);
  post(activity("fourth"), "4", "answer");
  EXPECT_EQ(view.entryPopUpButton.selectedIndex, 3U);
  EXPECT_EQ(view.requestTextView.text, "4");
}

TEST_F(NetworkActivityViewTest, PrunesWhatIsOlderThanAnHour) {
  const Activity old = activity("old", noon - 3600);
  post(old, "old", std::nullopt);
  const Activity second = activity("second", noon - 1800);
  post(second, "second", std::nullopt);
  post(activity("third"), "third", std::nullopt);

  view.selectEntry(1);
  view.prune(noon);
  EXPECT_THAT(view.entryPopUpButton.titles(), ElementsAre(EndsWith("second"), EndsWith("third")));
  EXPECT_EQ(view.entryPopUpButton.selectedIndex, 0U);
  EXPECT_EQ(view.requestTextView.text, "second");
  post(second, std::nullopt, "found by its new place");
  EXPECT_EQ(view.responseTextView.text, "found by its new place");

  post(old, std::nullopt, "late");
  ASSERT_EQ(view.activityEntries().size(), 3U);
  EXPECT_EQ(view.activityEntries().back().requestURL, std::nullopt);

  view.prune(noon + 1800);
  EXPECT_EQ(view.entryPopUpButton.selectedIndex, 1U) << "the newest in place of a pruned one";
  EXPECT_EQ(view.responseTextView.text, "late");

  view.prune(noon + 3600);
  EXPECT_THAT(view.entryPopUpButton.titles(), ElementsAre("No activity."));
  EXPECT_FALSE(view.entryPopUpButton.isEnabled);
  EXPECT_EQ(view.responseTextView.text, "");
}

TEST_F(NetworkActivityViewTest, ForgetsEverythingWhenItsWindowCloses) {
  post(activity("first"), "1", std::nullopt);
  view.viewDidDisappear();
  EXPECT_TRUE(view.activityEntries().empty());
  EXPECT_EQ(view.requestTextView.text, "");
  post(activity("while closed"), "2", std::nullopt);
  EXPECT_TRUE(view.activityEntries().empty());
  view.viewWillAppear();
  post(activity("open again"), "3", std::nullopt);
  EXPECT_EQ(view.activityEntries().size(), 1U);
}

}  // namespace
}  // namespace corvane
