// What an installation has beside the program: its manual page and the completions of shells.
#pragma once

#include <ostream>
#include <string_view>

namespace corvane::cli {

/// The page in the man macros, for section 1.
void writeManualPage(std::ostream& out);

/// The script that completes the command line in `shell`, "bash" or "zsh". Says whether there is
/// one; nothing is written for any other shell.
[[nodiscard]] bool writeCompletions(std::string_view shell, std::ostream& out);

}  // namespace corvane::cli
