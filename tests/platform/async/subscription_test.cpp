#include "platform/async/subscription.h"

#include <gtest/gtest.h>

#include <string>

namespace corvane {
namespace {

TEST(Subscription, GivesAHandlerBackWithItsScope) {
  std::function<void(const std::string&)> slot = [](const std::string&) {};
  std::string heard;
  {
    const auto taken = subscribe(slot, [&](const std::string& news) { heard += news; });
    slot("a");
  }
  ASSERT_TRUE(slot);
  slot("b");
  EXPECT_EQ(heard, "a");
}

TEST(Subscription, LeavesAloneWhatAnotherViewHasTakenMeanwhile) {
  std::function<void()> slot;
  std::string heard;
  auto first = subscribe(slot, [&] { heard += "1"; });
  auto second = subscribe(slot, [&] { heard += "2"; });
  first.reset();
  slot();
  EXPECT_EQ(heard, "2");
  second = subscribe(slot, [&] { heard += "3"; });
  slot();
  EXPECT_EQ(heard, "23");
}

TEST(Subscription, MayEndWhileItsHandlerRuns) {
  std::function<void()> slot;
  std::string heard;
  Subscription taken;
  taken = subscribe(slot, [&, owned = std::string(100, 'x')] {
    taken.reset();
    heard += owned;
  });
  slot();
  slot();
  EXPECT_EQ(heard, std::string(100, 'x'));
  EXPECT_FALSE(taken);
}

}  // namespace
}  // namespace corvane
