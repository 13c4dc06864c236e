#include "cli/commands/commands.h"
#include "cli/console/date_text.h"
#include "cli/console/listing.h"
#include "cli/console/workspace_file.h"

namespace corvane::cli {
namespace {

std::vector<Listing::Field> portfolioFields() {
  using enum Listing::Kind;
  return {{"portfolio", "Portfolio"},
          {"currency", "Currency"},
          {"transactions", "Transactions", number},
          {"from", "From"},
          {"to", "To"}};
}

Listing portfoliosOf(const WorkspaceFile& workspace) {
  Listing portfolios(portfolioFields());
  for (const auto& portfolio : workspace.manager()->portfolios()) {
    requireRows(portfolio);
    const auto& rows = portfolio->transactions();
    const Calendar& calendar = workspace.manager()->calendar;
    portfolios.add({portfolio->name, std::string(portfolio->primaryCurrency().code),
                    std::to_string(rows.size()),
                    rows.empty() ? "" : dateText(rows.front()->settlementDate(), calendar),
                    rows.empty() ? "" : dateText(rows.back()->settlementDate(), calendar)});
  }
  return portfolios;
}

std::vector<Listing::Field> watchlistFields() {
  return {{"symbol", "Symbol"}};
}

void list(const CommandLine& line, const Console& console) {
  const ListingFormat format = listingFormat(line);
  const WorkspaceFile workspace(line.word(0), console);
  const auto& watched = workspace.document()->model()->watchlistEquities;
  if (line.has("--watchlist")) {
    Listing symbols(watchlistFields());
    for (const EquityPointer& equity : watched) {
      symbols.add({equity->symbol});
    }
    symbols.write(format, console.out);
    return;
  }
  portfoliosOf(workspace).write(format, console.out);
  if (format == ListingFormat::table && !watched.empty()) {
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
          .options = joined({{"--watchlist", "", "lists the symbols of the watchlist alone"}},
                            listingOptions()),
          .explanation = "As data, the portfolios come without the watchlist.\n",
          .listings = {{"", portfolioFields()}, {"with --watchlist", watchlistFields()}},
          .run = &list};
}

}  // namespace corvane::cli
