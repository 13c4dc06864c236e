// The console program.

#include <unistd.h>

#include <iostream>
#include <string>
#include <vector>

#include "cli/command.h"

int main(int count, char** arguments) {
  const std::vector<std::string> words(arguments + (count > 0 ? 1 : 0), arguments + count);
  // What the program's insides tell on the standard output is no result of a command.
  std::ostream out(std::cout.rdbuf());
  std::cout.rdbuf(nullptr);
  const int exitCode = corvane::cli::runProgram(
      words, {.out = out, .err = std::cerr, .showsProgress = isatty(STDERR_FILENO) == 1},
      CORVANE_VERSION);
  out.flush();
  return out.good() ? exitCode : 1;
}
