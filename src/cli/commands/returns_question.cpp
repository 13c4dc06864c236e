#include "cli/commands/returns_question.h"

#include <algorithm>

#include "cli/console/option_values.h"
#include "cli/console/price_source.h"
#include "reports/returns/total_return_index.h"
#include "reports/series/report_days.h"

namespace corvane::cli {

ReturnsQuestion returnsQuestion(const CommandLine& line, const WorkspaceFile& workspace) {
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
  fetchMarketHistory(manager.quoteProvider, needs, question.from, question.to,
                     [&question](auto history) { question.market = std::move(history); });
  waitFor([&] { return question.market != nullptr; });
}

ReturnsReport reportWithoutMissing(const ReturnsQuestion& question, Portfolio& portfolio,
                                   const Calendar& calendar, const Console& console,
                                   bool& isComplete) {
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

ReturnsReport reportOf(const ReturnsQuestion& question, const Calendar& calendar,
                       const Console& console, bool& isComplete) {
  std::vector<ReturnsReport> reports;
  for (const PortfolioPointer& portfolio : question.portfolios) {
    reports.push_back(reportWithoutMissing(question, *portfolio, calendar, console, isComplete));
  }
  const bool isOne = reports.size() == 1 && reports.front().series.currency == question.currency;
  ReturnsReport report = isOne ? std::move(reports.front())
                               : combinedReport(reports, question.currency, *question.market);
  if (!report.series.missing.empty()) {
    for (const std::string& name : report.series.missing) {
      console.warn("No figures: no prices or rates of " + name + ".");
    }
    throw Failed(exitCode::failure);
  }
  return report;
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
                     [&](auto history) { rates = std::move(history); });
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

std::string scopeTitle(const ReturnsQuestion& question) {
  const std::string whose =
      question.portfolios.size() == 1 ? question.portfolios.front()->name : "All portfolios";
  return whose + (question.equity == nullptr ? "" : ", " + question.equity->symbol);
}

}  // namespace corvane::cli
