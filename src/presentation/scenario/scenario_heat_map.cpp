#include "presentation/scenario/scenario_heat_map.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "core/money/decimal_number_formatter.h"
#include "presentation/scenario/scenario_text.h"

namespace corvane {
namespace {

/// In hundredths of a percent: from what is traded on every day to what is traded once in a while.
constexpr std::array triedSpreads = {50, 100, 200, 300, 500, 750, 1000, 1500, 2000};
constexpr double strongestColour = 0.55;  // further ones would hide the text
constexpr double fullDifference = 0.2;    // from buying and holding, beyond which none is stronger

std::vector<Decimal> triedValues() {
  std::vector<Decimal> values;
  for (const int spread : triedSpreads) {
    values.push_back(Decimal::fromParts(Sign::plus, -4, spread));
  }
  return values;
}

std::vector<ScenarioHeatMap::Parameter> parametersOf(const InvestmentStrategy& strategy) {
  std::vector<ScenarioHeatMap::Parameter> parameters = {
      {"Buy when down by", &InvestmentStrategy::targetBuySpread},
      {"Sell when up by", &InvestmentStrategy::targetSellSpread}};
  if (strategy.isStopLossActive) {
    parameters.push_back({"Stop loss: sell when down by", &InvestmentStrategy::stopLossSellSpread});
    parameters.push_back({"Stop loss: buy when up by", &InvestmentStrategy::stopLossBuySpread});
  }
  return parameters;
}

}  // namespace

ScenarioHeatMap::ScenarioHeatMap(std::shared_ptr<const ScenarioAnalyzer> analyzer,
                                 const InvestmentStrategy& strategy,
                                 const Decimal& initialInvestment)
    : analyzer_(std::move(analyzer)),
      strategy_(strategy),
      initialInvestment_(initialInvestment),
      parameters_(parametersOf(strategy)) {
  begin();
}

void ScenarioHeatMap::begin() {
  const auto axis = [&](std::size_t parameter) {
    return StrategyGrid::Axis{parameters_.at(parameter).member, triedValues()};
  };
  grid_.begin(
      {analyzer_, strategy_, initialInvestment_, axis(rowParameter_), axis(columnParameter_)},
      [this] { changeHandler(); },
      [this](const ErrorPointer& error) {
        changeHandler();
        if (error != nullptr) {
          presentError(*error);
        }
      });
  changeHandler();
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

std::size_t ScenarioHeatMap::numberOfRows() {
  return triedSpreads.size();
}

std::string ScenarioHeatMap::valueTitle(std::size_t index) {
  DecimalNumberFormatter percent;
  percent.style = NumberFormatter::Style::percent;
  percent.minimumFractionDigits = 2;
  percent.maximumFractionDigits = 2;
  return percent.string(triedValues().at(index)).value_or("");
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
  const auto part = [&](std::size_t parameter, std::size_t index) {
    return std::string(parameters_.at(parameter).title) + " " + valueTitle(index);
  };
  return part(rowParameter_, row) + ", " + part(columnParameter_, column) + ": " +
         (found ? returnText(*found).value_or("no return") : "not known yet") +
         (beatsHolding(row, column) ? ", more than buying and holding" : "");
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
