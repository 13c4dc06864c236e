// The import of a statement whose layout the program knows.
#pragma once

#include "cli/console/command_line.h"
#include "cli/console/console.h"

namespace corvane::cli {

/// Runs the command `import` without its option --fields.
void importStatementByLayout(const CommandLine& line, const Console& console);

}  // namespace corvane::cli
