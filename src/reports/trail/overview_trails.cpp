#include "reports/trail/overview_trails.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "reports/trail/heading_trails.h"

namespace corvane {
namespace {

using OverviewLine = PortfoliosOverview::HoldingLine;

std::string codeOf(const Currency& currency) {
  return std::string(currency.code);
}

/// `trailOf(portfolio)` of each, added up; that of a single one as it is.
template <typename TrailOf>
TrailNode ofPortfolios(const std::string& label, std::span<const PortfolioPointer> portfolios,
                       const Currency& currency, TrailOf trailOf) {
  std::vector<TrailNode> parts;
  for (const PortfolioPointer& portfolio : portfolios) {
    TrailNode& part = parts.emplace_back(trailOf(*portfolio));
    part.label = "“" + portfolio->name + "”";
  }
  if (parts.size() == 1) {
    parts.front().label = label;
    return std::move(parts.front());
  }
  return sumOf(label, codeOf(currency), std::move(parts));
}

/// What of `line` is held, in all portfolios or in the one given.
TrailNode heldTrail(const OverviewLine& line, const PortfolioPointer& portfolio) {
  const std::string label = line.equity == nullptr ? "Cash" : "Shares";
  const std::string unit = line.equity == nullptr ? codeOf(line.currency) : "";
  std::vector<TrailNode> parts;
  for (const auto& [holder, held] : line.parts) {
    if (portfolio == nullptr || holder == portfolio) {
      parts.push_back({.label = label,
                       .value = held,
                       .unit = unit,
                       .source = "the ledger of “" + holder->name + "”"});
    }
  }
  return parts.size() == 1 ? std::move(parts.front()) : sumOf(label, unit, std::move(parts));
}

/// The product of `factors`, which are in the currency of `line`, in that of the overview.
TrailNode atLatestRate(std::string label, std::vector<TrailNode> factors,
                       const PortfoliosOverview& overview, const OverviewLine& line,
                       QuoteProvider& quotes) {
  const std::string unit = codeOf(overview.currency);
  if (line.currency != overview.currency) {
    const std::string code = codeOf(line.currency);
    factors.push_back(latestQuote("Rate of " + code, "", "latest rate of " + code + " in " + unit,
                                  *quotes.exchangeRateEquity(line.currency, overview.currency)));
  }
  return productOf(std::move(label), unit, std::move(factors));
}

TrailNode priceOf(const EquityInfo& equity) {
  return latestQuote("Price", codeOf(equity.currency), "latest price of " + equity.symbol, equity);
}

}  // namespace

TrailNode worthTrail(std::span<const PortfolioPointer> portfolios, const Currency& currency) {
  return ofPortfolios("Total value", portfolios, currency,
                      [&](Portfolio& portfolio) { return valueTrail(portfolio, currency); });
}

TrailNode netDepositsTrail(std::span<const PortfolioPointer> portfolios, const Currency& currency) {
  return ofPortfolios("Net deposits", portfolios, currency, [&](Portfolio& portfolio) {
    return depositsTrail(portfolio, nullptr, currency);
  });
}

TrailNode totalGainTrail(std::span<const PortfolioPointer> portfolios, const Currency& currency) {
  return differenceOf("Total gain", codeOf(currency),
                      {worthTrail(portfolios, currency), netDepositsTrail(portfolios, currency)});
}

TrailNode dayChangeTrail(const PortfoliosOverview& overview, QuoteProvider& quotes,
                         const PortfolioPointer& portfolio) {
  std::vector<TrailNode> parts;
  for (const OverviewLine& line : overview.holdings) {
    const auto isHeld = [&](const OverviewLine::Part& part) {
      return portfolio == nullptr || part.portfolio == portfolio;
    };
    if (line.change && std::ranges::any_of(line.parts, isHeld)) {
      parts.push_back(lineChangeTrail(overview, line, quotes, portfolio));
    }
  }
  return sumOf("Change of the session", codeOf(overview.currency), std::move(parts));
}

TrailNode lineTrail(const PortfoliosOverview& overview, const OverviewLine& line,
                    QuoteProvider& quotes) {
  std::vector<TrailNode> factors = {heldTrail(line, nullptr)};
  if (line.equity != nullptr) {
    factors.push_back(priceOf(*line.equity));
  }
  return atLatestRate(
      line.equity == nullptr ? "Cash in " + codeOf(line.currency) : line.equity->symbol,
      std::move(factors), overview, line, quotes);
}

TrailNode lineChangeTrail(const PortfoliosOverview& overview, const OverviewLine& line,
                          QuoteProvider& quotes, const PortfolioPointer& portfolio) {
  const EquityInfo& equity = *line.equity;
  TrailNode before{.label = "Close before",
                   .value = equity.previousClosePrice.value_or(Decimal::nan()),
                   .unit = codeOf(equity.currency),
                   .source = "previous close of " + equity.symbol};
  TrailNode moved = differenceOf("Price less close before", codeOf(equity.currency),
                                 {priceOf(equity), std::move(before)});
  return atLatestRate(equity.symbol, {heldTrail(line, portfolio), std::move(moved)}, overview, line,
                      quotes);
}

}  // namespace corvane
