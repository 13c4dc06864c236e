#include "platform/system/termination_signals.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cassert>
#include <cerrno>
#include <csignal>
#include <thread>

#include "platform/async/background_thread.h"
#include "platform/async/dispatch_queue.h"

namespace corvane {
namespace {

constexpr std::array terminationSignals = {SIGTERM, SIGHUP, SIGINT};

/// Where the handler of signals writes; it may use nothing else.
volatile std::sig_atomic_t terminationPipe = -1;

void noteTermination(int /*signal*/) {
  const int error = errno;
  for (const int number : terminationSignals) {
    std::signal(number, SIG_DFL);
  }
  const char byte = 1;
  (void)!write(terminationPipe, &byte, 1);
  errno = error;
}

}  // namespace

class TerminationSignals::Listener {
 public:
  explicit Listener(std::function<void()> handler)
      : handler_(std::make_shared<std::function<void()>>(std::move(handler))) {
    assert(terminationPipe == -1);
    if (pipe2(ends_.data(), O_CLOEXEC) != 0) {
      // Without a pipe the program ends as it would by itself.
      return;
    }
    terminationPipe = ends_[1];
    thread_ = startBackgroundThread([end = ends_[0], weakHandler = std::weak_ptr(handler_)] {
      char byte = 0;
      while (read(end, &byte, 1) == -1 && errno == EINTR) {
      }
      if (byte == 1) {
        DispatchQueue::main()->async([weakHandler] {
          if (const auto living = weakHandler.lock()) {
            (*living)();
          }
        });
      }
    });
    for (const int number : terminationSignals) {
      if (std::signal(number, noteTermination) == SIG_IGN) {
        std::signal(number, SIG_IGN);
      }
    }
  }
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;

  ~Listener() {
    if (!thread_.joinable()) {
      return;
    }
    for (const int number : terminationSignals) {
      if (std::signal(number, SIG_DFL) == SIG_IGN) {
        std::signal(number, SIG_IGN);
      }
    }
    terminationPipe = -1;
    close(ends_[1]);  // ends the thread, where no signal has
    thread_.join();
    close(ends_[0]);
  }

 private:
  std::shared_ptr<std::function<void()>> handler_;
  std::array<int, 2> ends_ = {-1, -1};
  std::thread thread_;
};

TerminationSignals::TerminationSignals(std::function<void()> handler)
    : listener_(std::make_unique<Listener>(std::move(handler))) {}

TerminationSignals::~TerminationSignals() = default;

}  // namespace corvane
