// What the program tells of its own use. Help, manual page and completions are all made from the
// table of commands, so that none of them can lag behind.
#pragma once

#include <ostream>
#include <span>
#include <string>
#include <string_view>

#include "cli/commands/command.h"

namespace corvane::cli {

/// What the program is, and an example; paragraphs of whole lines.
[[nodiscard]] std::string_view introduction();
[[nodiscard]] std::string_view firstSession();

struct ExitCodeMeaning {
  int code;
  std::string_view word;
  std::string_view meaning;
};
[[nodiscard]] std::span<const ExitCodeMeaning> exitCodeMeanings();

/// "--portfolio NAME"
[[nodiscard]] std::string optionText(const Option& option);

/// "corvane-cli ledger WORKSPACE --portfolio NAME [--json]"
[[nodiscard]] std::string synopsis(const Command& command);

/// "Fields of --csv and --json, with --watchlist:\n  symbol\n", in lines of 80 columns.
[[nodiscard]] std::string fieldsText(const FieldList& listing);

/// The help of the program, and that of a command.
void writeHelp(std::ostream& out);
void writeHelp(const Command& command, std::ostream& out);

}  // namespace corvane::cli
