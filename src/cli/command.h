// The commands of the console program.
#pragma once

#include <ostream>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "cli/arguments.h"

namespace corvane::cli {

/// Where a command writes: results and questions of the user apart from errors and progress.
struct Console {
  std::ostream& out;
  std::ostream& err;
  bool showsProgress = false;  ///< whether `err` is a terminal
};

/// A command of the program. `run` returns whether it did all that it was asked to, and throws
/// Error for what the user is to be told.
struct Command {
  std::string_view name;
  std::string_view summary;  ///< one line
  std::string_view details;  ///< what else one has to know; may be empty
  Signature signature;
  bool (*run)(const Arguments& arguments, Console& console);
};

[[nodiscard]] std::vector<Command> workspaceCommands();
[[nodiscard]] std::vector<Command> exchangeCommands();
[[nodiscard]] std::vector<Command> marketCommands();

/// Runs the program with `words`, without its own name. The exit code: 0 for success, 1 for a
/// failure, 2 for a command line that cannot be understood. The calling thread is the main thread.
int runProgram(std::span<const std::string> words, Console console, std::string_view version);

}  // namespace corvane::cli
