#include "cli/commands/tax_question.h"

#include <algorithm>
#include <map>
#include <tuple>

namespace corvane::cli {
namespace {

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

TaxCountry countryOf(const CommandLine& line, TaxCountry stored) {
  if (line.has("--no-superficial")) {
    return TaxCountry::none;
  }
  const auto word = line.value("--country");
  if (!word) {
    return stored;
  }
  const auto country = taxCountryNamed(*word);
  if (!country) {
    throw UsageError("“" + *word + "” is none of none, canada and unitedKingdom.");
  }
  return *country;
}

}  // namespace

int wholeNumberOf(const std::string& text, std::size_t digits, const std::string& wanted) {
  if (text.size() != digits || text.find_first_not_of("0123456789") != std::string::npos) {
    throw UsageError("“" + text + "” is not " + wanted + ".");
  }
  return std::stoi(text);
}

TaxYearQuestion taxQuestion(const CommandLine& line, TaxSettings settings,
                            const Calendar& calendar) {
  if (const auto text = line.value("--year-start")) {
    const auto start = dayOfEveryYear(*text);
    if (!start) {
      throw UsageError("“" + *text + "” is not a day such as 04-06.");
    }
    std::tie(settings.startMonth, settings.startDay) = *start;
  }
  settings.country = countryOf(line, settings.country);
  settings.byTradeDate |= line.has("--trade-dates");
  const YearMonthDay today = YearMonthDay::of(Date::now(), calendar);
  const auto text = line.value("--year");
  const int year = text ? wholeNumberOf(*text, 4, "a year such as 2024") : settings.yearOf(today);
  if (year < 1) {
    throw UsageError("“" + *text + "” is not a year such as 2024.");
  }
  TaxYearQuestion question = taxYearQuestion(settings, year, today);
  question.person = line.value("--person").value_or("");
  return question;
}

std::vector<TaxedPortfolio> portfoliosWithRoles(const CommandLine& line,
                                                const WorkspaceFile& workspace) {
  std::map<std::string, PortfolioTaxRole> roles;
  for (const std::string& name : valuesOf(line, "--registered")) {
    roles[name] = {TaxRole::registered};
  }
  for (const std::string& name : valuesOf(line, "--not-mine")) {
    roles[name] = {TaxRole::notMine};
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
  const auto& portfolios = workspace.manager()->portfolios();
  std::ranges::for_each(portfolios, requireRows);
  const auto& model = workspace.document()->model();
  return taxedPortfolios(portfolios, [&](const PortfolioPointer& portfolio) {
    const auto role = roles.find(portfolio->name);
    return role == roles.end() ? model->taxRoleOf(portfolio) : std::optional(role->second);
  });
}

}  // namespace corvane::cli
