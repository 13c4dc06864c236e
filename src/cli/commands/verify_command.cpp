#include <filesystem>
#include <optional>

#include "cli/commands/commands.h"
#include "cli/console/workspace_file.h"
#include "storage/database/storage_verification.h"
#include "storage/database/stored_portfolio_manager.h"

namespace corvane::cli {
namespace {

/// What of the package at `path` is missing; none where it is complete.
std::optional<std::string> missingPart(const std::filesystem::path& path) {
  const auto holds = [&](std::string_view name) {
    std::error_code error;
    const auto size = std::filesystem::file_size(path / name, error);
    return !error && size > 0;
  };
  const bool hasDatabase = holds(WorkspaceDocument::databaseName);
  const bool hasProperties = holds(WorkspaceDocument::generalPropertiesName);
  if (hasDatabase && !hasProperties) {
    return "There is no “General.json” beside the database: the watchlist and the settings of the "
           "scenarios are missing.";
  }
  if (hasProperties && !hasDatabase) {
    return "There is no database “LocalPortfolios.sqlite3” beside “General.json”: the portfolios "
           "are missing.";
  }
  return std::nullopt;
}

void verify(const CommandLine& line, const Console& console) {
  const WorkspaceFile workspace(line.word(0), console);
  auto& manager = dynamic_cast<StoredPortfolioManager&>(*workspace.manager());
  if (const auto damage = anyDamage(manager.database())) {
    throw WorkspaceFileError("The database is damaged: " + *damage,
                             "Go back to a copy of the workspace.");
  }
  bool isAllWell = true;
  if (const auto missing = missingPart(workspace.path())) {
    console.warn(*missing);
    isAllWell = false;
  }
  for (const auto& portfolio : manager.portfolios()) {
    endIfInterrupted();
    try {
      manager.verify(portfolio);
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
  return {
      .name = "verify",
      .summary = "Replays every ledger of a workspace and checks all balances.",
      .words = {"WORKSPACE"},
      .options = {},
      .explanation =
          "Balances are compared with a walk over the transactions, and so are the yearly totals "
          "in the\nfile. Nothing is changed. The exit code is 0 when everything is right.\n",
      .run = &verify};
}

}  // namespace corvane::cli
