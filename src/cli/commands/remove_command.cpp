#include "cli/commands/commands.h"
#include "cli/console/workspace_file.h"

namespace corvane::cli {
namespace {

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
