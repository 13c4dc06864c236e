#include "platform/async/dispatch_group.h"

#include <gtest/gtest.h>

#include <atomic>

#include "platform/async/dispatch_work_item.h"

namespace corvane {
namespace {

constexpr DispatchQueue::Duration deadline(20);

TEST(DispatchGroup, NotifiesOnceWhenTheLastPieceHasEnded) {
  const DispatchGroup group;
  std::atomic<int> ended = 0;
  std::atomic<int> seen = -1;
  std::atomic<int> notices = 0;
  group.enter();
  for (int i = 0; i < 100; ++i) {
    group.async(DispatchQueue::global(), [&] { ++ended; });
  }
  group.notify(DispatchQueue::global(), [&] {
    seen = ended.load();
    ++notices;
  });
  EXPECT_FALSE(group.wait(DispatchQueue::Duration(0.01)));
  EXPECT_EQ(notices, 0);
  group.leave();
  EXPECT_TRUE(group.wait(deadline));
  EXPECT_TRUE(MainLoop::runUntil([&] { return notices == 1; }, deadline));
  EXPECT_EQ(seen, 100);

  group.notify(DispatchQueue::global(), [&] { ++notices; });
  EXPECT_TRUE(MainLoop::runUntil([&] { return notices == 2; }, deadline));
}

TEST(DispatchGroupDeathTest, MayNotBeLeftMoreOftenThanEntered) {
  EXPECT_DEATH(DispatchGroup().leave(), "left more often than it was entered");
}

TEST(DispatchWorkItem, RunsOnceAndTellsOfItsEnd) {
  std::atomic<int> runs = 0;
  std::atomic<int> notices = 0;
  const DispatchWorkItem item([&] { ++runs; });
  item.notify(DispatchQueue::global(), [&] { ++notices; });
  EXPECT_FALSE(item.wait(DispatchQueue::Duration(0.01)));
  item.performOn(DispatchQueue::global());
  EXPECT_TRUE(item.wait(deadline));
  item.perform();
  EXPECT_EQ(runs, 1);
  EXPECT_TRUE(MainLoop::runUntil([&] { return notices == 1; }, deadline));
}

TEST(DispatchWorkItem, DoesNotRunWhenItIsCancelledFirst) {
  bool hasRun = false;
  const DispatchWorkItem item([&] { hasRun = true; });
  item.cancel();
  item.perform();
  EXPECT_TRUE(item.isCancelled());
  EXPECT_TRUE(item.wait(deadline));
  EXPECT_FALSE(hasRun);
}

}  // namespace
}  // namespace corvane
