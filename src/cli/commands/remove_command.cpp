#include <charconv>

#include "cli/commands/commands.h"
#include "cli/console/workspace_file.h"

namespace corvane::cli {
namespace {

/// The row with a number as `ledger` shows it.
TransactionPointer rowNumbered(const std::string& text, const PortfolioPointer& portfolio) {
  const auto& rows = portfolio->transactions();
  std::size_t number = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stop != end || number < 1) {
    throw UsageError("“" + text + "” is not the number of a transaction.");
  }
  if (number > rows.size()) {
    throw WorkspaceFileError("The ledger has no transaction " + text + ".",
                             "It has " + std::to_string(rows.size()) + " transactions.");
  }
  return rows[number - 1];
}

void remove(const CommandLine& line, const Console& console) {
  const auto transaction = line.value("--transaction");
  if (transaction.has_value() == line.has("--whole-portfolio")) {
    throw UsageError("Say what is to go: “--transaction N” or “--whole-portfolio”.");
  }
  WorkspaceFile workspace(line.word(0), console);
  workspace.requireSound();
  const PortfolioPointer portfolio = workspace.portfolio(line.required("--portfolio"));
  if (transaction) {
    workspace.manager()->deleteTransactions({rowNumbered(*transaction, portfolio)}, portfolio,
                                            nullptr);
  } else {
    workspace.manager()->removePortfolio(portfolio);
  }
  workspace.save();
}

}  // namespace

Command removeCommand() {
  return {.name = "remove",
          .summary = "Removes a transaction, or a whole portfolio.",
          .words = {"WORKSPACE"},
          .options = {{"--portfolio", "NAME", "the portfolio", true},
                      {"--transaction", "N", "removes the transaction with this number"},
                      {"--whole-portfolio", "", "removes the portfolio with all that is in it"}},
          .explanation =
              "The numbers are those that corvane-cli ledger shows. A transaction that later ones "
              "rely on\nstays: a deposit cannot go while a purchase needs it. There is no undo.\n",
          .run = &remove};
}

}  // namespace corvane::cli
