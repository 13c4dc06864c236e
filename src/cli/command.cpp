#include "cli/command.h"

#include <algorithm>

namespace corvane::cli {
namespace {

std::vector<Command> allCommands() {
  std::vector<Command> all;
  for (auto& some : {workspaceCommands(), exchangeCommands(), marketCommands()}) {
    std::ranges::copy(some, std::back_inserter(all));
  }
  return all;
}

std::string usage(const Command& command) {
  std::string text = "corvane-cli " + std::string(command.name);
  for (const std::string_view operand : command.signature.operands) {
    text += " " + std::string(operand);
  }
  if (command.signature.takesFurtherOperands) {
    text += " …";
  }
  for (const Signature::Option& option : command.signature.options) {
    std::string part(option.name);
    if (!option.value.empty()) {
      part += " " + std::string(option.value);
    }
    text += option.isRequired ? " " + part : " [" + part + "]";
  }
  return text;
}

void writeHelp(std::ostream& out, const std::vector<Command>& commands) {
  out << "Corvane on a terminal: works on the same workspaces as the window.\n\n"
         "Usage: corvane-cli COMMAND …\n\nCommands:\n";
  for (const Command& command : commands) {
    out << "  " << command.name
        << std::string(std::max<std::size_t>(12, command.name.size() + 2) - command.name.size(),
                       ' ')
        << command.summary << '\n';
  }
  out << "\n“corvane-cli COMMAND --help” tells what a command takes.\n\n"
         "A first portfolio:\n"
         "  corvane-cli create Family.corvane --portfolio Savings --currency CAD\n"
         "  corvane-cli import statement.csv --into Family.corvane --portfolio Savings \\\n"
         "      --fields tradeDate,type,symbol,numberOfShares,,cashAmount\n"
         "  corvane-cli ledger Family.corvane --portfolio Savings\n"
         "  corvane-cli value Family.corvane\n\n"
         "The exit code is 0 where all went well, 1 where something failed, and 2 for a command\n"
         "line that cannot be understood. Close a workspace in the window before changing it "
         "here.\n";
}

void writeHelp(std::ostream& out, const Command& command) {
  out << command.summary << "\n\nUsage: " << usage(command) << '\n';
  if (!command.details.empty()) {
    out << '\n' << command.details << '\n';
  }
  std::size_t widest = 0;
  const auto nameOf = [](const Signature::Option& option) {
    return std::string(option.name) + (option.value.empty() ? "" : " " + std::string(option.value));
  };
  for (const Signature::Option& option : command.signature.options) {
    widest = std::max(widest, nameOf(option).size());
  }
  if (widest > 0) {
    out << "\nOptions:\n";
  }
  for (const Signature::Option& option : command.signature.options) {
    const std::string name = nameOf(option);
    out << "  " << name << std::string(widest + 2 - name.size(), ' ') << option.help << '\n';
  }
}

int runCommand(const Command& command, std::span<const std::string> words, Console& console) {
  if (std::ranges::find(words, "--help") != words.end()) {
    writeHelp(console.out, command);
    return 0;
  }
  try {
    return command.run(Arguments(words, command.signature), console) ? 0 : 1;
  } catch (const UsageError& error) {
    console.err << error.text << "\nUsage: " << usage(command) << '\n';
    return 2;
  } catch (const Error& error) {
    console.err << error << '\n';
    if (const auto suggestion = error.recoverySuggestion()) {
      console.err << *suggestion << '\n';
    }
    return 1;
  }
}

}  // namespace

int runProgram(std::span<const std::string> words, Console console, std::string_view version) {
  const std::vector<Command> commands = allCommands();
  if (words.empty()) {
    writeHelp(console.err, commands);
    return 2;
  }
  const std::string& first = words.front();
  if (first == "--help" || first == "-h" || first == "help") {
    writeHelp(console.out, commands);
    return 0;
  }
  if (first == "--version") {
    console.out << "corvane-cli " << version << '\n';
    return 0;
  }
  const auto found = std::ranges::find(commands, first, &Command::name);
  if (found == commands.end()) {
    console.err << "There is no command “" << first
                << "”. “corvane-cli --help” lists all commands.\n";
    return 2;
  }
  return runCommand(*found, words.subspan(1), console);
}

}  // namespace corvane::cli
