#include "desktop/app/main_queue_pump.h"

#include <gtest/gtest.h>

#include <QDialog>
#include <QTimer>
#include <thread>

#include "desktop/desktop_world.h"
#include "platform/async/dispatch_queue.h"

namespace corvane::testing {
namespace {

TEST(MainQueuePump, RunsBlocksOfOtherThreadsInTheEventLoop) {
  const desktop::MainQueuePump pump;
  const auto here = std::this_thread::get_id();
  std::vector<int> ran;
  std::thread poster([&] {
    for (int i = 0; i < 1000; ++i) {
      DispatchQueue::main()->async([&, i] {
        EXPECT_EQ(std::this_thread::get_id(), here);
        ran.push_back(i);
      });
    }
  });
  EXPECT_TRUE(DesktopWorld::waitUntil([&] { return ran.size() == 1000; }));
  poster.join();
  EXPECT_TRUE(std::ranges::is_sorted(ran));
}

TEST(MainQueuePump, RunsBlocksWhileABlockShowsADialog) {
  const desktop::MainQueuePump pump;
  bool isShown = false;
  bool isClosed = false;
  DispatchQueue::main()->async([&] {
    QDialog dialog;
    DispatchQueue::main()->async([&] {
      isShown = dialog.isVisible();
      dialog.accept();
    });
    dialog.exec();
    isClosed = true;
  });
  EXPECT_TRUE(DesktopWorld::waitUntil([&] { return isClosed; }));
  EXPECT_TRUE(isShown);
}

TEST(MainQueuePump, LetsAnotherThreadWaitForABlock) {
  const desktop::MainQueuePump pump;
  int answer = 0;
  std::atomic<bool> isDone = false;
  std::thread waiter([&] {
    DispatchQueue::main()->sync([&] { answer = 42; });
    isDone = true;
  });
  EXPECT_TRUE(DesktopWorld::waitUntil([&] { return isDone.load(); }));
  waiter.join();
  EXPECT_EQ(answer, 42);
}

}  // namespace
}  // namespace corvane::testing
