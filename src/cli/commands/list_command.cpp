#include "cli/commands/commands.h"
#include "cli/console/date_text.h"
#include "cli/console/text_table.h"
#include "cli/console/workspace_file.h"

namespace corvane::cli {
namespace {

void list(const CommandLine& line, const Console& console) {
  const WorkspaceFile workspace(line.word(0), console);
  using enum TextTable::Alignment;
  TextTable table({{"Portfolio"}, {"Currency"}, {"Transactions", right}, {"From"}, {"To"}});
  for (const auto& portfolio : workspace.manager()->portfolios()) {
    requireRows(portfolio);
    const auto& rows = portfolio->transactions();
    const Calendar& calendar = workspace.manager()->calendar;
    table.add({portfolio->name, std::string(portfolio->primaryCurrency().code),
               std::to_string(rows.size()),
               rows.empty() ? "" : dateText(rows.front()->settlementDate(), calendar),
               rows.empty() ? "" : dateText(rows.back()->settlementDate(), calendar)});
  }
  table.write(console.out);
  const auto& watched = workspace.document()->model()->watchlistEquities;
  if (!watched.empty()) {
    console.out << "\nWatchlist:";
    for (const EquityPointer& equity : watched) {
      console.out << ' ' << equity->symbol;
    }
    console.out << '\n';
  }
}

}  // namespace

Command listCommand() {
  return {.name = "list",
          .summary = "Lists the portfolios and the watchlist of a workspace.",
          .words = {"WORKSPACE"},
          .options = {},
          .explanation = "",
          .run = &list};
}

}  // namespace corvane::cli
