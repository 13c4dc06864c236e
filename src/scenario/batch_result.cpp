#include "scenario/batch_result.h"

#include <algorithm>
#include <cassert>
#include <tuple>

namespace corvane {

BatchResultPointer batchResult(const ScenarioAnalyzer& analyzer,
                               const ScenarioAnalyzer::IndexRange& range,
                               const InvestmentStrategy& strategy,
                               const Decimal& initialInvestment) {
  assert(!range.isEmpty() && "a sub-period has at least one quote");
  const DateRange dates(analyzer.quotes[range.lower()].fromDate,
                        analyzer.quotes[range.upper() - 1].toDate);
  auto analysis = analyzer.analyze(range, strategy, initialInvestment);
  const auto held = analyzer.analyze(range, InvestmentStrategy::buyAndHold(), initialInvestment);
  const Decimal periodReturn = analysis.rateOfReturn();
  const Decimal annualizedReturn = analysis.annualizedReturn();
  return std::make_shared<const BatchResult>(
      BatchResult{.dateRange = dates,
                  .analysis = std::move(analysis),
                  .buyAndHoldReturn = held.rateOfReturn(),
                  .strategyPeriodReturn = periodReturn,
                  .strategyAnnualizedReturn = annualizedReturn});
}

void sortByPeriod(std::vector<BatchResultPointer>& results) {
  std::ranges::sort(results, {}, [](const BatchResultPointer& result) {
    return std::tuple(result->dateRange.lower(), result->dateRange.upper());
  });
}

ReturnSpan returnSpan(const std::vector<BatchResultPointer>& results) {
  ReturnSpan span;
  for (const BatchResultPointer& result : results) {
    const Decimal& found = result->strategyPeriodReturn;
    if (found.isNaN()) {
      continue;
    }
    span.least = span.least.isNaN() ? found : std::min(span.least, found);
    span.greatest = span.greatest.isNaN() ? found : std::max(span.greatest, found);
  }
  return span;
}

}  // namespace corvane
