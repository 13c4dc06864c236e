// Charts of returns: how an index has moved, and how far it stood below its peak.
#pragma once

#include <optional>

#include "presentation/charts/fiscal_chart_view.h"
#include "reports/returns/time_weighted_return.h"
#include "reports/returns/total_return_index.h"

namespace corvane {

/// A chart with rates on its axis and dates below. Main queue only.
class ReturnChartView final : public FiscalChartView {
 public:
  ReturnChartView();

 protected:
  /// By how much a return of `from` has grown to one of `to`, in percent.
  [[nodiscard]] AttributedText changeText(double from, double to) const override;
};

/// Draws the return since the first day, beside that of a benchmark called `benchmarkName` where
/// there is one. Empties the chart where nothing was measured.
void drawReturns(ReturnChartView& chart, const TimeWeightedReturn& returns,
                 const std::optional<BenchmarkReturn>& benchmark, const std::string& benchmarkName);

/// Draws how far the index stood below its highest point up to each day.
void drawDrawdowns(ReturnChartView& chart, const TimeWeightedReturn& returns);

}  // namespace corvane
