#include "platform/async/progress.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace corvane {
namespace {

TEST(Progress, TellsHowFarTheWorkHasCome) {
  Progress progress;
  EXPECT_TRUE(progress.isIndeterminate());
  EXPECT_EQ(progress.fractionCompleted(), 0);
  progress.setTotalUnitCount(200);
  progress.setCompletedUnitCount(50);
  EXPECT_EQ(progress.fractionCompleted(), 0.25);
  progress.setCompletedUnitCount(300);
  EXPECT_EQ(progress.fractionCompleted(), 1);
  EXPECT_TRUE(progress.isFinished());
}

TEST(Progress, IsWatchedAndCancelledFromOtherThreads) {
  Progress progress(1'000'000);
  std::atomic<int> changes = 0;
  auto token = progress.addObserver([&](const Progress& changed) {
    if (++changes == 100) {
      EXPECT_GT(changed.completedUnitCount(), 0);
    }
  });
  std::thread worker([&] {
    for (std::int64_t i = 1; !progress.isCancelled(); ++i) {
      progress.setCompletedUnitCount(i);
      progress.setLocalizedDescription("row " + std::to_string(i));
    }
  });
  while (changes < 100) {
    std::this_thread::yield();
  }
  progress.cancel();
  worker.join();
  token.reset();
  const int seen = changes;
  progress.setCompletedUnitCount(0);
  EXPECT_EQ(changes, seen);
  EXPECT_TRUE(progress.localizedDescription().starts_with("row "));
}

}  // namespace
}  // namespace corvane
