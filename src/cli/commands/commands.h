// The table of commands, and what the program does with its arguments.
#pragma once

#include <span>
#include <string>

#include "cli/commands/command.h"

namespace corvane::cli {

[[nodiscard]] std::span<const Command> commands();

/// Runs the command that `arguments` name; the exit code of the program.
[[nodiscard]] int run(std::span<const std::string> arguments, const Console& console);

[[nodiscard]] Command backtestCommand();
[[nodiscard]] Command coverageCommand();
[[nodiscard]] Command createCommand();
[[nodiscard]] Command deleteCommand();
[[nodiscard]] Command explainCommand();
[[nodiscard]] Command exportCommand();
[[nodiscard]] Command importCommand();
[[nodiscard]] Command importsCommand();
[[nodiscard]] Command incomeCommand();
[[nodiscard]] Command ledgerCommand();
[[nodiscard]] Command listCommand();
[[nodiscard]] Command overviewCommand();
[[nodiscard]] Command quotesCommand();
[[nodiscard]] Command recordCommand();
[[nodiscard]] Command recoverCommand();
[[nodiscard]] Command removeCommand();
[[nodiscard]] Command returnsCommand();
[[nodiscard]] Command reviseCommand();
[[nodiscard]] Command statementsCommand();
[[nodiscard]] Command taxCommand();
[[nodiscard]] Command taxSettingsCommand();
[[nodiscard]] Command timeZoneCommand();
[[nodiscard]] Command valueCommand();
[[nodiscard]] Command verifyCommand();
[[nodiscard]] Command watchCommand();

}  // namespace corvane::cli
