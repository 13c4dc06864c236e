#include "platform/async/dispatch_queue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <limits>
#include <mutex>
#include <semaphore>
#include <thread>
#include <vector>

namespace corvane {
namespace {

constexpr DispatchQueue::Duration deadline(20);

TEST(SerialQueue, RunsOneBlockAtATimeInTheOrderGiven) {
  const auto queue = DispatchQueue::serial("test");
  std::vector<std::pair<int, int>> order;  // no lock: the queue is to protect it
  std::vector<std::jthread> threads;
  for (int thread = 0; thread < 4; ++thread) {
    threads.emplace_back([&, thread] {
      for (int i = 0; i < 500; ++i) {
        queue->async([&, thread, i] { order.emplace_back(thread, i); });
      }
    });
  }
  threads.clear();
  queue->sync([] {});
  ASSERT_EQ(order.size(), 2000U);
  int next[4] = {};
  for (const auto& [thread, i] : order) {
    EXPECT_EQ(i, next[thread]++);
  }
}

TEST(ConcurrentQueue, RunsBlocksSideBySide) {
  const auto queue = DispatchQueue::concurrent("test");
  // Shared, since the blocks may still look at it when the test has seen it open.
  const auto both = std::make_shared<std::latch>(2);
  for (int i = 0; i < 2; ++i) {
    queue->async([both] { both->arrive_and_wait(); });
  }
  both->wait();
}

TEST(ConcurrentQueue, LetsABarrierRunAloneInItsPlace) {
  const auto queue = DispatchQueue::concurrent("test");
  std::atomic<int> running = 0;
  std::atomic<int> before = 0;
  std::atomic<bool> isWrong = false;
  int barriers = 0;
  for (int round = 0; round < 100; ++round) {
    for (int i = 0; i < 5; ++i) {
      queue->async([&] {
        ++running;
        std::this_thread::yield();
        ++before;
        --running;
      });
    }
    queue->asyncBarrier([&, round] {
      isWrong = isWrong || running != 0 || before != 5 * (round + 1);
      ++barriers;
    });
  }
  std::binary_semaphore done(0);
  queue->asyncBarrier([&] { done.release(); });
  done.acquire();
  EXPECT_FALSE(isWrong);
  EXPECT_EQ(barriers, 100);
}

TEST(InactiveQueue, KeepsItsBlocksInOrderUntilItIsActivated) {
  const auto queue = DispatchQueue::serial("test", DispatchQueue::Start::inactive);
  std::vector<int> order;
  for (int i = 0; i < 10; ++i) {
    queue->async([&, i] { order.push_back(i); });
  }
  DispatchQueue::serial("another")->sync([] {});
  EXPECT_TRUE(order.empty());
  queue->activate();
  queue->activate();
  queue->sync([] {});
  EXPECT_EQ(order, (std::vector{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}));
}

TEST(Queues, FinishTheirWorkWhenNobodyHoldsThemUnlessTheyAreInactive) {
  std::binary_semaphore done(0);
  {
    const auto queue = DispatchQueue::serial("test");
    for (int i = 0; i < 100; ++i) {
      queue->async([] { std::this_thread::yield(); });
    }
    queue->async([&] { done.release(); });
  }
  EXPECT_TRUE(done.try_acquire_for(deadline));

  const auto kept = std::make_shared<int>(0);
  DispatchQueue::serial("test", DispatchQueue::Start::inactive)->async([kept] { FAIL(); });
  EXPECT_EQ(kept.use_count(), 1);
}

TEST(Queues, DoNotStarveWhenBlocksWaitForOtherBlocks) {
  std::atomic<int> ended = 0;
  for (int i = 0; i < 64; ++i) {
    DispatchQueue::global()->async([&] {
      DispatchQueue::serial("inner")->sync([] {});
      ++ended;
    });
  }
  EXPECT_TRUE(MainLoop::runUntil([&] { return ended == 64; }, deadline));
}

TEST(MainQueue, RunsWhatIsPostedOnItOnlyWhenItIsPumped) {
  std::atomic<int> calls = 0;
  std::thread other([&] {
    DispatchQueue::main()->async([&] { ++calls; });
    DispatchQueue::main()->sync([&] {
      EXPECT_TRUE(DispatchQueue::main()->isCurrent());
      ++calls;
    });
    calls += 10;
  });
  EXPECT_TRUE(MainLoop::runUntil([&] { return calls == 12; }, deadline));
  other.join();
  EXPECT_FALSE(DispatchQueue::main()->isCurrent());
  EXPECT_FALSE(MainLoop::runUntil([] { return false; }, DispatchQueue::Duration(0.01)));
}

TEST(MainQueue, RunsUntilItIsStoppedAndWakesAnotherLoop) {
  std::atomic<int> woken = 0;
  MainLoop::setWakeUp([&] { ++woken; });
  bool ran = false;
  DispatchQueue::main()->async([&] { ran = true; });
  MainLoop::stop();
  MainLoop::run();
  EXPECT_TRUE(ran);
  EXPECT_EQ(woken, 2);
  MainLoop::setWakeUp(nullptr);
  // A block that posts itself again does not keep drain() from returning.
  int rounds = 0;
  std::function<void()> again = [&] {
    ++rounds;
    DispatchQueue::main()->async([&] { again(); });
  };
  again();
  MainLoop::drain();
  EXPECT_EQ(rounds, 2);
  again = [] {};
  MainLoop::drain();
}

TEST(AsyncAfter, KeepsTheOrderOfTheDelaysAndIsNeverEarly) {
  const auto queue = DispatchQueue::serial("test");
  const auto start = std::chrono::steady_clock::now();
  std::vector<int> order;
  std::binary_semaphore done(0);
  queue->asyncAfter(DispatchQueue::Duration(0.05), [&] {
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(50));
    order.push_back(3);
    done.release();
  });
  queue->asyncAfter(DispatchQueue::Duration(0.02), [&] { order.push_back(2); });
  queue->async([&] { order.push_back(1); });
  ASSERT_TRUE(done.try_acquire_for(deadline));
  EXPECT_EQ(order, (std::vector{1, 2, 3}));
}

TEST(MainQueue, WakesALoopThatComesLaterThanItsWork) {
  DispatchQueue::main()->async([] {});
  int woken = 0;
  MainLoop::setWakeUp([&] { ++woken; });
  EXPECT_EQ(woken, 1);
  MainLoop::setWakeUp(nullptr);
  MainLoop::drain();
}

TEST(AsyncAfter, TakesAnEndlessDelayForALongOne) {
  const auto queue = DispatchQueue::serial("test");
  const auto hasRun = std::make_shared<std::atomic<bool>>(false);
  queue->asyncAfter(DispatchQueue::Duration(std::numeric_limits<double>::infinity()),
                    [hasRun] { *hasRun = true; });
  EXPECT_FALSE(MainLoop::runUntil([&] { return hasRun->load(); }, DispatchQueue::Duration(0.05)));
}

TEST(QueueDeathTest, StopsTheProgramInsteadOfWaitingForEver) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto waitForOneself = [] {
    const auto outer = DispatchQueue::serial("outer");
    const auto inner = DispatchQueue::serial("inner");
    outer->sync([&] { inner->sync([&] { outer->sync([] {}); }); });
  };
  EXPECT_DEATH(waitForOneself(), "Deadlock: sync onto the queue \"outer\"");
  EXPECT_DEATH(DispatchQueue::main()->sync([] {}), "Deadlock: sync onto the queue \"main\"");
  const auto mainThroughAnother = [] {
    DispatchQueue::serial("s")->sync([] { DispatchQueue::main()->sync([] {}); });
  };
  EXPECT_DEATH(mainThroughAnother(), "Deadlock: sync onto the queue \"main\"");
}

}  // namespace
}  // namespace corvane
