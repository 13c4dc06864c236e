#include "cli/commands/commands.h"
#include "cli/console/option_values.h"
#include "cli/console/workspace_file.h"
#include "presentation/portfolio/edit_portfolio_view_controller.h"

namespace corvane::cli {
namespace {

void create(const CommandLine& line, const Console& console) {
  const std::string& name = line.required("--portfolio");
  const Currency currency = currencyNamed(line.required("--currency"));
  const std::string& path = line.word(0);
  WorkspaceFile workspace(path, console, /*isNew=*/!WorkspaceFile::exists(path));
  workspace.requireSound();
  if (workspace.hasPortfolio(name)) {
    throw WorkspaceFileError("There is a portfolio “" + name + "” in “" +
                                 workspace.path().filename().string() + "” already.",
                             std::nullopt);
  }

  EditPortfolioViewController form;
  form.behaviour = EditPortfolioViewController::Create{workspace.manager(), {}, false};
  form.presentError = [](const Error& error) { error.raise(); };
  form.completionHandler = [](const PortfolioPointer&) {};
  form.load();
  form.nameField.text = name;
  form.currencyPopUpButton.select(currency);
  form.allowNegativeBalancesButton.isOn = line.has("--allow-negative-balances");
  form.trackCashAccountsButton.isOn = !line.has("--no-cash-accounts");
  form.updateGoButton();
  if (!form.goButton.isEnabled) {
    throw UsageError("A portfolio needs a name.");
  }
  form.performAction(EditPortfolioViewController::Sender::goButton);
  workspace.save();
}

}  // namespace

Command createCommand() {
  return {.name = "create",
          .summary = "Makes a workspace with a portfolio, or adds a portfolio to a workspace.",
          .words = {"WORKSPACE"},
          .options = {{"--portfolio", "NAME", "what the portfolio is called", true},
                      {"--currency", "CODE",
                       "the currency of its cost bases and gains, such as CAD; for good", true},
                      {"--allow-negative-balances", "", "cash and shares may go below 0"},
                      {"--no-cash-accounts", "",
                       "trades take no cash from an account, and there are no transfers"}},
          .explanation = "A WORKSPACE without the extension .corvane gets it.\n",
          .run = &create};
}

}  // namespace corvane::cli
