#include "presentation/performance/portfolio_heading.h"

#include <optional>

#include "ledger/manager/portfolio_manager.h"
#include "presentation/text/formatting.h"

namespace corvane {
namespace {

const PortfolioSnapshot& newestSnapshot(const Portfolio& portfolio) {
  static const PortfolioSnapshot empty;
  const auto& years = portfolio.snapshotsByYear;
  return years.empty() ? empty : years.rbegin()->second;
}

/// Of all equities held the one whose price is the oldest; null where there are none.
EquityPointer stalestEquity(const PortfolioSnapshot& snapshot) {
  EquityPointer stalest;
  const auto dateOf = [](const EquityPointer& equity) {
    return equity->recentDate.value_or(Date::distantPast());
  };
  for (const auto& [equity, holding] : snapshot.equitySnapshots) {
    if (stalest == nullptr || dateOf(equity) < dateOf(stalest)) {
      stalest = equity;
    }
  }
  return stalest;
}

std::optional<PortfolioValuation> knownValuation(const PortfolioPointer& portfolio) {
  try {
    if (const auto manager = portfolio->manager.lock()) {
      return manager->valuation(portfolio);
    }
  } catch (const Error&) {
    // A price or a rate is not known: the heading says so.
  }
  return std::nullopt;
}

}  // namespace

PortfolioHeading portfolioHeading(const PortfolioPointer& portfolio, const UserDefaults& defaults) {
  PortfolioHeading heading{.name = portfolio->name, .value = "", .summary = {}};
  const PortfolioSnapshot& snapshot = newestSnapshot(*portfolio);
  if (snapshot.currencySnapshots.isEmpty()) {
    heading.value = "Empty portfolio";
    return heading;
  }
  const auto valuation = knownValuation(portfolio);
  if (!valuation) {
    heading.value = "⚠️";
    heading.summary = AttributedText("Current portfolio value is indeterminate");
    return heading;
  }
  heading.value = Formatting::currentValueText(*valuation);
  heading.summary = AttributedText("(").append(Formatting::gainText(*valuation)).append(")");
  const EquityPointer stalest = stalestEquity(snapshot);
  if (stalest != nullptr && stalest->recentDate) {
    heading.summary.append(
        " as of " +
        Formatting::equityDateFormatter(*stalest, defaults).string(*stalest->recentDate) + ".");
  }
  return heading;
}

}  // namespace corvane
