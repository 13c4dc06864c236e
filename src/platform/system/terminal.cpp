#include "platform/system/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <csignal>

namespace corvane::terminal {
namespace {

volatile std::sig_atomic_t interrupted = 0;

constexpr int endingSignals[] = {SIGINT, SIGTERM, SIGHUP};

void noteInterrupt(int /*signal*/) {
  interrupted = 1;
  for (const int signal : endingSignals) {
    std::signal(signal, SIG_DFL);
  }
}

}  // namespace

bool isErrorStreamShown() {
  return isatty(STDERR_FILENO) == 1;
}

std::size_t width() {
  constexpr std::size_t usual = 80;
  winsize size = {};
  return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : usual;
}

void catchInterrupts() {
  for (const int signal : endingSignals) {
    // What whoever started the program has asked to be ignored, as nohup does, stays so.
    if (std::signal(signal, noteInterrupt) == SIG_IGN) {
      std::signal(signal, SIG_IGN);
    }
  }
  std::signal(SIGPIPE, SIG_IGN);
}

bool wasInterrupted() {
  return interrupted != 0;
}

}  // namespace corvane::terminal
