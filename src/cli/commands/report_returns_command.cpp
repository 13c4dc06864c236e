#include <algorithm>
#include <iterator>

#include "cli/commands/commands.h"
#include "cli/commands/report_output.h"
#include "cli/commands/returns_question.h"
#include "cli/console/price_source.h"
#include "cli/console/text_table.h"
#include "reports/returns/returns_report.h"
#include "reports/returns/total_return_index.h"
#include "reports/series/report_days.h"

namespace corvane::cli {
namespace {

std::string volatilityText(const std::optional<Volatility>& volatility) {
  return percentText(volatility ? std::optional(volatility->annual()) : std::nullopt);
}

std::string drawdownText(const std::optional<Drawdowns>& drawdowns, Drawdown Drawdowns::*which,
                         const TimeWeightedReturn& returns) {
  if (!drawdowns) {
    return std::string(returns.total ? "0.00 %" : noFigure);
  }
  const Drawdown& deepest = (*drawdowns).*which;
  const auto day = [&](std::size_t i) { return isoText(returns.days[i].day); };
  return percentText(deepest.size) + " (" + day(deepest.peak) + " to " + day(deepest.trough) +
         (deepest.recovered ? ", recovered " + day(*deepest.recovered) : ", not recovered") + ")";
}

std::string monthText(const PeriodReturn& month) {
  return percentText(month.value) + " (" + isoText(month.first).substr(0, 7) + ")";
}

void writeFigures(const ReturnsReport& report, const std::optional<BenchmarkReturn>& benchmark,
                  std::ostream& out) {
  const auto& returns = report.timeWeighted;
  const auto& rate = report.moneyWeighted;
  TextTable table({{"Figure"}, {"Value"}});
  table.add({"Time-weighted, period", percentText(returns.total)});
  table.add({"Time-weighted, a year", percentText(returns.annual())});
  table.add({"Money-weighted, period", percentText(rate.period)});
  table.add({"Money-weighted, a year", percentText(rate.annual())});
  table.add({"Gain", moneyText(report.series.bridge.gain(), report.series.currency)});
  table.add({"Volatility, a year", volatilityText(report.volatility)});
  table.add({"Maximum drawdown", drawdownText(report.drawdowns, &Drawdowns::deepest, returns)});
  if (report.drawdowns && report.drawdowns->longest.peak != report.drawdowns->deepest.peak) {
    table.add({"Longest drawdown", drawdownText(report.drawdowns, &Drawdowns::longest, returns)});
  }
  if (const auto extremes = bestAndWorst(monthlyReturns(returns))) {
    table.add({"Best month", monthText(extremes->best)});
    table.add({"Worst month", monthText(extremes->worst)});
  }
  if (benchmark) {
    table.add({"Benchmark, period", percentText(benchmark->total())});
    table.add({"Difference in points", returns.total
                                           ? percentText(*returns.total - benchmark->total())
                                           : std::string(noFigure)});
    const TimeWeightedReturn compared = benchmark->asReturns();
    table.add({"Benchmark, volatility", volatilityText(volatilityOf(compared))});
    table.add({"Benchmark, drawdown",
               drawdownText(drawdownsOf(compared), &Drawdowns::deepest, compared)});
  }
  table.write(out);
}

/// The value in the heading of the portfolio that the question is about, where it ends today; none
/// where it is about anything else, or where a price is missing.
std::optional<Decimal> headingValue(const ReturnsQuestion& question,
                                    const PortfolioManager& manager) {
  const YearMonthDay today = YearMonthDay::of(Date::now(), manager.calendar);
  if (question.portfolios.size() != 1 || question.equity != nullptr || question.to != today ||
      question.portfolios.front()->primaryCurrency() != question.currency) {
    return std::nullopt;
  }
  try {
    return manager.valuation(question.portfolios.front()).currentValue;
  } catch (const PortfolioManagerError&) {
    return std::nullopt;
  }
}

void writeBridge(const ValueBridge& bridge, const Currency& currency,
                 const std::optional<Decimal>& heading, std::ostream& out) {
  TextTable table({{"Reconciliation"}, {std::string(currency.code), TextTable::Alignment::right}});
  const auto add = [&](const std::string& title, const Decimal& amount) {
    table.add({title, moneyText(amount, currency)});
  };
  add("Opening value", bridge.opening);
  add("+ Deposits at the rates of their days", bridge.deposits);
  add("- Withdrawals", bridge.withdrawals);
  add("± Shares journaled", bridge.journaled);
  add("+ Gain of equities", bridge.equityGain);
  add("    of it realised", bridge.realised);
  add("    of it unrealised", bridge.equityGain - bridge.realised);
  add("+ Dividends", bridge.dividends);
  add("+ Fees and adjustments", bridge.adjustments);
  add("+ Currency", bridge.currency());
  add("= Closing value", bridge.closing);
  if (!bridge.dividendsKeptAsCash.isZero()) {
    add("Dividends kept as cash, beside it", bridge.dividendsKeptAsCash);
  }
  if (heading) {
    add("+ Latest prices and rates, and cash kept", *heading - bridge.closing);
    add("= Value in the heading", *heading);
  }
  table.write(out);
}

void writeEquities(const std::vector<EquityReturns>& equities, const Currency& currency,
                   std::ostream& out) {
  using enum TextTable::Alignment;
  TextTable table({{"Symbol"},
                   {"Opening", right},
                   {"Bought", right},
                   {"Sold", right},
                   {"Dividends", right},
                   {"Closing", right},
                   {"Gain", right},
                   {"Time-w.", right},
                   {"Money-w.", right},
                   {"Share", right}});
  for (const auto& [figures, timeWeighted, moneyWeighted, share] : equities) {
    const auto money = [&](const Decimal& amount) { return moneyText(amount, currency); };
    table.add({figures.equity->symbol, money(figures.opening), money(figures.bought),
               money(figures.sold), money(figures.dividends), money(figures.closing),
               money(figures.gain()), percentText(timeWeighted), percentText(moneyWeighted),
               percentText(share)});
  }
  table.write(out);
}

void writePeriods(const std::vector<PeriodReturn>& periods,
                  const std::optional<BenchmarkReturn>& benchmark, std::ostream& out) {
  using enum TextTable::Alignment;
  TextTable table({{"From"}, {"To"}, {"Return", right}, {"Benchmark", right}});
  for (const PeriodReturn& period : periods) {
    std::optional<double> beside;
    if (benchmark) {
      beside =
          benchmark->indexOn(period.last) / benchmark->indexOn(daysAfter(period.first, -1)) - 1;
    }
    table.add({isoText(period.first), isoText(period.last),
               percentText(period.value) + (period.isWhole ? "" : " (part)"), percentText(beside)});
  }
  table.write(out);
}

/// Years below one another and months side by side, of parts of a month with a star.
void writeGrid(const std::vector<YearOfReturns>& grid, std::ostream& out) {
  std::vector<TextTable::Column> columns{{"Year"}};
  for (const char* month : {"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct",
                            "Nov", "Dec", "Year"}) {
    columns.push_back({month, TextTable::Alignment::right});
  }
  TextTable table(std::move(columns));
  const auto cell = [](const std::optional<PeriodReturn>& period) {
    return !period ? std::string() : percentText(period->value) + (period->isWhole ? "" : "*");
  };
  for (const YearOfReturns& year : grid) {
    std::vector<std::string> cells{std::to_string(year.year)};
    std::ranges::transform(year.months, std::back_inserter(cells), cell);
    cells.push_back(cell(year.whole));
    table.add(std::move(cells));
  }
  table.write(out);
  out << "* a part of it\n";
}

std::vector<Listing::Field> dayFields() {
  using enum Listing::Kind;
  return {{"date", "Date"},
          {"value", "Value", number},
          {"inflow", "Inflow", number},
          {"outflow", "Outflow", number},
          {"dailyReturn", "Return", number},
          {"index", "Index", number},
          {"benchmarkIndex", "Benchmark", number},
          {"drawdown", "Drawdown", number},
          {"note", "Note"}};
}

/// The days for programs: amounts with all their digits, returns as fractions of 1.
void writeDays(const ReturnsReport& report, const std::optional<BenchmarkReturn>& benchmark,
               ListingFormat format, std::ostream& out) {
  ReportTable table(dayFields());
  const auto text = [](double value) { return Decimal::fromDouble(value).description(); };
  auto measured = report.timeWeighted.days.begin();
  double peak = 1;
  for (const ValuationDay& day : report.series.days) {
    std::vector<std::string> cells{isoText(day.day), day.value.description(),
                                   day.inflow.description(), day.outflow.description()};
    while (measured != report.timeWeighted.days.end() && measured->day < day.day) {
      ++measured;
    }
    const bool isMeasured = measured != report.timeWeighted.days.end() && measured->day == day.day;
    if (isMeasured) {
      peak = std::max(peak, measured->index);
    }
    cells.push_back(isMeasured ? text(measured->dailyReturn) : "");
    cells.push_back(isMeasured ? text(measured->index) : "");
    cells.push_back(benchmark ? text(benchmark->indexOn(day.day)) : "");
    cells.push_back(isMeasured ? text(1 - measured->index / peak) : "");
    cells.push_back(
        std::string(isMeasured ? "" : "not measured") +
        (day.isAtTradePrice ? (isMeasured ? "at trade price" : ", at trade price") : ""));
    table.add(std::move(cells));
  }
  table.write(format, out);
}

void writeReport(const CommandLine& line, const ReturnsQuestion& question,
                 const ReturnsReport& report, const std::optional<BenchmarkReturn>& benchmark,
                 const std::optional<Decimal>& heading, std::ostream& out) {
  if (const ListingFormat format = listingFormat(line); format != ListingFormat::table) {
    writeDays(report, benchmark, format, out);
    return;
  }
  const Currency& currency = report.series.currency;
  out << scopeTitle(question) << ", " << isoText(question.from) << " to " << isoText(question.to)
      << ", " << std::string_view(currency.code) << "\n\n";
  writeFigures(report, benchmark, out);
  out << '\n';
  writeBridge(report.series.bridge, currency, heading, out);
  if (!report.equities.empty()) {
    out << '\n';
    writeEquities(report.equities, currency, out);
  }
  if (const auto by = line.value("--by")) {
    out << '\n';
    writePeriods(
        *by == "year" ? yearlyReturns(report.timeWeighted) : monthlyReturns(report.timeWeighted),
        benchmark, out);
    if (*by == "month") {
      out << '\n';
      writeGrid(returnGrid(report.timeWeighted), out);
    }
  }
  for (const std::string& note : report.notes) {
    out << '\n' << note << '\n';
  }
}

void writeReturns(const CommandLine& line, const Console& console) {
  if (const auto by = line.value("--by"); by && *by != "year" && *by != "month") {
    throw UsageError("--by is neither year nor month.");
  }
  const PriceSource prices(line);
  const WorkspaceFile workspace(line.word(0), console, prices.provider());
  PortfolioManager& manager = *workspace.manager();
  ReturnsQuestion question = returnsQuestion(line, workspace);
  askMarket(question, manager, console);
  bool isComplete = true;
  const ReturnsReport report = reportOf(question, manager.calendar, console, isComplete);
  if (!report.timeWeighted.total) {
    if (const ListingFormat format = listingFormat(line); format != ListingFormat::table) {
      ReportTable(dayFields()).write(format, console.out);
    } else {
      console.out << "Nothing was held in these days.\n";
    }
  } else {
    const auto benchmark =
        benchmarkOf(line, question, report.series.currency, *manager.quoteProvider, console);
    isComplete &= benchmark.has_value() || !line.has("--benchmark");
    writeReport(line, question, report, benchmark, headingValue(question, manager), console.out);
  }
  if (!isComplete) {
    throw Failed(exitCode::failure);  // What is missing has been told.
  }
}

}  // namespace

Command returnsCommand() {
  return {.name = "returns",
          .summary = "Shows what the investments have returned.",
          .words = {"WORKSPACE"},
          .options = joined(
              {
                  {"--portfolio", "NAME", "the portfolio; else all of them, added up"},
                  {"--all", "", "all portfolios, added up"},
                  {"--symbol", "S", "one equity alone"},
                  {"--from", "DAY",
                   "the first day, such as 2024-01-01; else that of the first transaction"},
                  {"--to", "DAY", "the last day; else today"},
                  {"--benchmark", "S", "an equity to compare with, its dividends included"},
                  {"--by", "year|month", "shows the return of each year or month as well"},
                  {"--currency", "C",
                   "the currency of all portfolios together; else that of most of them"},
              },
              listingOptions(), priceSourceOptions()),
          .explanation =
              "Time-weighted returns link the returns of days: what comes in counts from the "
              "start of its\nday, what goes out to the end of it, and the flows of one day are "
              "netted first. So on a day\nwith an inflow the day's move is diluted. "
              "Money-weighted returns are the rate at which the\nowner's payments have grown, on "
              "actual days of a year of 365. Figures a year are shown for more\nthan 366 days. "
              "What has no price is left out with a warning, and the exit code is then 1. "
              "--csv and --json write\nthe days.\n",
          .listings = {{"", dayFields()}},
          .run = &writeReturns};
}

}  // namespace corvane::cli
