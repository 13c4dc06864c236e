#include <algorithm>
#include <iterator>

#include "cli/commands/commands.h"
#include "cli/commands/report_output.h"
#include "cli/console/option_values.h"
#include "cli/console/price_source.h"
#include "reports/returns/returns_report.h"
#include "reports/returns/total_return_index.h"
#include "reports/series/report_days.h"

namespace corvane::cli {
namespace {

/// What a command line asks for, with what the market has told.
struct ReturnsQuestion {
  std::vector<PortfolioPointer> portfolios;
  Currency currency;
  EquityPointer equity;
  YearMonthDay from;
  YearMonthDay to;
  std::shared_ptr<MarketHistory> market = nullptr;
};

ReturnsQuestion questionOf(const CommandLine& line, const WorkspaceFile& workspace) {
  const Calendar& calendar = workspace.manager()->calendar;
  ReturnsQuestion question{portfoliosOf(line, workspace), Currency::cad(), nullptr, {}, {}};
  if (const auto symbol = line.value("--symbol")) {
    question.equity = equityNamed(*symbol, equitiesOf(question.portfolios));
  }
  const auto code = line.value("--currency");
  question.currency = code ? currencyNamed(*code) : commonCurrency(question.portfolios);
  question.to = dayOption(line, "--to").value_or(YearMonthDay::of(Date::now(), calendar));
  YearMonthDay first = question.to;
  for (const PortfolioPointer& portfolio : question.portfolios) {
    if (const auto& rows = portfolio->transactions(); !rows.empty()) {
      first = std::min(first, YearMonthDay::of(rows.front()->settlementDate(), calendar));
    }
  }
  question.from = dayOption(line, "--from").value_or(first);
  if (question.to < question.from) {
    throw UsageError("--to is before --from.");
  }
  return question;
}

void askMarket(ReturnsQuestion& question, PortfolioManager& manager, const Console& console) {
  // Which currency an equity is traded in has to be known before its prices are asked for.
  refreshEquities(*manager.quoteProvider, equitiesOf(question.portfolios), console);
  MarketNeeds needs;
  for (const PortfolioPointer& portfolio : question.portfolios) {
    addMarketNeeds(needs, *portfolio, question.from, question.to, manager.calendar,
                   question.currency);
  }
  fetchMarketHistory(
      manager.quoteProvider, needs, question.from, question.to,
      [&question](std::shared_ptr<MarketHistory> history) { question.market = history; });
  waitFor([&] { return question.market != nullptr; });
}

/// The report of `portfolio`, without what the market did not tell, which is warned of.
ReturnsReport reportWithout(const ReturnsQuestion& question, Portfolio& portfolio,
                            const Calendar& calendar, const Console& console, bool& isComplete) {
  ValuationScope scope{question.from, question.to, question.equity};
  ReturnsReport report = returnsReport(portfolio, scope, *question.market, calendar);
  if (report.series.missing.empty()) {
    return report;
  }
  isComplete = false;
  for (const std::string& name : report.series.missing) {
    console.warn(portfolio.name + ": no prices or rates of " + name +
                 (question.equity == nullptr ? ", which is left out." : "."));
    if (const auto currency = Currency::byCode().find(name); currency != Currency::byCode().end()) {
      scope.leftOutCurrencies.insert(currency->second);
    }
  }
  for (const auto& [equity, error] : question.market->errorsByEquity) {
    scope.leftOut.insert(equity);
  }
  return question.equity != nullptr ? report
                                    : returnsReport(portfolio, scope, *question.market, calendar);
}

std::optional<BenchmarkReturn> benchmarkOf(const CommandLine& line, const ReturnsQuestion& question,
                                           const Currency& currency, QuoteProvider& provider,
                                           const Console& console) {
  const auto symbol = line.value("--benchmark");
  if (!symbol) {
    return std::nullopt;
  }
  const EquityPointer equity = provider.equityWithId(*symbol);
  refreshEquities(provider, {equity}, console);
  std::optional<Result<DividendHistory>> answer;
  fetchDividendHistory(provider.shared_from_this(), equity, question.from, question.to,
                       [&](auto result) { answer = std::move(result); });
  std::shared_ptr<MarketHistory> rates;
  MarketNeeds needs;
  if (equity->currency != currency) {
    needs.pairs.insert({equity->currency, currency});
  }
  fetchMarketHistory(provider.shared_from_this(), needs, question.from, question.to,
                     [&](auto history) { rates = history; });
  waitFor([&] { return answer.has_value() && rates != nullptr; });
  if (!*answer) {
    (*answer).error()->raise();
  }
  const auto pair = rates->rates.find({equity->currency, currency});
  if (equity->currency != currency && pair == rates->rates.end()) {
    console.warn("No rates of " + std::string(equity->currency.code) + " for the benchmark.");
    return std::nullopt;
  }
  auto found =
      benchmarkReturn(**answer, needs.pairs.empty() ? nullptr : &pair->second, question.from);
  if (!found) {
    console.warn("No price of " + *symbol + " before " + isoText(question.from) + ".");
  }
  return found;
}

std::string drawdownText(const ReturnsReport& report) {
  if (!report.drawdowns) {
    return std::string(report.timeWeighted.total ? "0.00 %" : noFigure);
  }
  const Drawdown& deepest = report.drawdowns->deepest;
  const auto day = [&](std::size_t i) { return isoText(report.timeWeighted.days[i].day); };
  return percentText(deepest.size) + " (" + day(deepest.peak) + " to " + day(deepest.trough) +
         (deepest.recovered ? ", recovered " + day(*deepest.recovered) : ", not recovered") + ")";
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
  table.add(
      {"Volatility, a year",
       percentText(report.volatility ? std::optional(report.volatility->annual()) : std::nullopt)});
  table.add({"Maximum drawdown", drawdownText(report)});
  if (benchmark) {
    table.add({"Benchmark, period", percentText(benchmark->total())});
    table.add({"Difference in points", returns.total
                                           ? percentText(*returns.total - benchmark->total())
                                           : std::string(noFigure)});
  }
  table.write(out);
}

void writeBridge(const ValueBridge& bridge, const Currency& currency, std::ostream& out) {
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

/// The days for programs: amounts with all their digits, returns as fractions of 1.
void writeDays(const ReturnsReport& report, const std::optional<BenchmarkReturn>& benchmark,
               std::ostream& out) {
  ReportTable table({{"date"},
                     {"value"},
                     {"inflow"},
                     {"outflow"},
                     {"dailyReturn"},
                     {"index"},
                     {"benchmarkIndex"},
                     {"drawdown"},
                     {"note"}});
  const auto number = [](double value) { return Decimal::fromDouble(value).description(); };
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
    cells.push_back(isMeasured ? number(measured->dailyReturn) : "");
    cells.push_back(isMeasured ? number(measured->index) : "");
    cells.push_back(benchmark ? number(benchmark->indexOn(day.day)) : "");
    cells.push_back(isMeasured ? number(1 - measured->index / peak) : "");
    cells.push_back(
        std::string(isMeasured ? "" : "not measured") +
        (day.isAtTradePrice ? (isMeasured ? "at trade price" : ", at trade price") : ""));
    table.add(std::move(cells));
  }
  table.writeCSV(out);
}

void writeReport(const CommandLine& line, const ReturnsQuestion& question,
                 const ReturnsReport& report, const std::string& title,
                 const std::optional<BenchmarkReturn>& benchmark, std::ostream& out) {
  if (line.has("--csv")) {
    writeDays(report, benchmark, out);
    return;
  }
  const Currency& currency = report.series.currency;
  out << title << (question.equity == nullptr ? "" : ", " + question.equity->symbol) << ", "
      << isoText(question.from) << " to " << isoText(question.to) << ", "
      << std::string_view(currency.code) << "\n\n";
  writeFigures(report, benchmark, out);
  out << '\n';
  writeBridge(report.series.bridge, currency, out);
  if (!report.equities.empty()) {
    out << '\n';
    writeEquities(report.equities, currency, out);
  }
  if (const auto by = line.value("--by")) {
    out << '\n';
    writePeriods(
        *by == "year" ? yearlyReturns(report.timeWeighted) : monthlyReturns(report.timeWeighted),
        benchmark, out);
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
  ReturnsQuestion question = questionOf(line, workspace);
  askMarket(question, manager, console);

  bool isComplete = true;
  std::vector<ReturnsReport> reports;
  for (const PortfolioPointer& portfolio : question.portfolios) {
    reports.push_back(reportWithout(question, *portfolio, manager.calendar, console, isComplete));
  }
  const bool isOne = reports.size() == 1 && reports.front().series.currency == question.currency;
  const ReturnsReport report = isOne ? std::move(reports.front())
                                     : combinedReport(reports, question.currency, *question.market);
  if (!report.series.missing.empty()) {
    for (const std::string& name : report.series.missing) {
      console.warn("No figures: no prices or rates of " + name + ".");
    }
    throw Failed(exitCode::failure);
  }
  if (!report.timeWeighted.total) {
    console.out << "Nothing was held in these days.\n";
  } else {
    const auto benchmark =
        benchmarkOf(line, question, report.series.currency, *manager.quoteProvider, console);
    isComplete &= benchmark.has_value() || !line.has("--benchmark");
    const std::string title =
        question.portfolios.size() == 1 ? question.portfolios.front()->name : "All portfolios";
    writeReport(line, question, report, title, benchmark, console.out);
  }
  if (!isComplete) {
    throw Failed(exitCode::failure);  // What is missing has been told.
  }
}

}  // namespace

Command returnsCommand() {
  std::vector<Option> options = {
      {"--portfolio", "NAME", "the portfolio; else all of them, added up"},
      {"--all", "", "all portfolios, added up"},
      {"--symbol", "S", "one equity alone"},
      {"--from", "DAY", "the first day, such as 2024-01-01; else that of the first transaction"},
      {"--to", "DAY", "the last day; else today"},
      {"--benchmark", "S", "an equity to compare with, its dividends included"},
      {"--by", "year|month", "shows the return of each year or month as well"},
      {"--currency", "C", "the currency of all portfolios together; else that of most of them"},
      {"--csv", "", "writes the days as text with commas, for programs"}};
  std::ranges::move(priceSourceOptions(), std::back_inserter(options));
  return {.name = "returns",
          .summary = "Shows what the investments have returned.",
          .words = {"WORKSPACE"},
          .options = std::move(options),
          .explanation =
              "Time-weighted returns link the returns of days: what comes in counts from the "
              "start of its\nday, what goes out to the end of it, and the flows of one day are "
              "netted first. So on a day\nwith an inflow the day's move is diluted. "
              "Money-weighted returns are the rate at which the\nowner's payments have grown, on "
              "actual days of a year of 365. Figures a year are shown for more\nthan 366 days. "
              "What has no price is left out with a warning, and the exit code is then 1.\n",
          .run = &writeReturns};
}

}  // namespace corvane::cli
