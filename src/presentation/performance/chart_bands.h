// Bands of a chart that stand on top of each other, as portfolios' charts have them.
#pragma once

#include <string_view>
#include <vector>

#include "presentation/charts/chart_data.h"

namespace corvane {

inline constexpr std::string_view netDepositsLabel = "Net Deposits";

/// Gives each of `bands`, from the bottom up, a colour and a fill that tell it from its neighbours.
void colourBands(std::vector<ChartDataSet>& bands);

/// The line of net deposits, which as yet has no entries.
[[nodiscard]] ChartDataSet netDepositsLine();

/// The legend of coloured `bands` from the top down, as the eye meets them, and then of the line.
[[nodiscard]] std::vector<ChartLegendEntry> legendOfBands(const std::vector<ChartDataSet>& bands,
                                                          bool hasNetDeposits);

}  // namespace corvane
