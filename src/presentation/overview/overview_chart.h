// The chart of all portfolios: what each was worth on each day, on top of the others.
#pragma once

#include <memory>
#include <string>

#include "presentation/charts/fiscal_chart_view.h"
#include "reports/overview/overview_history.h"

namespace corvane {

/// Draws a band for each portfolio of `history`, and the line of net deposits where it is known.
/// Where there is nothing to draw, `otherwise` stands in its place, or what is the matter.
void drawOverview(FiscalChartView& chart, const std::shared_ptr<const OverviewHistory>& history,
                  const std::string& otherwise);

}  // namespace corvane
