#include "reports/overview/overview_history.h"

#include <algorithm>
#include <utility>

#include "reports/overview/deposits_over_time.h"

namespace corvane {

OverviewHistory overviewHistory(std::span<const PortfolioPointer> portfolios,
                                const ValuationScope& scope, const MarketHistory& history,
                                const Calendar& calendar, const Currency& currency) {
  std::vector<PortfolioPointer> counted;
  std::vector<ValuationSeries> series;
  for (const PortfolioPointer& portfolio : portfolios) {
    const Currency& primary = portfolio->primaryCurrency();
    if (primary == currency || !scope.leftOutCurrencies.contains(primary)) {
      counted.push_back(portfolio);
      series.push_back(valuationSeries(*portfolio, scope, history, calendar));
    }
  }
  OverviewHistory made{.sum = combinedSeries(series, currency, history)};
  if (made.sum.days.empty()) {
    return made;
  }
  std::vector<std::vector<Decimal>> values = valuesInSum(series, made.sum, history);
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (!std::ranges::all_of(values[i], &Decimal::isZero)) {
      made.bands.push_back({counted[i]->name, std::move(values[i])});
    }
  }
  made.netDeposits = depositsOverTime(counted, made.sum.days, currency, history, calendar);
  made.timeWeighted = timeWeightedReturn(made.sum.days);
  return made;
}

}  // namespace corvane
