#include "presentation/scenario/scenario_heat_map.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "core/money/decimal_number_formatter.h"
#include "presentation/scenario/scenario_data_source.h"
#include "presentation/scenario/scenario_text.h"

namespace corvane {
namespace {

/// In hundredths of a percent: from what is traded on every day to what is traded once in a while.
constexpr std::array triedSpreads = {50, 100, 200, 300, 500, 750, 1000, 1500, 2000};
/// In percent of the holding.
constexpr std::array triedSlices = {10, 20, 30, 40, 50, 60, 70, 80, 100};
/// In percent of the initial investment; the last one stands for all the cash that there is.
constexpr std::array triedSums = {5, 10, 20, 30, 40, 50, 60, 80, 100};
constexpr double strongestColour = 0.55;  // further ones would hide the text
constexpr double fullDifference = 0.2;    // from buying and holding, beyond which none is stronger

std::vector<ScenarioHeatMap::Parameter> parametersOf(const InvestmentStrategy& strategy) {
  using enum ScenarioHeatMap::Parameter::Kind;
  using Strategy = InvestmentStrategy;
  std::vector<ScenarioHeatMap::Parameter> parameters = {
      {"Buy when down by", &Strategy::targetBuySpread, spread},
      {"Sell when up by", &Strategy::targetSellSpread, spread},
      {"Spend at most", &Strategy::targetBuyMax, money},
      {"Part to sell", &Strategy::targetSellSlice, slice}};
  if (strategy.isStopLossActive) {
    parameters.push_back({"Stop loss: sell when down by", &Strategy::stopLossSellSpread, spread});
    parameters.push_back({"Stop loss: part to sell", &Strategy::stopLossSellSlice, slice});
    parameters.push_back({"Stop loss: buy when up by", &Strategy::stopLossBuySpread, spread});
    parameters.push_back({"Stop loss: spend at most", &Strategy::stopLossBuyMax, money});
  }
  return parameters;
}

std::string heatMapPercent(const Decimal& part) {
  DecimalNumberFormatter percent;
  percent.style = NumberFormatter::Style::percent;
  percent.minimumFractionDigits = 2;
  percent.maximumFractionDigits = 2;
  return percent.string(part).value_or("");
}

ChartDataSet lineOfReturns(std::string label, const Colour& colour) {
  return {.label = std::move(label), .colour = colour, .lineWidth = 2};
}

}  // namespace

ScenarioHeatMap::ScenarioHeatMap(std::shared_ptr<const ScenarioAnalyzer> analyzer,
                                 const InvestmentStrategy& strategy,
                                 const Decimal& initialInvestment)
    : analyzer_(std::move(analyzer)),
      strategy_(strategy),
      initialInvestment_(initialInvestment),
      parameters_(parametersOf(strategy)) {
  configureChart();
  begin();
}

void ScenarioHeatMap::begin() {
  const auto axis = [&](std::size_t parameter) {
    const Values values = triedValues(parameter);
    return StrategyGrid::Axis{parameters_.at(parameter).member, {values.begin(), values.end()}};
  };
  grid_.begin(
      {analyzer_, strategy_, initialInvestment_, axis(rowParameter_), axis(columnParameter_)},
      [this] {
        fillChart();
        changeHandler();
      },
      [this](const ErrorPointer& error) {
        fillChart();
        changeHandler();
        if (error != nullptr) {
          presentError(*error);
        }
      });
  fillChart();
  changeHandler();
}

ScenarioHeatMap::Values ScenarioHeatMap::triedValues(std::size_t parameter) const {
  Values values;
  switch (parameters_.at(parameter).kind) {
    case Parameter::Kind::spread:
      std::ranges::transform(triedSpreads, values.begin(), [](int hundredths) {
        return Decimal::fromParts(Sign::plus, -4, hundredths);
      });
      break;
    case Parameter::Kind::slice:
      std::ranges::transform(triedSlices, values.begin(), [](int percent) {
        return Decimal::fromParts(Sign::plus, -2, percent);
      });
      break;
    case Parameter::Kind::money:
      std::ranges::transform(triedSums, values.begin(), [&](int percent) {
        return roundedToMinorUnits(initialInvestment_ * Decimal(percent) / Decimal(100),
                                   analyzer_->equity->currency);
      });
      values.back() = Decimal::greatestFiniteMagnitude();
      break;
  }
  return values;
}

std::string ScenarioHeatMap::valueText(std::size_t parameter, std::size_t index) const {
  const Decimal value = triedValues(parameter).at(index);
  if (parameters_.at(parameter).kind != Parameter::Kind::money) {
    return heatMapPercent(value);
  }
  return value == Decimal::greatestFiniteMagnitude()
             ? "No limit"
             : DecimalNumberFormatter::money(analyzer_->equity->currency)
                   .string(value)
                   .value_or("");
}

std::string ScenarioHeatMap::rowTitle(std::size_t row) const {
  return valueText(rowParameter_, row);
}

std::string ScenarioHeatMap::columnTitle(std::size_t column) const {
  return valueText(columnParameter_, column);
}

std::string ScenarioHeatMap::valueTitle(std::size_t parameter, std::size_t index) const {
  return std::string(parameters_.at(parameter).title) + " " + valueText(parameter, index);
}

void ScenarioHeatMap::chooseRowParameter(std::size_t index) {
  if (index != rowParameter_ && index < parameters_.size()) {
    if (index == columnParameter_) {
      columnParameter_ = rowParameter_;
    }
    rowParameter_ = index;
    begin();
  }
}

void ScenarioHeatMap::chooseColumnParameter(std::size_t index) {
  if (index != columnParameter_ && index < parameters_.size()) {
    if (index == rowParameter_) {
      rowParameter_ = columnParameter_;
    }
    columnParameter_ = index;
    begin();
  }
}

bool ScenarioHeatMap::beatsHolding(std::size_t row, std::size_t column) const {
  const auto found = grid_.cell(row, column);
  const auto& held = grid_.buyAndHoldReturn();
  return found && held && !found->isNaN() && !held->isNaN() && *found > *held;
}

std::string ScenarioHeatMap::cellText(std::size_t row, std::size_t column) const {
  const auto found = grid_.cell(row, column);
  if (!found) {
    return "";
  }
  return returnText(*found).value_or("—") + (beatsHolding(row, column) ? " ▲" : "");
}

std::optional<Colour> ScenarioHeatMap::cellColour(std::size_t row, std::size_t column) const {
  const auto found = grid_.cell(row, column);
  const auto& held = grid_.buyAndHoldReturn();
  if (!found || !held || found->isNaN() || held->isNaN()) {
    return std::nullopt;
  }
  const double difference = found->doubleValue() - held->doubleValue();
  const double strength =
      strongestColour * std::min(1.0, std::sqrt(std::abs(difference) / fullDifference));
  return Colour(Colour::Name::controlBackground)
      .blended(strength, difference > 0 ? Colour::Name::systemGreen : Colour::Name::systemRed);
}

std::string ScenarioHeatMap::cellDescription(std::size_t row, std::size_t column) const {
  const auto found = grid_.cell(row, column);
  return valueTitle(rowParameter_, row) + ", " + valueTitle(columnParameter_, column) + ": " +
         (found ? returnText(*found).value_or("no return") : "not known yet") +
         (beatsHolding(row, column) ? ", more than buying and holding" : "");
}

void ScenarioHeatMap::configureChart() {
  const auto axis = std::make_shared<TextAxisRenderer>(&ScenarioDataSource::stringForValue, 0.0001);
  rowChart.leftAxisRenderer = axis;
  rowChart.rightAxisRenderer = nullptr;
  rowChart.valueText = &ScenarioDataSource::stringForValue;
  rowChart.keyText = [this](std::size_t index) {
    return index < numberOfColumns() ? columnTitle(index) : std::string();
  };
  rowChart.tooltipProvider = [this](std::size_t index) {
    return AttributedText(index < numberOfColumns() ? cellDescription(chartedRow_, index) : "");
  };
  rowChart.noDataText = "Replaying…";
}

void ScenarioHeatMap::fillChart() {
  rowChart.clear();
  const auto& held = grid_.buyAndHoldReturn();
  ChartDataSet returns = lineOfReturns("Strategy Return", Colour::Name::systemTeal);
  ChartDataSet holding = lineOfReturns("Buy & Hold Return", Colour::Name::black);
  holding.isDashed = true;
  for (std::size_t column = 0; column < numberOfColumns(); ++column) {
    const auto x = static_cast<double>(column);
    const auto found = grid_.cell(chartedRow_, column);
    if (found && !found->isNaN()) {
      returns.entries.push_back({x, found->doubleValue()});
    }
    if (held && !held->isNaN()) {
      holding.entries.push_back({x, held->doubleValue()});
    }
    rowChart.xAxisLimitLines.push_back(
        {.value = x, .label = columnTitle(column), .colour = Colour::Name::clear});
  }
  if (returns.entries.empty()) {
    rowChart.clear();
    return;
  }
  rowChart.prescribedOpeningValue = 0;
  rowChart.setNoninteractiveDataSets({std::move(holding)});
  rowChart.interactiveDataSet = std::move(returns);
  rowChart.keyTitle = parameters_.at(columnParameter_).title;
  rowChart.accessibleText = chartTitle() + ". " + noteText();
  rowChart.changeHandler();
}

void ScenarioHeatMap::chartRow(std::size_t row) {
  if (row != chartedRow_ && row < numberOfRows()) {
    chartedRow_ = row;
    fillChart();
    changeHandler();
  }
}

std::string ScenarioHeatMap::chartTitle() const {
  return valueTitle(rowParameter_, chartedRow_);
}

std::string ScenarioHeatMap::noteText() const {
  const auto& held = grid_.buyAndHoldReturn();
  if (grid_.isRunning() || !held) {
    return "Replaying…";
  }
  return "Buying and holding yields " + returnText(*held).value_or("?") + ". " +
         std::to_string(grid_.cellsAboveHolding()) + " of " +
         std::to_string(numberOfRows() * numberOfColumns()) +
         " combinations would have beaten it (▲). Whoever picks the best of many has picked what "
         "suited the past: past prices promise nothing.";
}

ProgressIndicator ScenarioHeatMap::progress() const {
  return {.maximum = static_cast<double>(grid_.totalCount()),
          .value = static_cast<double>(grid_.completedCount()),
          .isAnimated = grid_.isRunning()};
}

}  // namespace corvane
