#include <filesystem>
#include <optional>
#include <string>

#include "cli/commands/commands.h"
#include "cli/console/listing.h"
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

std::vector<Listing::Field> verdictFields() {
  using enum Listing::Kind;
  return {{"portfolio", "Portfolio"},
          {"transactions", "Transactions", number},
          {"isRight", "Right", boolean},
          {"problem", "Problem"}};
}

/// What a reader sees of each portfolio at once; data is written when all have been looked at.
void verify(const CommandLine& line, const Console& console) {
  const ListingFormat format = listingFormat(line);
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
  Listing verdicts(verdictFields());
  const auto tell = [&](const std::string& text) {
    if (format == ListingFormat::table) {
      console.out << text << '\n';
    }
  };
  for (const auto& portfolio : manager.portfolios()) {
    endIfInterrupted();
    const std::string& name = portfolio->name;
    try {
      manager.verify(portfolio);
      const std::string count = std::to_string(portfolio->transactions().size());
      tell(name + ": " + count + " transactions, all balances are right.");
      verdicts.add({name, count, "true", ""});
    } catch (const Error& error) {
      tell(name + ": not right.");
      verdicts.add({name, "", "false", error.description().value_or("")});
      console.err << name << ": ";
      console.present(error);
      isAllWell = false;
    }
  }
  if (format != ListingFormat::table) {
    verdicts.write(format, console.out);
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
      .options = listingOptions(),
      .explanation =
          "Balances are compared with a walk over the transactions, and so are the yearly totals "
          "in the\nfile. Nothing is changed. The exit code is 0 when everything is right. As data, "
          "a portfolio that\nis not right has its problem with it.\n",
      .listings = {{"", verdictFields()}},
      .run = &verify};
}

}  // namespace corvane::cli
