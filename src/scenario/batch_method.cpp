#include "scenario/batch_method.h"

#include <algorithm>

namespace corvane {
namespace {

using IndexRanges = std::vector<ScenarioAnalyzer::IndexRange>;

IndexRanges rangeOfEachDay(const std::vector<int>& dayNumbers) {
  IndexRanges ranges;
  for (std::size_t start = 0; start < dayNumbers.size();) {
    std::size_t end = start + 1;
    while (end < dayNumbers.size() && dayNumbers[end] == dayNumbers[start]) {
      ++end;
    }
    ranges.emplace_back(start, end);
    start = end;
  }
  return ranges;
}

IndexRanges growingRanges(const std::vector<int>& dayNumbers) {
  IndexRanges ranges;
  int seen = 0;
  for (std::size_t end = dayNumbers.size(); end > 0; --end) {
    if (dayNumbers[end - 1] != seen) {
      seen = dayNumbers[end - 1];
      ranges.emplace_back(0, end);
    }
  }
  std::ranges::reverse(ranges);
  return ranges;
}

IndexRanges shrinkingRanges(const std::vector<int>& dayNumbers) {
  IndexRanges ranges;
  int seen = 0;
  for (std::size_t start = 0; start < dayNumbers.size(); ++start) {
    if (dayNumbers[start] != seen) {
      seen = dayNumbers[start];
      ranges.emplace_back(start, dayNumbers.size());
    }
  }
  return ranges;
}

}  // namespace

std::string_view title(BatchMethod method) {
  switch (method) {
    case BatchMethod::eachDay:
      return "Each day in period";
    case BatchMethod::accumulatingFromStart:
      return "Accumulating daily from start";
    case BatchMethod::accumulatingFromEnd:
      return "Accumulating daily from end";
  }
  return "";
}

BatchMethod batchMethodWithCode(int code) {
  const auto found = std::ranges::find(allBatchMethods, code,
                                       [](BatchMethod method) { return static_cast<int>(method); });
  return found == allBatchMethods.end() ? BatchMethod::eachDay : *found;
}

IndexRanges batchRanges(BatchMethod method, const std::vector<int>& dayNumbers) {
  switch (method) {
    case BatchMethod::eachDay:
      return rangeOfEachDay(dayNumbers);
    case BatchMethod::accumulatingFromStart:
      return growingRanges(dayNumbers);
    case BatchMethod::accumulatingFromEnd:
      return shrinkingRanges(dayNumbers);
  }
  return {};
}

}  // namespace corvane
