#include "cli/commands/report_output.h"

#include <algorithm>
#include <map>

#include "cli/console/price_source.h"

namespace corvane::cli {
std::string moneyText(const Decimal& amount, const Currency& currency) {
  std::string digits = roundedToMinorUnits(amount, currency).description();
  if (currency.minorUnits <= 0 || amount.isNaN()) {
    return digits;
  }
  const std::size_t point = digits.find('.');
  const std::size_t decimals = point == std::string::npos ? 0 : digits.size() - point - 1;
  digits += point == std::string::npos ? "." : "";
  const auto wanted = static_cast<std::size_t>(currency.minorUnits);
  return digits + std::string(decimals < wanted ? wanted - decimals : 0, '0');
}

std::string percentText(const std::optional<double>& value) {
  if (!value) {
    return std::string(noFigure);
  }
  // Two digits after the point, like money.
  return moneyText(Decimal::fromDouble(*value * 100), Currency::cad()) + " %";
}

void ReportTable::write(ListingFormat format, std::ostream& out) const {
  Listing listing(fields_);
  for (const auto& [cells, isTotal] : rows_) {
    if (format == ListingFormat::table) {
      listing.add(cells);
    } else if (!isTotal) {
      std::vector<std::string> data = cells;
      std::ranges::replace(data, std::string(noFigure), std::string());
      listing.add(std::move(data));
    }
  }
  listing.write(format, out);
}

std::vector<PortfolioPointer> portfoliosOf(const CommandLine& line,
                                           const WorkspaceFile& workspace) {
  if (const auto name = line.value("--portfolio")) {
    if (line.has("--all")) {
      throw UsageError("--portfolio and --all exclude each other.");
    }
    return {workspace.portfolio(*name)};
  }
  std::vector<PortfolioPointer> portfolios = workspace.manager()->portfolios();
  std::ranges::for_each(portfolios, requireRows);
  return portfolios;
}

std::vector<EquityPointer> equitiesOf(const std::vector<PortfolioPointer>& portfolios) {
  EquitySet equities;
  for (const PortfolioPointer& portfolio : portfolios) {
    for (const TransactionPointer& row : portfolio->transactions()) {
      if (const EquityPointer* equity = row->basic.equity()) {
        equities.insert(*equity);
      }
    }
  }
  return {equities.begin(), equities.end()};
}

EquityPointer equityNamed(const std::string& symbol, const std::vector<EquityPointer>& equities) {
  const auto found =
      std::ranges::find_if(equities, [&](const auto& equity) { return equity->symbol == symbol; });
  if (found == equities.end()) {
    throw UsageError("No transaction names the symbol “" + symbol + "”.");
  }
  return *found;
}

Currency commonCurrency(const std::vector<PortfolioPointer>& portfolios) {
  std::map<std::string, int> counts;
  Currency common = Currency::cad();
  int most = 0;
  for (const PortfolioPointer& portfolio : portfolios) {
    const int count = ++counts[std::string(portfolio->primaryCurrency().code)];
    if (count > most) {
      most = count;
      common = portfolio->primaryCurrency();
    }
  }
  return common;
}

void refreshHoldings(const PortfolioManager& manager, QuoteProvider& provider,
                     const Console& console) {
  // Only a refresh tells in which currency an equity is traded, and with it which rates are needed.
  EquitySet refreshed;
  for (bool hasMore = true; hasMore;) {
    std::vector<EquityPointer> wanted;
    for (const PortfolioPointer& portfolio : manager.portfolios()) {
      for (const EquityPointer& equity : manager.valuationEquities(portfolio)) {
        if (refreshed.insert(equity).second) {
          wanted.push_back(equity);
        }
      }
    }
    hasMore = !wanted.empty();
    refreshEquities(provider, wanted, console);
  }
}

}  // namespace corvane::cli
