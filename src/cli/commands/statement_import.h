// The import of a statement whose layout the program knows.
#pragma once

#include <vector>

#include "cli/console/command_line.h"
#include "cli/console/console.h"
#include "cli/console/listing.h"

namespace corvane::cli {

/// Runs the command `import` without its option --fields.
void importStatementByLayout(const CommandLine& line, const Console& console);

/// The fields of a preview as data.
[[nodiscard]] std::vector<Listing::Field> statementPreviewFields();

}  // namespace corvane::cli
