#include <algorithm>
#include <map>

#include "cli/commands/commands.h"
#include "cli/commands/report_output.h"
#include "reports/series/report_days.h"
#include "reports/tax/tax_year.h"

namespace corvane::cli {
namespace {

using enum TextTable::Alignment;

/// The values of an option that may repeat.
std::vector<std::string> valuesOf(const CommandLine& line, std::string_view option) {
  std::vector<std::string> values;
  std::string rest = line.value(option).value_or("");
  while (!rest.empty()) {
    const std::size_t end = rest.find('\n');
    values.push_back(rest.substr(0, end));
    rest = end == std::string::npos ? "" : rest.substr(end + 1);
  }
  return values;
}

int wholeNumberOf(const std::string& text, std::size_t digits, const std::string& wanted) {
  if (text.size() != digits || text.find_first_not_of("0123456789") != std::string::npos) {
    throw UsageError("“" + text + "” is not " + wanted + ".");
  }
  return std::stoi(text);
}

TaxYearQuestion taxQuestionOf(const CommandLine& line, const Calendar& calendar) {
  const int year = wholeNumberOf(line.required("--year"), 4, "a year such as 2024");
  const std::string start = line.value("--year-start").value_or("01-01");
  const std::string wanted = "a day such as 04-06";
  if (start.size() != 5 || start[2] != '-') {
    throw UsageError("“" + start + "” is not " + wanted + ".");
  }
  const int month = wholeNumberOf(start.substr(0, 2), 2, wanted);
  const int day = wholeNumberOf(start.substr(3), 2, wanted);
  if (year < 1 || month < 1 || month > 12 || day < 1 || day > daysInMonth(2001, month)) {
    throw UsageError("“" + start + "” is not " + wanted + ".");
  }
  TaxYearQuestion question{{year, month, day},
                           daysAfter({year + 1, month, day}, -1),
                           YearMonthDay::of(Date::now(), calendar)};
  question.person = line.value("--person").value_or("");
  question.byTradeDate = line.has("--trade-dates");
  question.deniesSuperficialLosses = !line.has("--no-superficial");
  return question;
}

/// The portfolios of the workspace with the roles that the options give them; else the user's.
std::vector<TaxedPortfolio> taxedPortfolios(const CommandLine& line,
                                            const WorkspaceFile& workspace) {
  std::map<std::string, std::pair<TaxRole, std::string>> roles;
  for (const std::string& name : valuesOf(line, "--registered")) {
    roles[name] = {TaxRole::registered, ""};
  }
  for (const std::string& name : valuesOf(line, "--not-mine")) {
    roles[name] = {TaxRole::notMine, ""};
  }
  for (const std::string& text : valuesOf(line, "--affiliated")) {
    const std::size_t equals = text.rfind('=');
    if (equals == std::string::npos || equals + 1 == text.size()) {
      throw UsageError("“" + text + "” does not say whose portfolio it is, as in Joint=Kim.");
    }
    roles[text.substr(0, equals)] = {TaxRole::affiliated, text.substr(equals + 1)};
  }
  for (const auto& [name, role] : roles) {
    (void)workspace.portfolio(name);
  }
  std::vector<TaxedPortfolio> taxed;
  for (const PortfolioPointer& portfolio : workspace.manager()->portfolios()) {
    requireRows(portfolio);
    const auto role = roles.find(portfolio->name);
    taxed.push_back(role == roles.end()
                        ? TaxedPortfolio{portfolio}
                        : TaxedPortfolio{portfolio, role->second.first, role->second.second});
  }
  return taxed;
}

ReportTable disposalsTable(const TaxYear& year) {
  ReportTable table({{"Settlement"},
                     {"Trade Date"},
                     {"Portfolio"},
                     {"Symbol"},
                     {"Shares", right},
                     {"Proceeds", right},
                     {"Currency"},
                     {"Rate", right},
                     {"In Primary", right},
                     {"Cost Base", right},
                     {"Ledger Gain", right},
                     {"Denied", right},
                     {"Added To"},
                     {"Tax Gain", right},
                     {"Note"}});
  for (const TaxYear::Disposal& line : year.disposals) {
    const Currency& primary = line.place.portfolio->primaryCurrency();
    const auto money = [&](const Decimal& amount) { return moneyText(amount, primary); };
    table.add({isoText(line.place.settlement), isoText(line.place.trade),
               line.place.portfolio->name, line.place.equity->symbol, line.shares.description(),
               moneyText(line.proceeds.amount, line.proceeds.currency),
               std::string(line.proceeds.currency.code),
               rounded(line.rate, 6, RoundingMode::bankers).description(), money(line.equivalent),
               money(line.tax.costDisposed),
               line.ledgerGain ? money(*line.ledgerGain) : std::string(noFigure),
               money(line.tax.superficial.denied), line.addedTo, money(line.tax.taxGain),
               line.note});
  }
  return table;
}

ReportTable totalsTable(const TaxYear& year) {
  ReportTable table({{"Symbol"},
                     {"Currency"},
                     {"Proceeds", right},
                     {"Cost Base", right},
                     {"Gains", right},
                     {"Losses", right},
                     {"Denied", right},
                     {"Net", right}});
  for (const TaxYear::Totals& line : year.totals) {
    const auto money = [&](const Decimal& amount) { return moneyText(amount, line.currency); };
    table.add({line.equity == nullptr ? "Total" : line.equity->symbol,
               std::string(line.currency.code), money(line.proceeds), money(line.costBase),
               money(line.gains), money(line.losses), money(line.denied), money(line.net())});
  }
  if (year.totals.empty()) {
    table.add({"Total", "", "0.00", "0.00", "0.00", "0.00", "0.00", "0.00"});
  }
  return table;
}

std::string kindText(TransactionType kind) {
  switch (kind) {
    case TransactionType::dividend:
      return "dividend";
    case TransactionType::capitalGainsDividend:
      return "capital gains dividend";
    case TransactionType::reinvestedDistribution:
      return "reinvested distribution";
    default:
      return "return of capital";
  }
}

ReportTable taxIncomeTable(const TaxYear& year) {
  ReportTable table(
      {{"Symbol"}, {"Kind"}, {"Amount", right}, {"Currency"}, {"Equivalent", right}, {"Primary"}});
  std::map<std::pair<std::string, std::string>, std::pair<Currency, Decimal>> sums;
  for (const TaxYear::Income& line : year.income) {
    const Currency& primary = line.equivalent.currency;
    table.add({line.equity->symbol, kindText(line.kind),
               moneyText(line.amount.amount, line.amount.currency),
               std::string(line.amount.currency.code), moneyText(line.equivalent.amount, primary),
               std::string(primary.code)});
    auto& [currency, sum] = sums[{kindText(line.kind), std::string(primary.code)}];
    currency = primary;
    sum += line.equivalent.amount;
  }
  for (const auto& [key, sum] : sums) {
    table.add({"Total", key.first, "", "", moneyText(sum.second, sum.first), key.second});
  }
  for (const CurrencyAmount& adjustment : year.adjustments) {
    table.add({"", "fees and adjustments", moneyText(adjustment.amount, adjustment.currency),
               std::string(adjustment.currency.code), "", ""});
  }
  return table;
}

ReportTable checkTable(const TaxYear& year) {
  ReportTable table({{"Settlement"}, {"Portfolio"}, {"Row", right}, {"Symbol"}, {"To Check"}});
  const auto add = [&](const TaxRowPlace& place, const std::string& what) {
    table.add({isoText(place.settlement), place.portfolio->name, std::to_string(place.position + 1),
               place.equity->symbol, what});
  };
  for (const TaxYear::DeemedGain& deemed : year.deemedGains) {
    add(deemed.place, "a deemed gain of " +
                          moneyText(deemed.amount, deemed.place.portfolio->primaryCurrency()) +
                          ": the return of capital was more than the cost base");
  }
  for (const TaxYear::ToCheck& check : year.toCheck) {
    add(check.place, check.reason);
  }
  return table;
}

ReportTable costsTable(const TaxYear& year) {
  ReportTable table(
      {{"Symbol"}, {"Shares at End", right}, {"Cost Base at End", right}, {"Currency"}});
  for (const TaxYear::CostAtEnd& cost : year.costs) {
    table.add({cost.equity->symbol, cost.pool.shares.description(),
               moneyText(cost.pool.cost, cost.currency), std::string(cost.currency.code)});
  }
  return table;
}

void writeTaxYear(const CommandLine& line, const Console& console) {
  const std::string section = line.value("--section").value_or("");
  const std::map<std::string, ReportTable (*)(const TaxYear&)> sections = {
      {"disposals", &disposalsTable},
      {"totals", &totalsTable},
      {"income", &taxIncomeTable},
      {"check", &checkTable}};
  if (!section.empty() && !sections.contains(section)) {
    throw UsageError("--section is none of disposals, totals, income and check.");
  }
  const WorkspaceFile workspace(line.word(0), console);
  const Calendar& calendar = workspace.manager()->calendar;
  const TaxYearQuestion question = taxQuestionOf(line, calendar);
  const std::vector<TaxedPortfolio> portfolios = taxedPortfolios(line, workspace);
  if (!question.person.empty() &&
      std::ranges::find(portfolios, question.person, &TaxedPortfolio::person) == portfolios.end()) {
    throw UsageError("No portfolio is that of “" + question.person + "” (--affiliated).");
  }
  const TaxYear year = taxYear(portfolios, question, calendar);
  if (line.has("--csv")) {
    sections.at(section.empty() ? "disposals" : section)(year).writeCSV(console.out);
    return;
  }
  if (!section.empty()) {
    sections.at(section)(year).writeText(console.out);
    return;
  }
  console.out << isoText(question.first) << " to " << isoText(question.last)
              << (question.byTradeDate ? ", by trade date" : ", by settlement") << "\n\n";
  if (year.disposals.empty()) {
    console.out << "No disposals in " << line.required("--year") << ".\n";
  } else {
    disposalsTable(year).writeText(console.out);
  }
  for (const ReportTable& table :
       {totalsTable(year), taxIncomeTable(year), checkTable(year), costsTable(year)}) {
    if (!table.isEmpty()) {
      console.out << '\n';
      table.writeText(console.out);
    }
  }
  console.out << "\nSuperficial losses are a hint after the tax office's letters 2021-0896031C6 "
                 "and 2022-0940941C6,\nwhich are practice and not law. This is no tax advice.\n";
}

}  // namespace

Command taxCommand() {
  return {
      .name = "tax",
      .summary = "Shows the disposals, the income and the cost bases of a tax year.",
      .words = {"WORKSPACE"},
      .options = {{"--year", "YEAR", "the year in which the tax year starts", true},
                  {"--year-start", "MM-DD", "its first day, such as 04-06; else 01-01"},
                  {"--person", "NAME", "whose year; else your own"},
                  {"--trade-dates", "", "counts by trade dates; else by settlement"},
                  {"--section", "NAME", "disposals, totals, income or check alone"},
                  {"--registered", "PORTFOLIO", "is a registered account", false, true},
                  {"--affiliated", "PORTFOLIO=PERSON", "is that of somebody affiliated", false,
                   true},
                  {"--not-mine", "PORTFOLIO", "plays no part", false, true},
                  {"--no-superficial", "", "denies no superficial losses"},
                  {"--csv", "", "writes the section as text with commas, for programs"}},
      .explanation =
          "The cost of shares is averaged over all portfolios of a person with one primary "
          "currency, while\nthe ledger averages each portfolio by itself; both gains are shown. A "
          "loss is denied as far as\nthe same shares were bought in the 30 days before and after "
          "the sale, by you, a registered\naccount or somebody affiliated, and are held at the "
          "end of them. Rates are those entered with\nthe transactions, and income is net of what "
          "was withheld. This is no tax advice.\n",
      .run = &writeTaxYear};
}

}  // namespace corvane::cli
