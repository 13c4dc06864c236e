#include "cli/commands/commands.h"

#include <algorithm>
#include <array>

#include "platform/system/resources.h"
#include "storage/application/info_dictionary.h"

namespace corvane::cli {
namespace {

constexpr std::string_view introduction =
    "Keeps investment portfolios in workspaces, from the console.\n"
    "\n"
    "A workspace is a package such as Family.corvane that the desktop program opens too.\n"
    "It holds portfolios, and each portfolio a ledger of what happened in it.\n";

constexpr std::string_view example =
    "A first session:\n"
    "  corvane-cli create Family --portfolio Savings --currency CAD\n"
    "  corvane-cli import statement.csv --into Family.corvane --portfolio Savings \\\n"
    "      --fields tradeDate,settlementDate,type,symbol,numberOfShares,,cashAmount\n"
    "  corvane-cli ledger Family.corvane --portfolio Savings\n";

std::string padded(std::string_view text, std::size_t width) {
  std::string result(text);
  result.resize(std::max(width, text.size()) + 2, ' ');
  return result;
}

std::string optionText(const Option& option) {
  std::string text(option.name);
  return option.value.empty() ? text : text + " " + std::string(option.value);
}

std::string synopsis(const Command& command) {
  std::string text = "corvane-cli " + std::string(command.name);
  for (const std::string_view word : command.words) {
    text += " " + std::string(word);
  }
  for (const Option& option : command.options) {
    text += option.isRequired ? " " + optionText(option) : " [" + optionText(option) + "]";
  }
  return text;
}

void writeHelp(std::ostream& out) {
  std::size_t width = 0;
  for (const Command& command : commands()) {
    width = std::max(width, command.name.size());
  }
  out << introduction << "\nUsage: corvane-cli COMMAND …\n\nCommands:\n";
  for (const Command& command : commands()) {
    out << "  " << padded(command.name, width) << command.summary << '\n';
  }
  out << "\nOf every command:\n"
         "  --help     tells how it is used: corvane-cli import --help\n"
         "  --verbose  writes what the program does to the standard error\n"
         "Of the program:\n"
         "  --version  tells its version\n\n"
      << example
      << "\nResults go to the standard output, errors to the standard error. The exit code is 0 "
         "when\nall went well, 1 when it did not, and 2 when the command was not understood.\n";
}

void writeHelp(const Command& command, std::ostream& out) {
  out << command.summary << "\n\nUsage: " << synopsis(command) << "\n\n";
  std::size_t width = 0;
  for (const Option& option : command.options) {
    width = std::max(width, optionText(option).size());
  }
  for (const Option& option : command.options) {
    out << "  " << padded(optionText(option), width) << option.help << '\n';
  }
  if (!command.explanation.empty()) {
    out << '\n' << command.explanation;
  }
}

const Command* commandNamed(std::string_view name) {
  const auto found = std::ranges::find(commands(), name, &Command::name);
  return found == commands().end() ? nullptr : &*found;
}

/// As `run`, and reports errors.
int runCommand(const Command& command, std::span<const std::string> arguments,
               const Console& console) {
  try {
    command.run(CommandLine(arguments, command.words, command.options), console);
    return exitCode::success;
  } catch (const UsageError& error) {
    console.present(error);
    console.err << "Usage: " << synopsis(command) << "\nSee corvane-cli " << command.name
                << " --help.\n";
    return exitCode::usage;
  } catch (const Failed& failed) {
    return failed.exitCode;
  } catch (const Error& error) {
    console.present(error);
    return exitCode::failure;
  } catch (const std::exception& error) {
    console.warn(error.what());
    return exitCode::failure;
  }
}

}  // namespace

std::span<const Command> commands() {
  static const std::array table = {
      createCommand(), importCommand(), statementsCommand(), exportCommand(),
      listCommand(),   ledgerCommand(), valueCommand(),      returnsCommand(),
      incomeCommand(), taxCommand(),    explainCommand(),    verifyCommand(),
      watchCommand(),  removeCommand(), recoverCommand(),    backtestCommand()};
  return table;
}

int run(std::span<const std::string> arguments, const Console& console) {
  if (arguments.empty()) {
    writeHelp(console.err);
    return exitCode::usage;
  }
  const std::string& name = arguments.front();
  const auto rest = arguments.subspan(1);
  const bool wantsHelp = std::ranges::find(rest, "--help") != rest.end();
  if (name == "--version") {
    const auto info = InfoDictionary::fromFile(resourcePath(InfoDictionary::fileName));
    console.out << "corvane-cli " << info.shortVersion() << " (" << info.bundleVersion() << ")\n";
    return exitCode::success;
  }
  if (name == "--help" || (name == "help" && rest.empty())) {
    writeHelp(console.out);
    return exitCode::success;
  }
  const Command* command = commandNamed(name == "help" ? rest.front() : name);
  if (command == nullptr) {
    console.warn("There is no command “" + (name == "help" ? rest.front() : name) +
                 "”. See corvane-cli --help.");
    return exitCode::usage;
  }
  if (wantsHelp || name == "help") {
    writeHelp(*command, console.out);
    return exitCode::success;
  }
  return runCommand(*command, rest, console);
}

}  // namespace corvane::cli
