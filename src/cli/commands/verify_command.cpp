#include "cli/commands/commands.h"
#include "cli/console/workspace_file.h"
#include "storage/database/stored_portfolio_manager.h"

namespace corvane::cli {
namespace {

/// Throws SQLiteError, or WorkspaceFileError with what the database itself finds.
void checkDatabase(const WorkspaceFile& workspace) {
  auto& manager = dynamic_cast<StoredPortfolioManager&>(*workspace.manager());
  SQLiteStatement check = manager.database().query("PRAGMA integrity_check(1);");
  if (check.step() && check.text(0).value_or("") != "ok") {
    throw WorkspaceFileError(
        "The database is damaged: " + std::string(check.text(0).value_or("unknown")),
        "Go back to a copy of the workspace.");
  }
}

/// Throws what is wrong with the ledger.
void checkLedger(PortfolioManager& manager, const PortfolioPointer& portfolio) {
  requireRows(portfolio);
  const auto& rows = portfolio->transactions();
  (void)PortfolioManager::replay(rows, {});
  // What a replay takes for granted, such as that there were shares enough, a walk asks for. It
  // changes nothing that is ever saved.
  if (!manager.recalculateLedger(0, portfolio).empty()) {
    throw PortfolioManagerError(
        PortfolioManagerError::LedgerInconsistency{"Balances are not those of the transactions."});
  }
}

void verify(const CommandLine& line, const Console& console) {
  const WorkspaceFile workspace(line.word(0), console);
  checkDatabase(workspace);
  bool isAllWell = true;
  for (const auto& portfolio : workspace.manager()->portfolios()) {
    try {
      checkLedger(*workspace.manager(), portfolio);
      console.out << portfolio->name << ": " << portfolio->transactions().size()
                  << " transactions, all balances are right.\n";
    } catch (const Error& error) {
      console.out << portfolio->name << ": not right.\n";
      console.err << portfolio->name << ": ";
      console.present(error);
      isAllWell = false;
    }
  }
  if (!isAllWell) {
    throw Failed(exitCode::failure);
  }
}

}  // namespace

Command verifyCommand() {
  return {.name = "verify",
          .summary = "Replays every ledger of a workspace and checks all balances.",
          .words = {"WORKSPACE"},
          .options = {},
          .explanation = "Nothing is changed. The exit code is 0 when everything is right.\n",
          .run = &verify};
}

}  // namespace corvane::cli
