#include <algorithm>
#include <iterator>
#include <map>
#include <ranges>

#include "cli/commands/commands.h"
#include "cli/commands/expected_income_question.h"
#include "cli/commands/report_output.h"
#include "cli/console/price_source.h"
#include "cli/console/text_table.h"
#include "exchange/exports/report_lines_exporter.h"
#include "reports/income/income_payments.h"
#include "reports/series/report_days.h"

namespace corvane::cli {
namespace {

using enum TextTable::Alignment;

/// The income of each month or year beside that of the same months of the year before; a year that
/// is not over is compared with a part of the last one.
void writeIncomeByPeriod(const std::vector<IncomeRow>& rows, IncomePeriod::Length length,
                         const YearMonthDay& today, std::ostream& out) {
  const char* title = length == IncomePeriod::Length::month     ? "Month"
                      : length == IncomePeriod::Length::quarter ? "Quarter"
                                                                : "Year";
  TextTable table(
      {{title},
       {"Currency"},
       {"Income", right},
       {length == IncomePeriod::Length::year ? "Same Months Before" : "Year Before", right}});
  std::map<std::string, std::pair<Currency, Decimal>> totals;
  std::string code;
  const auto addTotal = [&] {
    if (!code.empty()) {
      const auto& [currency, sum] = totals[code];
      table.add({"Total", code, moneyText(sum, currency), ""});
    }
  };
  for (const IncomePeriod& period : incomeByPeriod(rows, length, today)) {
    const std::string next(period.currency.code);
    if (next != code) {
      addTotal();
      code = next;
    }
    totals[code].first = period.currency;
    totals[code].second += period.income;
    table.add({period.name(), code, moneyText(period.income, period.currency),
               moneyText(period.sameMonthsBefore, period.currency)});
  }
  addTotal();
  table.write(out);
}

std::string nextPaymentText(const ExpectedIncome& each) {
  return each.projection.payments.empty() ? std::string(noFigure)
                                          : isoText(each.projection.payments.front().day);
}

void writeIncomeByEquity(const std::vector<ExpectedIncome>& expected, std::ostream& out) {
  TextTable table({{"Portfolio"},
                   {"Symbol"},
                   {"Shares", right},
                   {"Last 12 Months", right},
                   {"On Cost", right},
                   {"On Value", right},
                   {"Rhythm"},
                   {"Next Payment"},
                   {"Next 12 Months", right},
                   {"Currency"},
                   {"Note"}});
  for (const ExpectedIncome& each : expected) {
    const Currency& primary = each.portfolio->primaryCurrency();
    table.add({each.portfolio->name, each.line.equity->symbol, each.line.shares.description(),
               moneyText(each.line.lastYear, primary), percentText(each.line.yieldOnCost),
               percentText(each.line.yieldOnValue),
               std::string(displayName(each.projection.rhythm)), nextPaymentText(each),
               each.rate ? moneyText(each.projection.next12Months(), primary) : "⚠️ no rate",
               std::string(primary.code), each.line.isSoFar ? "so far" : ""});
  }
  table.write(out);
}

void writeProjection(const std::vector<ExpectedIncome>& expected, std::ostream& out) {
  TextTable table({{"Day"},
                   {"Portfolio"},
                   {"Symbol"},
                   {"Per Share", right},
                   {"Amount", right},
                   {"Currency"},
                   {"Status"}});
  std::map<std::string, std::pair<Currency, std::optional<Decimal>>> totals;
  std::map<std::tuple<YearMonthDay, std::string, std::string>, std::vector<std::string>> lines;
  for (const ExpectedIncome& each : expected) {
    const Currency& primary = each.portfolio->primaryCurrency();
    auto& [currency, total] =
        totals.try_emplace(std::string(primary.code), primary, Decimal()).first->second;
    for (const IncomeProjection::Payment& payment : each.projection.payments) {
      if (!each.rate) {
        total.reset();
      } else if (total) {
        *total += payment.amount;
      }
      lines[{payment.day, each.line.equity->symbol, each.portfolio->name}] = {
          isoText(payment.day),
          each.portfolio->name,
          each.line.equity->symbol,
          payment.perShare.description(),
          each.rate ? moneyText(payment.amount, primary) : "⚠️ no rate",
          std::string(primary.code),
          payment.isDeclared ? "declared" : "estimated"};
    }
  }
  for (auto& [key, cells] : lines) {
    table.add(std::move(cells));
  }
  for (const auto& [code, total] : totals) {
    table.add({"Total", "", "", "",
               total.second ? moneyText(*total.second, total.first) : std::string(noFigure), code,
               ""});
  }
  table.write(out);
  for (const ExpectedIncome& each : expected) {
    for (const IncomeProjection::LeftOut& left : each.projection.leftOut) {
      out << "Left out: " << each.line.equity->symbol << ", " << isoText(left.day) << ", "
          << left.perShare.description() << " a share, " << left.reason << ".\n";
    }
  }
}

std::vector<Listing::Field> paymentFields() {
  using enum Listing::Kind;
  return {{"date", "Date"},
          {"portfolio", "Portfolio"},
          {"symbol", "Symbol"},
          {"kind", "Kind"},
          {"shares", "Shares", number},
          {"perShare", "Per Share", number},
          {"amount", "Amount", number},
          {"currency", "Currency"},
          {"rate", "Rate", number},
          {"equivalent", "Equivalent", number},
          {"status", "Status"},
          {"note", "Note"}};
}

void writePayments(const std::vector<IncomePayment>& payments, ListingFormat format,
                   std::ostream& out) {
  ReportTable table(paymentFields());
  const auto text = [](const std::optional<Decimal>& figure) {
    return figure ? figure->description() : std::string();
  };
  for (const IncomePayment& payment : payments) {
    table.add({isoText(payment.day), payment.portfolio, payment.equity->symbol,
               kindOfIncome(payment.kind), text(payment.shares), text(payment.perShare),
               payment.amount.amount.description(), std::string(payment.amount.currency.code),
               text(payment.rate), payment.equivalent ? text(payment.equivalent->amount) : "",
               std::string(displayName(payment.status)), payment.note});
  }
  table.write(format, out);
}

void writeIncome(const CommandLine& line, const Console& console) {
  const std::string by = line.value("--by").value_or("month");
  if (by != "month" && by != "quarter" && by != "year" && by != "equity") {
    throw UsageError("--by is none of month, quarter, year and equity.");
  }
  const bool isExpected = by == "equity" || line.has("--projected");
  std::optional<PriceSource> prices;
  if (isExpected) {
    prices.emplace(line);
  }
  const WorkspaceFile workspace(line.word(0), console,
                                prices ? prices->provider() : makeOfflineProvider());
  const PortfolioManager& manager = *workspace.manager();
  const std::vector<PortfolioPointer> portfolios = portfoliosOf(line, workspace);
  const YearMonthDay today = YearMonthDay::of(Date::now(), manager.calendar);
  const bool withReturns = line.has("--return-of-capital");
  std::vector<IncomeRow> income;
  for (const PortfolioPointer& portfolio : portfolios) {
    std::ranges::move(recordedIncome(*portfolio, manager.calendar, withReturns),
                      std::back_inserter(income));
  }
  const auto expected = isExpected ? askForExpected(portfolios, manager, today, console)
                                   : std::vector<ExpectedIncome>();
  if (const ListingFormat format = listingFormat(line); format != ListingFormat::table) {
    writePayments(incomePayments(portfolios, expected, manager.calendar, withReturns), format,
                  console.out);
  } else if (line.has("--projected")) {
    writeProjection(expected, console.out);
  } else if (income.empty()) {
    console.out << "No income recorded.\n";
  } else if (by == "equity") {
    writeIncomeByEquity(expected, console.out);
  } else {
    const auto length = by == "month"     ? IncomePeriod::Length::month
                        : by == "quarter" ? IncomePeriod::Length::quarter
                                          : IncomePeriod::Length::year;
    writeIncomeByPeriod(income, length, today, console.out);
  }
  const auto hasNoRate = [](const ExpectedIncome& each) { return !each.rate; };
  for (const ExpectedIncome& each : expected | std::views::filter(hasNoRate)) {
    console.warn(each.portfolio->name + ": no exchange rate for " + each.line.equity->symbol +
                 ", what it may bring is left out.");
  }
  if (std::ranges::any_of(expected, hasNoRate)) {
    throw Failed(exitCode::failure);
  }
}

}  // namespace

Command incomeCommand() {
  return {
      .name = "income",
      .summary = "Shows what dividends and distributions have brought, and may bring.",
      .words = {"WORKSPACE"},
      .options =
          joined({{"--portfolio", "NAME", "the portfolio; else all of them"},
                  {"--by", "month|quarter|year|equity", "what a line stands for; else a month"},
                  {"--projected", "", "shows what the next twelve months are expected to bring"},
                  {"--return-of-capital", "", "counts returns of capital as income"}},
                 listingOptions(), priceSourceOptions()),
      .explanation =
          "Income is that of the ledger's rows at the equivalents entered there, net of what "
          "was withheld.\nThe projection places each dividend of the last twelve months a "
          "year later, on the shares of today\nand at today's rate, and assumes no growth. "
          "Yields are payments of the last twelve months on the\nshares of today, as a part "
          "of cost base and value. What lacks an exchange rate is left out, and the exit code is "
          "then 1.\n",
      .listings = {{"", paymentFields()}},
      .run = &writeIncome};
}

}  // namespace corvane::cli
