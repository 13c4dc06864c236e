// Corvane on the console.

#include <algorithm>
#include <iostream>
#include <string>
#include <vector>

#include "cli/commands/commands.h"
#include "platform/system/terminal.h"

int main(int count, char** values) {
  // Whatever a command has made for itself goes with it, also where the user stops it.
  corvane::terminal::catchInterrupts();
  std::vector<std::string> arguments(values + 1, values + count);
  const bool isVerbose = std::erase(arguments, "--verbose") > 0;
  // The program's parts tell on the standard output what they do. Here that belongs to the results.
  std::ostream out(std::cout.rdbuf());
  std::cout.rdbuf(isVerbose ? std::cerr.rdbuf() : nullptr);
  const corvane::cli::Console console{out, std::cerr};
  int code = corvane::cli::run(arguments, console);
  out.flush();
  if (!out && code == corvane::cli::exitCode::success) {
    console.warn("The output could not be written.");
    code = corvane::cli::exitCode::failure;
  }
  std::cout.rdbuf(out.rdbuf());
  return code;
}
