#include <algorithm>

#include "cli/commands/commands.h"
#include "cli/console/option_values.h"
#include "cli/console/workspace_file.h"

namespace corvane::cli {
namespace {

void watch(const CommandLine& line, const Console& console) {
  WorkspaceFile workspace(line.word(0), console);
  workspace.requireSound();
  auto& watched = workspace.document()->model()->watchlistEquities;
  const auto isWatchedAlready = [&](const EquityInfo& equity) {
    return std::ranges::any_of(watched, [&](const auto& other) { return *other == equity; });
  };
  const EquityPointer equity =
      equityNamed(line.word(1), *workspace.manager()->quoteProvider, isWatchedAlready);
  const auto isIt = [&](const EquityPointer& other) { return *other == *equity; };
  const bool isWatched = isWatchedAlready(*equity);
  if (line.has("--stop")) {
    if (!isWatched) {
      throw WorkspaceFileError("“" + line.word(1) + "” is not on the watchlist.", std::nullopt);
    }
    std::erase_if(watched, isIt);
  } else if (!isWatched) {
    watched.push_back(equity);
  }
  workspace.save();
}

}  // namespace

Command watchCommand() {
  return {.name = "watch",
          .summary = "Puts a symbol on the watchlist.",
          .words = {"WORKSPACE", "SYMBOL"},
          .options = {{"--stop", "", "takes it off the watchlist instead"}},
          .explanation =
              "SYMBOL is the one by which the market-data service knows the equity. It is "
              "not looked up.\n",
          .run = &watch};
}

}  // namespace corvane::cli
