#include <algorithm>

#include "cli/commands/commands.h"
#include "cli/commands/report_output.h"
#include "cli/commands/returns_question.h"
#include "cli/console/option_values.h"
#include "cli/console/price_source.h"
#include "reports/series/report_days.h"
#include "reports/trail/heading_trails.h"
#include "reports/trail/income_trails.h"
#include "reports/trail/ledger_trails.h"
#include "reports/trail/returns_trails.h"
#include "reports/trail/tax_trails.h"

namespace corvane::cli {
namespace {

/// The position that --row names, or that of the last row of --symbol up to --day.
std::size_t rowOf(const CommandLine& line, Portfolio& portfolio, const Calendar& calendar,
                  bool isSale) {
  const auto& rows = portfolio.transactions();
  if (const auto number = line.value("--row")) {
    const std::size_t row = wholeNumber(*number).value_or(0);
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
  out << std::string(depth * 2, ' ') << node.label << ": "
      << (node.isKnown() ? node.value.description() + (node.unit.empty() ? "" : " " + node.unit)
                         : "⚠️")
      << (node.day ? ", " + isoText(*node.day) : "");
  if (node.atRatesOfDays) {
    out << ", at the rate of its day " << node.atRatesOfDays->description();
  }
  if (node.operation != TrailNode::Operation::leaf) {
    out << ", " << displayName(node.operation);
  }
  out << (node.source.empty() ? "" : ", " + node.source)
      << (node.note.empty() ? "" : " (" + node.note + ")") << '\n';
  for (const TrailNode& child : node.children) {
    writeOutline(child, depth + 1, out);
  }
}

void addLines(const TrailNode& node, int depth, bool isOfDeposits, ReportTable& table) {
  std::vector<std::string> cells{std::to_string(depth),
                                 node.label,
                                 std::string(displayName(node.operation)),
                                 node.isKnown() ? node.value.description() : "",
                                 node.unit,
                                 node.day ? isoText(*node.day) : "",
                                 node.source,
                                 node.note};
  if (isOfDeposits) {
    cells.push_back(node.atRatesOfDays ? node.atRatesOfDays->description() : "");
  }
  table.add(std::move(cells));
  for (const TrailNode& child : node.children) {
    addLines(child, depth + 1, isOfDeposits, table);
  }
}

std::vector<Listing::Field> trailFields(bool isOfDeposits) {
  using enum Listing::Kind;
  std::vector<Listing::Field> fields{{"depth", "Depth", number}, {"label", "Label"},
                                     {"operation", "Operation"}, {"value", "Value", number},
                                     {"unit", "Unit"},           {"day", "Day"},
                                     {"source", "Source"},       {"note", "Note"}};
  if (isOfDeposits) {
    fields.push_back({"atRatesOfDays", "At Rates of Days", number});
  }
  return fields;
}

void writeTable(const TrailNode& trail, bool isOfDeposits, ListingFormat format,
                std::ostream& out) {
  ReportTable table(trailFields(isOfDeposits));
  addLines(trail, 0, isOfDeposits, table);
  table.write(format, out);
}

/// What an explanation is made from.
struct ExplainedWorld {
  const CommandLine& line;
  const WorkspaceFile& workspace;
  const Console& console;
  PortfolioPointer portfolio;
  PortfolioManager& manager;

  [[nodiscard]] EquityPointer equity() const {
    const auto symbol = line.value("--symbol");
    if (!symbol) {
      throw UsageError("This needs --symbol.");
    }
    return equityNamed(*symbol, equitiesOf({portfolio}));
  }
  [[nodiscard]] YearMonthDay today() const {
    return dayOption(line, "--day").value_or(YearMonthDay::of(Date::now(), manager.calendar));
  }
};

std::optional<TrailNode> ledgerTrail(const ExplainedWorld& world, bool isGain) {
  const Calendar& calendar = world.manager.calendar;
  const std::size_t row = rowOf(world.line, *world.portfolio, calendar, isGain);
  auto trail = isGain ? capitalGainTrail(*world.portfolio, row, calendar)
                      : costBaseTrail(*world.portfolio, row, calendar);
  if (!trail) {
    throw UsageError(isGain ? "That row is no sale." : "That row names no equity.");
  }
  return trail;
}

/// The tax gain of a sale in its own tax year, under the settings of the workspace.
std::optional<TrailNode> taxTrail(const ExplainedWorld& world) {
  const Calendar& calendar = world.manager.calendar;
  const std::size_t position = rowOf(world.line, *world.portfolio, calendar, true);
  const auto& model = world.workspace.document()->model();
  const auto& portfolios = world.manager.portfolios();
  std::ranges::for_each(portfolios, requireRows);
  const auto taxed = taxedPortfolios(
      portfolios, [&](const PortfolioPointer& portfolio) { return model->taxRoleOf(portfolio); });
  const PortfolioTransaction& row = *world.portfolio->transactions()[position];
  const TaxSettings& settings = model->taxSettings;
  const YearMonthDay day =
      YearMonthDay::of(settings.byTradeDate ? row.tradeDate() : row.settlementDate(), calendar);
  TaxYearQuestion question =
      taxYearQuestion(settings, settings.yearOf(day), YearMonthDay::of(Date::now(), calendar));
  question.person = std::ranges::find(taxed, world.portfolio, &TaxedPortfolio::portfolio)->person;
  for (const TaxYear::Disposal& disposal : taxYear(taxed, question, calendar).disposals) {
    if (disposal.place.portfolio == world.portfolio && disposal.place.position == position) {
      return taxGainTrail(disposal, taxed, question, calendar);
    }
  }
  throw UsageError("That row is no sale that is taxed.");
}

std::optional<TrailNode> returnTrail(const ExplainedWorld& world, bool isMoneyWeighted,
                                     bool& isComplete) {
  ReturnsQuestion question = returnsQuestion(world.line, world.workspace);
  askMarket(question, world.manager, world.console);
  const ReturnsReport report =
      reportOf(question, world.manager.calendar, world.console, isComplete);
  const auto& series = report.series;
  return isMoneyWeighted ? moneyWeightedTrail(series.days, series.currency)
                         : timeWeightedTrail(series.days, series.currency,
                                             world.line.has("--days") ? ReturnsDetail::days
                                                                      : ReturnsDetail::stretches);
}

/// The deposits with the rates of their days beside those of today.
TrailNode depositTrail(const ExplainedWorld& world) {
  const MarketNeeds needs = depositPairs(*world.portfolio);
  const auto& rows = world.portfolio->transactions();
  if (needs.pairs.empty() || rows.empty()) {
    return depositsTrail(*world.portfolio);
  }
  const Calendar& calendar = world.manager.calendar;
  const auto dayOf = [&](const TransactionPointer& row) {
    return YearMonthDay::of(row->settlementDate(), calendar);
  };
  std::shared_ptr<MarketHistory> history;
  fetchMarketHistory(world.manager.quoteProvider, needs, dayOf(rows.front()), dayOf(rows.back()),
                     [&](std::shared_ptr<MarketHistory> told) { history = std::move(told); });
  waitFor([&] { return history != nullptr; });
  return depositsTrail(*world.portfolio, history.get());
}

std::optional<TrailNode> yieldTrail(const ExplainedWorld& world, bool isOnValue) {
  const EquityPointer equity = world.equity();
  const Calendar& calendar = world.manager.calendar;
  if (!isOnValue) {
    return yieldOnCostTrail(*world.portfolio, equity, world.today(), calendar);
  }
  const std::vector<PortfolioPointer> portfolios{world.portfolio};
  const auto rate = rateIn(recentRates(portfolios, *world.manager.quoteProvider), equity->currency,
                           world.portfolio->primaryCurrency());
  return rate ? yieldOnValueTrail(*world.portfolio, equity, *rate, world.today(), calendar)
              : std::nullopt;
}

std::optional<TrailNode> expectedIncomeTrail(const ExplainedWorld& world) {
  const EquityPointer equity = world.equity();
  const Calendar& calendar = world.manager.calendar;
  QuoteProvider& quotes = *world.manager.quoteProvider;
  std::optional<DividendCalendar> dividends;
  fetchDividendCalendar(world.manager.quoteProvider, {equity}, world.today(),
                        [&](DividendCalendar told) { dividends = std::move(told); });
  waitFor([&] { return dividends.has_value(); });
  const std::vector<PortfolioPointer> portfolios{world.portfolio};
  for (const ExpectedIncome& expected : expectedIncomes(
           portfolios, world.today(), calendar, recentRates(portfolios, quotes), *dividends)) {
    if (*expected.line.equity == *equity) {
      return projectionTrail(expected);
    }
  }
  return std::nullopt;
}

struct Explainable {
  std::string_view what;
  bool needsPrices;
  std::optional<TrailNode> (*explain)(const ExplainedWorld& world, bool& isComplete);
};

constexpr Explainable explainables[] = {
    {"value", true,
     [](const ExplainedWorld& world, bool&) {
       return std::optional(valueTrail(*world.portfolio));
     }},
    {"deposits", true,
     [](const ExplainedWorld& world, bool&) { return std::optional(depositTrail(world)); }},
    {"cost-base", false,
     [](const ExplainedWorld& world, bool&) { return ledgerTrail(world, false); }},
    {"gain", false, [](const ExplainedWorld& world, bool&) { return ledgerTrail(world, true); }},
    {"tax", false, [](const ExplainedWorld& world, bool&) { return taxTrail(world); }},
    {"return", true,
     [](const ExplainedWorld& world, bool& isComplete) {
       return returnTrail(world, false, isComplete);
     }},
    {"money-return", true,
     [](const ExplainedWorld& world, bool& isComplete) {
       return returnTrail(world, true, isComplete);
     }},
    {"yield", false, [](const ExplainedWorld& world, bool&) { return yieldTrail(world, false); }},
    {"yield-on-value", true,
     [](const ExplainedWorld& world, bool&) { return yieldTrail(world, true); }},
    {"projection", true,
     [](const ExplainedWorld& world, bool&) { return expectedIncomeTrail(world); }},
};

void writeExplanation(const CommandLine& line, const Console& console) {
  const std::string& what = line.word(0);
  const auto found = std::ranges::find(explainables, what, &Explainable::what);
  if (found == std::end(explainables)) {
    throw UsageError("“" + what +
                     "” is none of value, deposits, cost-base, gain, tax, return, money-return, "
                     "yield, yield-on-value and projection.");
  }
  std::optional<PriceSource> prices;
  if (found->needsPrices) {
    prices.emplace(line);
  }
  const WorkspaceFile workspace(line.word(1), console,
                                prices ? prices->provider() : makeOfflineProvider());
  const PortfolioPointer portfolio = workspace.portfolio(line.required("--portfolio"));
  PortfolioManager& manager = *workspace.manager();
  if (found->needsPrices) {
    // Which currency an equity is traded in has to be known before its rate can be asked for.
    refreshEquities(*manager.quoteProvider, equitiesOf({portfolio}), console);
    const EquitySet needed = manager.valuationEquities(portfolio);
    refreshEquities(*manager.quoteProvider, {needed.begin(), needed.end()}, console);
  }
  bool isComplete = true;
  const auto trail = found->explain({line, workspace, console, portfolio, manager}, isComplete);
  if (!trail) {
    console.warn("There is no such figure to explain.");
    throw Failed(exitCode::failure);
  }
  if (const ListingFormat format = listingFormat(line); format == ListingFormat::table) {
    writeOutline(*trail, 0, console.out);
  } else {
    writeTable(*trail, what == "deposits", format, console.out);
  }
  if (!trail->isKnown()) {
    console.warn(trail->label +
                 (trail->note.empty() ? " is not known." : ": " + trail->note + "."));
  }
  if (!isComplete || !trail->isKnown()) {
    throw Failed(exitCode::failure);  // What is missing has been told.
  }
}

}  // namespace

Command explainCommand() {
  return {.name = "explain",
          .summary = "Shows how a figure came about, down to rows, prices and roundings.",
          .words = {"value|deposits|cost-base|gain|tax|return|money-return|yield|yield-on-value|"
                    "projection",
                    "WORKSPACE"},
          .options = joined(
              {{"--portfolio", "NAME", "the portfolio", true},
               {"--symbol", "S", "of which equity, after its last row"},
               {"--row", "N", "after which row; numbers are those of corvane-cli ledger"},
               {"--day", "DAY", "the last day whose rows count, or the day of a yield"},
               {"--from", "DAY", "the first day of a return; else that of the first transaction"},
               {"--to", "DAY", "its last day; else today"},
               {"--days", "", "tells a return day by day"}},
              listingOptions(), priceSourceOptions()),
          .explanation =
              "Each line is what the lines indented below it give. Cost base, gain and tax need "
              "--symbol or --row,\nyields and projection --symbol. Value and deposits are those at "
              "the latest prices and rates;\ndeposits stand at the rates of their own days as "
              "well. A return is the time-weighted one, told\nby the stretches between flows or "
              "with --days day by day, a money-return the money-weighted one\nwith each payment. "
              "What lacks a price is named, and the exit code is then 1.\n",
          .listings = {{"", trailFields(false)}, {"of deposits", trailFields(true)}},
          .run = &writeExplanation};
}

}  // namespace corvane::cli
