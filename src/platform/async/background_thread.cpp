#include "platform/async/background_thread.h"

#include <csignal>
#include <utility>

namespace corvane {

std::thread startBackgroundThread(std::move_only_function<void()> work) {
  sigset_t endings;
  sigemptyset(&endings);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    sigaddset(&endings, signal);
  }
  // A thread begins with the blocked signals of the one that starts it.
  sigset_t before;
  pthread_sigmask(SIG_BLOCK, &endings, &before);
  try {
    std::thread thread(std::move(work));
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return thread;
  } catch (...) {
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    throw;
  }
}

}  // namespace corvane
