#include "platform/async/timer.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace corvane {
namespace {

constexpr DispatchQueue::Duration deadline(20);
constexpr DispatchQueue::Duration aMoment(0.005);

TEST(Timer, FiresOnceOnTheMainQueue) {
  int firings = 0;
  const auto timer = Timer::scheduled(aMoment, false, [&](Timer&) {
    EXPECT_TRUE(DispatchQueue::main()->isCurrent());
    ++firings;
  });
  EXPECT_TRUE(timer->isValid());
  EXPECT_TRUE(MainLoop::runUntil([&] { return firings == 1; }, deadline));
  EXPECT_FALSE(timer->isValid());
}

TEST(Timer, FiresAgainAndAgainUntilItEndsItself) {
  int firings = 0;
  const auto timer = Timer::scheduled(aMoment, true, [&](Timer& self) {
    if (++firings == 3) {
      self.invalidate();
    }
  });
  EXPECT_TRUE(MainLoop::runUntil([&] { return !timer->isValid(); }, deadline));
  EXPECT_FALSE(MainLoop::runUntil([&] { return firings > 3; }, DispatchQueue::Duration(0.05)));
}

TEST(Timer, DoesNotFireWhenItWasEndedOrNobodyHoldsIt) {
  std::atomic<int> firings = 0;
  const auto count = [&](Timer&) { ++firings; };
  auto released = Timer::scheduled(aMoment, true, count);
  const auto ended = Timer::scheduled(aMoment, true, count);
  std::thread([&] { ended->invalidate(); }).join();
  released.reset();
  EXPECT_FALSE(MainLoop::runUntil([&] { return firings > 0; }, DispatchQueue::Duration(0.05)));
}

}  // namespace
}  // namespace corvane
