// Corvane on the console.

#include <malloc.h>

#include <iostream>
#include <string>
#include <string_view>
#include <vector>

#include "cli/commands/commands.h"
#include "platform/system/log.h"
#include "platform/system/process_end.h"
#include "platform/system/terminal.h"

namespace {

/// What a step of a long job gives back is taken by the next one, whichever thread that is in, and
/// not asked of the system anew, which took a twelfth of the time of an import. The program ends
/// soon, and what is free goes back then.
void keepMemoryForTheNextStep() {
#ifdef __GLIBC__
  constexpr int arenas = 1;
  constexpr int pieceBytes = 1 << 20;
  constexpr int largeBytes = 32 << 20;
  constexpr int keptBytes = 256 << 20;
  (void)mallopt(M_ARENA_MAX, arenas);
  (void)mallopt(M_TOP_PAD, pieceBytes);
  (void)mallopt(M_MMAP_THRESHOLD, largeBytes);
  (void)mallopt(M_TRIM_THRESHOLD, keptBytes);
#endif
}

int runConsole(int count, char** values) {
  // Whatever a command has made for itself goes with it, also where the user stops it.
  corvane::terminal::catchInterrupts();
  std::vector<std::string> arguments(values + 1, values + count);
  const bool isVerbose = std::erase(arguments, "--verbose") > 0;
  corvane::Subscription verbose;
  if (isVerbose) {
    verbose = corvane::Log::listen([](std::string_view line) { std::cerr << line << std::endl; });
  }
  const corvane::cli::Console console{std::cout, std::cerr};
  int code = corvane::cli::run(arguments, console);
  std::cout.flush();
  if (!std::cout && code == corvane::cli::exitCode::success) {
    console.warn("The output could not be written.");
    code = corvane::cli::exitCode::failure;
  }
  return code;
}

}  // namespace

int main(int count, char** values) {
  keepMemoryForTheNextStep();
  corvane::endProcess(runConsole(count, values));
}
