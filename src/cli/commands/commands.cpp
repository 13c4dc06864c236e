#include "cli/commands/commands.h"

#include <algorithm>
#include <array>

#include "cli/commands/help.h"
#include "cli/commands/help_files.h"
#include "platform/system/resources.h"
#include "storage/application/info_dictionary.h"

namespace corvane::cli {
namespace {

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
      createCommand(),   importCommand(),   importsCommand(),  statementsCommand(),
      recordCommand(),   reviseCommand(),   deleteCommand(),   exportCommand(),
      listCommand(),     ledgerCommand(),   valueCommand(),    overviewCommand(),
      returnsCommand(),  incomeCommand(),   taxCommand(),      taxSettingsCommand(),
      timeZoneCommand(), explainCommand(),  coverageCommand(), quotesCommand(),
      watchCommand(),    backtestCommand(), verifyCommand(),   recoverCommand(),
      removeCommand()};
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
  if (name == "--version" && rest.empty()) {
    const auto info = InfoDictionary::fromFile(resourcePath(InfoDictionary::fileName));
    console.out << "corvane-cli " << info.shortVersion() << " (" << info.bundleVersion() << ")\n";
    return exitCode::success;
  }
  if ((name == "--help" || name == "help") && rest.empty()) {
    writeHelp(console.out);
    return exitCode::success;
  }
  if (name == "--man" && rest.empty()) {
    writeManualPage(console.out);
    return exitCode::success;
  }
  if (name == "--completions" && rest.size() == 1 && writeCompletions(rest.front(), console.out)) {
    return exitCode::success;
  }
  if (name.starts_with("--") || (name == "help" && rest.size() > 1)) {
    console.warn("“" + name + "” is not used like this. See corvane-cli --help.");
    return exitCode::usage;
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
