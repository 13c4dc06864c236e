// The ways of cutting a period into the sub-periods of a batch.
#pragma once

#include <array>
#include <string_view>
#include <vector>

#include "scenario/scenario_analyzer.h"

namespace corvane {

/// Day numbers tell days apart. The codes are kept in the user's settings.
enum class BatchMethod {
  eachDay = 0,                ///< every day by itself
  accumulatingFromStart = 1,  ///< the first day, the first two days, … up to the whole period
  accumulatingFromEnd = 2,    ///< the whole period, all but its first day, … down to the last day
};

inline constexpr std::array allBatchMethods = {
    BatchMethod::eachDay, BatchMethod::accumulatingFromStart, BatchMethod::accumulatingFromEnd};

/// "Each day in period", for people.
[[nodiscard]] std::string_view title(BatchMethod method);

/// The method with this code; eachDay where there is none.
[[nodiscard]] BatchMethod batchMethodWithCode(int code);

/// The ranges of quotes that `method` makes of days with these numbers, one number for each quote,
/// in time order: ascending by start, then by end. No range is empty, and no quotes make no ranges.
/// Under the two accumulating methods a day of number 0 at the end where they begin to look (the
/// last quote and the first one) opens no range; it is a day of 1970.
[[nodiscard]] std::vector<ScenarioAnalyzer::IndexRange> batchRanges(
    BatchMethod method, const std::vector<int>& dayNumbers);

}  // namespace corvane
