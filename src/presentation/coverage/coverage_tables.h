// What the view of coverage lists: its tables and its figures.
#pragma once

#include <vector>

#include "presentation/coverage/coverage_view_controller.h"

namespace corvane {

/// The identifier of the column that a view draws as a bar; its text tells the same.
inline constexpr std::string_view coverageBarColumn = "held";

[[nodiscard]] std::vector<RecordTable<CoverageLine>::Column> coverageColumns();
[[nodiscard]] std::vector<RecordTable<PriceCoverage::Stretch>::Column> stretchColumns();

/// The figures in one row; none without lines.
[[nodiscard]] std::vector<ReportFigure> coverageFigures(const std::vector<CoverageLine>& lines);

/// The colour in which days of `state` are drawn; each has a height of its own as well.
[[nodiscard]] Colour colourOf(PriceCoverage::State state);

}  // namespace corvane
