// What came of one sub-period of a batch.
#pragma once

#include <memory>
#include <vector>

#include "platform/time/date.h"
#include "scenario/scenario_analyzer.h"

namespace corvane {

/// Returns are gains for each unit invested, as ScenarioAnalyzer::Analysis tells them; NaN where
/// nothing was invested or, annualized, where there was no session.
struct BatchResult {
  DateRange dateRange;  ///< from the start of the first quote to the end of the last one
  ScenarioAnalyzer::Analysis analysis;  ///< the run of the strategy
  Decimal buyAndHoldReturn;             ///< of holding over the same quotes with the same money
  Decimal strategyPeriodReturn;
  Decimal strategyAnnualizedReturn;
};

/// Several may hold one, since the runs behind it are large.
using BatchResultPointer = std::shared_ptr<const BatchResult>;

/// Runs `strategy`, and buying and holding, over the quotes of `range`, which is not empty. Any
/// thread. Throws what ScenarioAnalyzer::analyze throws.
[[nodiscard]] BatchResultPointer batchResult(const ScenarioAnalyzer& analyzer,
                                             const ScenarioAnalyzer::IndexRange& range,
                                             const InvestmentStrategy& strategy,
                                             const Decimal& initialInvestment);

/// The order in which results are shown: by start, then by end.
void sortByPeriod(std::vector<BatchResultPointer>& results);

/// The least and the greatest strategyPeriodReturn.
struct ReturnSpan {
  Decimal least = Decimal::nan();
  Decimal greatest = Decimal::nan();
};

/// Of `results`; NaN for both where no result has a return.
[[nodiscard]] ReturnSpan returnSpan(const std::vector<BatchResultPointer>& results);

}  // namespace corvane
