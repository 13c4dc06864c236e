// The returns of a strategy for many values of two of its numbers, as a map in colours.
#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/controls/form_controls.h"
#include "platform/error.h"
#include "platform/text/styled/colour.h"
#include "presentation/charts/fiscal_chart_view.h"
#include "scenario/strategy_grid.h"

namespace corvane {

/// A map over the quotes of one run of a scenario, and a chart of one of its rows. It begins at
/// once, and anew when another number is chosen. What beats buying and holding has a sign as well
/// as a colour. Main queue only.
class ScenarioHeatMap {
 public:
  /// A number of the strategy that may be varied.
  struct Parameter {
    /// What its values are: changes of the price, parts of the holding, sums of money.
    enum class Kind { spread, slice, money };

    std::string_view title;
    Decimal InvestmentStrategy::*member;
    Kind kind;
  };
  static constexpr std::size_t valuesPerParameter = 9;

  /// For the quotes of `analyzer`, which is of a frozen equity, and a `strategy` that is varied.
  ScenarioHeatMap(std::shared_ptr<const ScenarioAnalyzer> analyzer,
                  const InvestmentStrategy& strategy, const Decimal& initialInvestment);
  ScenarioHeatMap(const ScenarioHeatMap&) = delete;
  ScenarioHeatMap& operator=(const ScenarioHeatMap&) = delete;

  std::function<void()> changeHandler = [] {};
  /// Called where a run has failed; its cell is empty.
  std::function<void(const Error&)> presentError = [](const Error&) {};

  /// All numbers of the strategy; those of the stop loss only where it is active.
  [[nodiscard]] const std::vector<Parameter>& parameters() const { return parameters_; }
  /// Indexes of parameters() for rows and columns, which differ.
  [[nodiscard]] std::size_t rowParameter() const { return rowParameter_; }
  [[nodiscard]] std::size_t columnParameter() const { return columnParameter_; }
  /// Where the other one has the parameter, the two change places.
  void chooseRowParameter(std::size_t index);
  void chooseColumnParameter(std::size_t index);

  [[nodiscard]] static constexpr std::size_t numberOfRows() { return valuesPerParameter; }
  [[nodiscard]] static constexpr std::size_t numberOfColumns() { return valuesPerParameter; }
  /// "5.00%", "$300.00" or "No limit": the value that a row or a column stands for.
  [[nodiscard]] std::string rowTitle(std::size_t row) const;
  [[nodiscard]] std::string columnTitle(std::size_t column) const;
  /// "+3.20%", with a "▲" behind it where that beats buying and holding; empty until it is known.
  [[nodiscard]] std::string cellText(std::size_t row, std::size_t column) const;
  /// The stronger, the further from what buying and holding yields; none for no colour.
  [[nodiscard]] std::optional<Colour> cellColour(std::size_t row, std::size_t column) const;
  /// The cell in words.
  [[nodiscard]] std::string cellDescription(std::size_t row, std::size_t column) const;

  /// The returns of one row from column to column, with the line of buying and holding beside them;
  /// its data indexes are the columns.
  FiscalChartView rowChart;
  [[nodiscard]] std::size_t chartedRow() const { return chartedRow_; }
  void chartRow(std::size_t row);
  /// What the chart is of: "Buy when down by 5.00%".
  [[nodiscard]] std::string chartTitle() const;

  /// What buying and holding yields, how many cells beat it, and what that is worth.
  [[nodiscard]] std::string noteText() const;
  [[nodiscard]] ProgressIndicator progress() const;

 private:
  using Values = std::array<Decimal, valuesPerParameter>;

  void begin();
  [[nodiscard]] Values triedValues(std::size_t parameter) const;
  [[nodiscard]] std::string valueText(std::size_t parameter, std::size_t index) const;
  [[nodiscard]] std::string valueTitle(std::size_t parameter, std::size_t index) const;
  [[nodiscard]] bool beatsHolding(std::size_t row, std::size_t column) const;
  void configureChart();
  void fillChart();

  const std::shared_ptr<const ScenarioAnalyzer> analyzer_;
  const InvestmentStrategy strategy_;
  const Decimal initialInvestment_;
  const std::vector<Parameter> parameters_;
  std::size_t rowParameter_ = 0;
  std::size_t columnParameter_ = 1;
  std::size_t chartedRow_ = 0;
  StrategyGrid grid_;
};

}  // namespace corvane
