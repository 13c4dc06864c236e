#include "presentation/scenario/scenario_data_source.h"

#include <utility>

namespace corvane {
namespace {

constexpr double labelSteps = 10'000;  // a hundredth of a percent

}  // namespace

ScenarioDataSource::ScenarioDataSource(std::vector<ColumnSpec> columns)
    : tableColumnSpecs_(std::move(columns)) {
  for (const ColumnSpec& column : tableColumnSpecs_) {
    columns_.push_back(
        {.identifier = column.ident, .title = column.title, .isNumeric = column.isNumeric});
  }
}

// Those derived from it keep what they are given.
// NOLINTBEGIN(performance-unnecessary-value-param)
void ScenarioDataSource::beginAnalysis(const EquityPointer& /*equity*/,
                                       std::vector<Quote> /*quotes*/,
                                       const Decimal& /*initialInvestment*/,
                                       const InvestmentStrategy& /*strategy*/,
                                       Completion /*completion*/) {}
// NOLINTEND(performance-unnecessary-value-param)

AttributedText ScenarioDataSource::cell(std::size_t row, std::size_t column) const {
  return cellValue(tableColumnSpecs_.at(column).ident, row).value_or(AttributedText());
}

std::optional<AttributedText> ScenarioDataSource::cellValue(std::string_view /*ident*/,
                                                            std::size_t /*row*/) const {
  return std::nullopt;
}

void ScenarioDataSource::configureChart(FiscalChartView& chart) const {
  // Both scales are the same; the one on the right is for the recent end.
  const auto axis =
      std::make_shared<TextAxisRenderer>(&ScenarioDataSource::stringForValue, 1 / labelSteps);
  chart.leftAxisRenderer = axis;
  chart.rightAxisRenderer = axis;
  chart.valueText = &ScenarioDataSource::stringForValue;
}

void ScenarioDataSource::updateChart(FiscalChartView& chart) const {
  chart.changeHandler();
}

std::optional<std::size_t> ScenarioDataSource::rowForChartIndex(std::size_t index) const {
  return index;
}

std::optional<std::size_t> ScenarioDataSource::chartIndexForRow(std::size_t row) const {
  return row;
}

std::string ScenarioDataSource::stringForValue(double value) {
  if (-1 < value * labelSteps && value * labelSteps < 1) {
    return "\u00A00.00%";
  }
  const Decimal number = Decimal::fromDouble(value);
  return returnText(number).value_or(number.description());
}

}  // namespace corvane
