#include "platform/system/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <csignal>

namespace corvane::terminal {
namespace {

volatile std::sig_atomic_t interrupted = 0;

void noteInterrupt(int signal) {
  interrupted = 1;
  std::signal(signal, SIG_DFL);
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
  std::signal(SIGINT, noteInterrupt);
}

bool wasInterrupted() {
  return interrupted != 0;
}

}  // namespace corvane::terminal
