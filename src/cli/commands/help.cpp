#include "cli/commands/help.h"

#include <algorithm>
#include <array>
#include <utility>

#include "cli/commands/commands.h"

namespace corvane::cli {
namespace {

std::string padded(std::string_view text, std::size_t width) {
  std::string result(text);
  result.resize(std::max(width, text.size()) + 2, ' ');
  return result;
}

constexpr std::size_t exitCodeWidth = 3;
constexpr std::size_t helpColumns = 80;

}  // namespace

std::string optionText(const Option& option) {
  return std::string(option.name) + (option.value.empty() ? "" : " " + std::string(option.value));
}

std::string_view introduction() {
  return "Keeps investment portfolios in workspaces, from the console.\n"
         "\n"
         "A workspace is a package such as Family.corvane that the desktop program opens too.\n"
         "It holds portfolios, and each portfolio a ledger of what happened in it.\n";
}

std::string_view firstSession() {
  return "A first session:\n"
         "  corvane-cli create Family --portfolio Savings --currency CAD\n"
         "  corvane-cli import statement.csv --into Family.corvane --portfolio Savings \\\n"
         "      --fields tradeDate,settlementDate,type,symbol,numberOfShares,,cashAmount\n"
         "  corvane-cli ledger Family.corvane --portfolio Savings\n";
}

std::span<const ExitCodeMeaning> exitCodeMeanings() {
  static constexpr std::array<ExitCodeMeaning, 4> meanings = {{
      {exitCode::success, "done", "all went well"},
      {exitCode::failure, "failed", "it did not; the standard error says why"},
      {exitCode::usage, "not understood", "the command line was not understood"},
      {exitCode::interrupted, "interrupted", "the user interrupted it"},
  }};
  return meanings;
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

std::string fieldsText(const FieldList& listing) {
  std::string text = "Fields of --csv and --json";
  text += (listing.of.empty() ? "" : ", " + std::string(listing.of)) + ":\n ";
  std::size_t column = 1;
  for (const Listing::Field& field : listing.fields) {
    const bool isLast = &field == &listing.fields.back();
    const std::string word = " " + std::string(field.name) + (isLast ? "" : ",");
    if (column + word.size() > helpColumns) {
      text += "\n ";
      column = 1;
    }
    text += word;
    column += word.size();
  }
  return text + '\n';
}

void writeHelp(std::ostream& out) {
  std::size_t width = 0;
  for (const Command& command : commands()) {
    width = std::max(width, command.name.size());
  }
  out << introduction() << "\nUsage: corvane-cli COMMAND …\n\nCommands:\n";
  for (const Command& command : commands()) {
    out << "  " << padded(command.name, width) << command.summary << '\n';
  }
  out << "\nOf every command:\n"
         "  --help     tells how it is used: corvane-cli import --help\n"
         "  --verbose  writes what the program does to the standard error\n"
         "Of the program:\n"
         "  --version  tells its version\n"
         "  --man      writes its manual page\n"
         "  --completions bash|zsh\n"
         "             writes what completes its command line in that shell\n\n"
      << firstSession() << "\nResults go to the standard output, errors to the standard error.\n\n"
      << "Exit codes:\n";
  for (const ExitCodeMeaning& code : exitCodeMeanings()) {
    out << "  " << padded(std::to_string(code.code), exitCodeWidth) << code.meaning << '\n';
  }
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
  const char* before = "\n";
  for (const FieldList& listing : command.listings) {
    out << std::exchange(before, "") << fieldsText(listing);
  }
  out << "\nExit codes:";
  const char* separator = " ";
  for (const ExitCodeMeaning& code : exitCodeMeanings()) {
    out << std::exchange(separator, ", ") << code.code << ' ' << code.word;
  }
  out << ".\n";
}

}  // namespace corvane::cli
