#include <algorithm>
#include <cctype>
#include <iterator>

#include "cli/commands/commands.h"
#include "cli/commands/report_output.h"
#include "cli/console/option_values.h"
#include "cli/console/price_source.h"
#include "reports/series/report_days.h"
#include "reports/trail/ledger_trails.h"

namespace corvane::cli {
namespace {

/// The position that --row names, or that of the last row of --symbol up to --day.
std::size_t rowOf(const CommandLine& line, Portfolio& portfolio, const Calendar& calendar,
                  bool isSale) {
  const auto& rows = portfolio.transactions();
  if (const auto number = line.value("--row")) {
    const bool isNumber = !number->empty() && number->size() < 10 &&
                          std::ranges::all_of(*number, [](unsigned char character) {
                            return std::isdigit(character) != 0;
                          });
    const std::size_t row = isNumber ? std::stoul(*number) : 0;
    if (row < 1 || row > rows.size()) {
      throw UsageError("“" + *number + "” is no number of a row; see corvane-cli ledger.");
    }
    return row - 1;
  }
  const auto symbol = line.value("--symbol");
  if (!symbol) {
    throw UsageError("This needs --symbol or --row.");
  }
  const auto last = dayOption(line, "--day");
  for (std::size_t i = rows.size(); i-- > 0;) {
    const EquityPointer* equity = rows[i]->basic.equity();
    if (equity != nullptr && (*equity)->symbol == *symbol &&
        (!last || YearMonthDay::of(rows[i]->settlementDate(), calendar) <= *last) &&
        (!isSale || rows[i]->capitalGain())) {
      return i;
    }
  }
  throw UsageError(isSale ? "Nothing of “" + *symbol + "” was sold."
                          : "No transaction names the symbol “" + *symbol + "”.");
}

void writeOutline(const TrailNode& node, std::size_t depth, std::ostream& out) {
  out << std::string(depth * 2, ' ') << node.label << ": " << node.value.description()
      << (node.unit.empty() ? "" : " " + node.unit) << (node.day ? ", " + isoText(*node.day) : "");
  if (node.operation != TrailNode::Operation::leaf) {
    out << ", " << displayName(node.operation);
  }
  out << (node.source.empty() ? "" : ", " + node.source)
      << (node.note.empty() ? "" : " (" + node.note + ")") << '\n';
  for (const TrailNode& child : node.children) {
    writeOutline(child, depth + 1, out);
  }
}

void addLines(const TrailNode& node, int depth, ReportTable& table) {
  table.add({std::to_string(depth), node.label, std::string(displayName(node.operation)),
             node.value.description(), node.unit, node.day ? isoText(*node.day) : "", node.source,
             node.note});
  for (const TrailNode& child : node.children) {
    addLines(child, depth + 1, table);
  }
}

TrailNode trailOf(const CommandLine& line, const PortfolioPointer& portfolio,
                  const Calendar& calendar) {
  const std::string& what = line.word(0);
  if (what == "value") {
    return valueTrail(*portfolio);
  }
  if (what == "deposits") {
    return depositsTrail(*portfolio);
  }
  const bool isGain = what == "gain";
  const std::size_t row = rowOf(line, *portfolio, calendar, isGain);
  auto trail = isGain ? capitalGainTrail(*portfolio, row, calendar)
                      : costBaseTrail(*portfolio, row, calendar);
  if (!trail) {
    throw UsageError(isGain ? "That row is no sale." : "That row names no equity.");
  }
  return std::move(*trail);
}

void writeExplanation(const CommandLine& line, const Console& console) {
  const std::string& what = line.word(0);
  if (what != "value" && what != "deposits" && what != "cost-base" && what != "gain") {
    throw UsageError("“" + what + "” is none of value, deposits, cost-base and gain.");
  }
  const bool needsPrices = what == "value" || what == "deposits";
  std::optional<PriceSource> prices;
  if (needsPrices) {
    prices.emplace(line);
  }
  const WorkspaceFile workspace(line.word(1), console,
                                prices ? prices->provider() : makeOfflineProvider());
  const PortfolioPointer portfolio = workspace.portfolio(line.required("--portfolio"));
  const PortfolioManager& manager = *workspace.manager();
  if (needsPrices) {
    // Which currency an equity is traded in has to be known before its rate can be asked for.
    refreshEquities(*manager.quoteProvider, equitiesOf({portfolio}), console);
    const EquitySet needed = manager.valuationEquities(portfolio);
    refreshEquities(*manager.quoteProvider, {needed.begin(), needed.end()}, console);
  }
  const TrailNode trail = trailOf(line, portfolio, manager.calendar);
  if (!line.has("--csv")) {
    writeOutline(trail, 0, console.out);
    return;
  }
  ReportTable table(
      {{"depth"}, {"label"}, {"operation"}, {"value"}, {"unit"}, {"day"}, {"source"}, {"note"}});
  addLines(trail, 0, table);
  table.writeCSV(console.out);
}

}  // namespace

Command explainCommand() {
  std::vector<Option> options = {
      {"--portfolio", "NAME", "the portfolio", true},
      {"--symbol", "S", "of which equity, after its last row"},
      {"--row", "N", "after which row; numbers are those of corvane-cli ledger"},
      {"--day", "DAY", "the last day whose rows count"},
      {"--csv", "", "writes text with commas, for programs"}};
  std::ranges::move(priceSourceOptions(), std::back_inserter(options));
  return {.name = "explain",
          .summary = "Shows how a figure came about, down to rows, prices and roundings.",
          .words = {"value|deposits|cost-base|gain", "WORKSPACE"},
          .options = std::move(options),
          .explanation =
              "Each line is what the lines indented below it give. Cost base and gain need "
              "--symbol or --row;\nvalue and deposits are those at the latest prices and rates.\n",
          .run = &writeExplanation};
}

}  // namespace corvane::cli
