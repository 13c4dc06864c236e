#include <algorithm>
#include <iterator>
#include <map>

#include "cli/commands/commands.h"
#include "cli/commands/report_output.h"
#include "cli/console/price_source.h"
#include "reports/income/income_report.h"
#include "reports/returns/total_return_index.h"
#include "reports/series/report_days.h"

namespace corvane::cli {
namespace {

using enum TextTable::Alignment;

/// Income by primary currency and by a part of the day's text: "2024-03" or "2024".
using IncomeOfPeriods = std::map<std::string, std::map<std::string, Decimal>>;

/// An equity of a portfolio with what it is expected to pay.
struct ExpectedIncome {
  PortfolioPointer portfolio;
  EquityIncome line;
  std::optional<Decimal> rate;  ///< to the primary currency; none where it is not known
  IncomeProjection projection;
};

std::string kindOfIncome(TransactionType kind) {
  if (kind == TransactionType::dividend) {
    return "dividend";
  }
  if (kind == TransactionType::capitalGainsDividend) {
    return "capital gains dividend";
  }
  return kind == TransactionType::reinvestedDistribution ? "reinvested distribution"
                                                         : "return of capital";
}

/// The income of each month or year beside that of the same months of the year before; a year that
/// is not over is compared with a part of the last one.
void writeIncomeByPeriod(const std::vector<IncomeRow>& rows, bool isMonthly,
                         const YearMonthDay& today, std::ostream& out) {
  IncomeOfPeriods sums;
  IncomeOfPeriods before;
  std::map<std::string, Currency> currencies;
  const std::size_t length = isMonthly ? 7 : 4;
  for (const IncomeRow& row : rows) {
    const std::string code(row.equivalent.currency.code);
    currencies[code] = row.equivalent.currency;
    sums[code][isoText(row.day).substr(0, length)] += row.equivalent.amount;
    YearMonthDay next = row.day;
    ++next.year;
    const bool counts = isMonthly || next.year < today.year ||
                        (next.year == today.year && next.month <= today.month);
    if (counts) {
      before[code][isoText(next).substr(0, length)] += row.equivalent.amount;
    }
  }
  TextTable table({{isMonthly ? "Month" : "Year"},
                   {"Currency"},
                   {"Income", right},
                   {isMonthly ? "Year Before" : "Same Months Before", right}});
  for (const auto& [code, periods] : sums) {
    Decimal total;
    for (const auto& [period, amount] : periods) {
      total += amount;
      table.add({period, code, moneyText(amount, currencies[code]),
                 moneyText(before[code][period], currencies[code])});
    }
    table.add({"Total", code, moneyText(total, currencies[code]), ""});
  }
  table.write(out);
}

std::optional<Decimal> rateToPrimary(const Currency& from, const Currency& to,
                                     QuoteProvider& quotes) {
  return from == to ? std::optional(Decimal(1)) : quotes.exchangeRateEquity(from, to)->recentPrice;
}

/// What each holding is expected to pay, after the provider's dividends, or after the portfolio's
/// own rows where it knows none.
std::vector<ExpectedIncome> expectedIncome(const std::vector<PortfolioPointer>& portfolios,
                                           const PortfolioManager& manager,
                                           const YearMonthDay& today, const Console& console) {
  QuoteProvider& quotes = *manager.quoteProvider;
  refreshEquities(quotes, equitiesOf(portfolios), console);
  EquitySet needed;
  for (const PortfolioPointer& portfolio : portfolios) {
    needed.merge(manager.valuationEquities(portfolio));
  }
  refreshEquities(quotes, {needed.begin(), needed.end()}, console);
  std::vector<ExpectedIncome> expected;
  EquityMap<std::optional<Result<DividendHistory>>> told;
  for (const PortfolioPointer& portfolio : portfolios) {
    const Currency& primary = portfolio->primaryCurrency();
    for (EquityIncome& line : equityIncomes(
             *portfolio, today, manager.calendar,
             [&](const Currency& currency) { return rateToPrimary(currency, primary, quotes); })) {
      told.try_emplace(line.equity);
      expected.push_back(
          {portfolio, line, rateToPrimary(line.equity->currency, primary, quotes), {}});
    }
  }
  constexpr int yearsOfDividends = 3;
  const YearMonthDay from = daysAfter(today, -366 * yearsOfDividends);
  for (auto& [equity, answer] : told) {
    fetchDividendHistory(manager.quoteProvider, equity, from, today,
                         [&answer = answer](auto result) { answer = std::move(result); });
  }
  waitFor([&] {
    return std::ranges::all_of(told, [](const auto& entry) { return entry.second.has_value(); });
  });
  for (ExpectedIncome& each : expected) {
    const auto& answer = *told[each.line.equity];
    std::vector<SharePayment> payments;
    if (answer) {
      for (const ShareDividend& dividend : answer->dividends) {
        payments.push_back({dividend.exDay, dividend.amount});
      }
    } else {
      console.warn("No dividends of " + each.line.equity->symbol +
                   " could be had; those of the ledger count.");
    }
    each.projection = projectedIncome(
        payments.empty() ? each.line.payments : payments, today,
        {each.line.shares, each.rate.value_or(1), each.portfolio->primaryCurrency()});
  }
  return expected;
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

std::string perShareOf(const Decimal& amount, const std::optional<Decimal>& shares) {
  return shares && !shares->isZero() ? (amount / *shares).description() : "";
}

void writeIncomeCSV(const std::vector<std::pair<std::string, IncomeRow>>& rows,
                    const std::vector<ExpectedIncome>& expected, std::ostream& out) {
  ReportTable table({{"date"},
                     {"portfolio"},
                     {"symbol"},
                     {"kind"},
                     {"shares"},
                     {"perShare"},
                     {"amount"},
                     {"currency"},
                     {"rate"},
                     {"equivalent"},
                     {"status"},
                     {"note"}});
  for (const auto& [portfolio, row] : rows) {
    const Decimal& amount = row.amount.amount;
    table.add({isoText(row.day), portfolio, row.equity->symbol, kindOfIncome(row.kind),
               row.shares ? row.shares->description() : "", perShareOf(amount, row.shares),
               amount.description(), std::string(row.amount.currency.code),
               amount.isZero() ? "" : (row.equivalent.amount / amount).description(),
               row.equivalent.amount.description(), "paid", ""});
  }
  for (const ExpectedIncome& each : expected) {
    for (const IncomeProjection::Payment& payment : each.projection.payments) {
      table.add({isoText(payment.day), each.portfolio->name, each.line.equity->symbol, "dividend",
                 each.line.shares.description(), payment.perShare.description(),
                 (payment.perShare * each.line.shares).description(),
                 std::string(each.line.equity->currency.code),
                 each.rate ? each.rate->description() : "",
                 each.rate ? payment.amount.description() : "",
                 payment.isDeclared ? "declared" : "estimated", each.rate ? "" : "no rate"});
    }
  }
  table.writeCSV(out);
}

void writeIncome(const CommandLine& line, const Console& console) {
  const std::string by = line.value("--by").value_or("month");
  if (by != "month" && by != "year" && by != "equity") {
    throw UsageError("--by is none of month, year and equity.");
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
  std::vector<std::pair<std::string, IncomeRow>> rows;
  std::vector<IncomeRow> income;
  for (const PortfolioPointer& portfolio : portfolios) {
    for (const IncomeRow& row :
         recordedIncome(*portfolio, manager.calendar, line.has("--return-of-capital"))) {
      rows.emplace_back(portfolio->name, row);
      income.push_back(row);
    }
  }
  const auto expected = isExpected ? expectedIncome(portfolios, manager, today, console)
                                   : std::vector<ExpectedIncome>();
  if (line.has("--csv")) {
    writeIncomeCSV(rows, expected, console.out);
  } else if (line.has("--projected")) {
    writeProjection(expected, console.out);
  } else if (income.empty()) {
    console.out << "No income recorded.\n";
  } else if (by == "equity") {
    writeIncomeByEquity(expected, console.out);
  } else {
    writeIncomeByPeriod(income, by == "month", today, console.out);
  }
  if (std::ranges::any_of(expected, [](const auto& each) { return !each.rate; })) {
    throw Failed(exitCode::failure);  // The lines say whose rate is missing.
  }
}

}  // namespace

Command incomeCommand() {
  std::vector<Option> options = {
      {"--portfolio", "NAME", "the portfolio; else all of them"},
      {"--by", "month|year|equity", "what a line stands for; else a month"},
      {"--projected", "", "shows what the next twelve months are expected to bring"},
      {"--return-of-capital", "", "counts returns of capital as income"},
      {"--csv", "", "writes each payment as text with commas, for programs"}};
  std::ranges::move(priceSourceOptions(), std::back_inserter(options));
  return {.name = "income",
          .summary = "Shows what dividends and distributions have brought, and may bring.",
          .words = {"WORKSPACE"},
          .options = std::move(options),
          .explanation =
              "Income is that of the ledger's rows at the equivalents entered there, net of what "
              "was withheld.\nThe projection places each dividend of the last twelve months a "
              "year later, on the shares of today\nand at today's rate, and assumes no growth. "
              "Yields are payments of the last twelve months on the\nshares of today, as a part "
              "of cost base and value.\n",
          .run = &writeIncome};
}

}  // namespace corvane::cli
