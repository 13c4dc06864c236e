#include "platform/async/notification_center.h"

#include <gtest/gtest.h>

#include <atomic>
#include <optional>
#include <thread>

namespace corvane {
namespace {

constexpr Topic<NoPayload> n{"n"};

TEST(NotificationCenter, TellsThoseWhoAskedForTheTopicAndTheObject) {
  constexpr Topic<std::string> changed{"changed"};
  constexpr Topic<int> somethingElse{"something else"};
  NotificationCenter center;
  const int mine = 0, other = 0;
  std::string seen;
  const auto all = center.addObserver(changed, nullptr, [&](const auto&) { seen += "a"; });
  const auto ofMine =
      center.addObserver(changed, &mine, [&](const std::string& news) { seen += news; });
  center.post(changed, &mine, "m");
  center.post(changed, &other, "o");
  center.post(somethingElse, &mine, 7);
  EXPECT_EQ(seen, "ama");
}

TEST(NotificationCenter, LetsObserversComeAndGoWhileTheyAreCalled) {
  NotificationCenter center;
  int calls = 0;
  std::optional<Subscription> first, second, late;
  first = center.addObserver(n, nullptr, [&](const auto&) {
    ++calls;
    second.reset();
    late = center.addObserver(n, nullptr, [&](const auto&) { calls += 100; });
    first.reset();
  });
  second = center.addObserver(n, nullptr, [&](const auto&) { calls += 10; });
  center.post(n, nullptr);
  EXPECT_EQ(calls, 1);
  center.post(n, nullptr);
  EXPECT_EQ(calls, 101);
}

TEST(NotificationCenter, CallsOnTheQueueAndNotAfterTheEndThere) {
  NotificationCenter center;
  int calls = 0;
  auto token = std::make_optional(center.addObserver(
      n, nullptr,
      [&](const NoPayload&) {
        EXPECT_TRUE(DispatchQueue::main()->isCurrent());
        ++calls;
      },
      DispatchQueue::main()));
  std::thread([&] { center.post(n, nullptr); }).join();
  EXPECT_EQ(calls, 0);
  MainLoop::drain();
  EXPECT_EQ(calls, 1);
  std::thread([&] { center.post(n, nullptr); }).join();
  token.reset();
  MainLoop::drain();
  EXPECT_EQ(calls, 1);
}

TEST(NotificationCenter, IsSafeOnManyThreads) {
  NotificationCenter center;
  std::atomic<int> calls = 0;
  std::vector<std::jthread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      for (int round = 0; round < 500; ++round) {
        const auto token = center.addObserver(n, nullptr, [&](const auto&) { ++calls; });
        center.post(n, nullptr);
      }
    });
  }
  threads.clear();
  EXPECT_GE(calls, 2000);
}

}  // namespace
}  // namespace corvane
