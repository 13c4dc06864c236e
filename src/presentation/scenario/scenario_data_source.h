// What the two scenario screens show, as a table and as a chart: the base of both sources.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/market/equity_info.h"
#include "core/market/quote.h"
#include "core/money/decimal_number_formatter.h"
#include "core/strategy/investment_strategy.h"
#include "presentation/charts/fiscal_chart_view.h"
#include "presentation/controls/table_model.h"
#include "presentation/scenario/scenario_text.h"

namespace corvane {

/// Runs a strategy in the background and shows what came of it. The base runs and shows nothing.
///
/// What a run reads is frozen when it begins. A run that is superseded, by another one or by
/// reset(), tells nobody any more, and nobody waits for it. Main queue only; completions run there,
/// never before beginAnalysis() has returned.
class ScenarioDataSource : public TableModel {
 public:
  /// A column of the table. Widths are in device-independent pixels.
  struct ColumnSpec {
    std::string_view ident;
    std::string_view title;
    bool isNumeric = false;
    int width = 0;
    int minWidth = 0;
    int maxWidth = 0;
  };
  /// A column with what stands in it, for rows that are told by a `Row`.
  template <typename Row>
  struct ColumnSpecOf {
    ColumnSpec column;
    AttributedText (*cell)(const Row&);
  };
  /// Told the error of the run; null for success.
  using Completion = std::function<void(ErrorPointer)>;

  explicit ScenarioDataSource(std::vector<ColumnSpec> columns);
  /// Of a table of columns that are known when the program is compiled.
  template <typename Row, std::size_t count>
  explicit ScenarioDataSource(const std::array<ColumnSpecOf<Row>, count>& table)
      : ScenarioDataSource(specsOf(table)) {}
  ScenarioDataSource(const ScenarioDataSource&) = delete;
  ScenarioDataSource& operator=(const ScenarioDataSource&) = delete;

  [[nodiscard]] const std::vector<ColumnSpec>& tableColumnSpecs() const {
    return tableColumnSpecs_;
  }

  /// For cells of money, which read "—" without it.
  std::optional<DecimalNumberFormatter> currencyFormatter;
  /// What the last run came to, in a sentence.
  std::optional<AttributedText> summaryString;

  /// Runs `strategy` over `quotes`, which are in time order, with `initialInvestment` to start
  /// with.
  virtual void beginAnalysis(const EquityPointer& equity, std::vector<Quote> quotes,
                             const Decimal& initialInvestment, const InvestmentStrategy& strategy,
                             Completion completion);
  /// Whether a run has begun and not ended.
  [[nodiscard]] virtual bool isAnalyzing() const { return false; }
  /// Gives up the run; what it has brought so far stays, with a summary that says so. No completion
  /// runs. Does nothing where nothing runs.
  virtual void cancel() {}
  /// Gives up the run and forgets what there is. Never waits for work that goes on.
  virtual void reset() {}

  [[nodiscard]] const std::vector<TableColumn>& columns() const override { return columns_; }
  [[nodiscard]] std::size_t numberOfRows() const override { return 0; }
  [[nodiscard]] AttributedText cell(std::size_t row, std::size_t column) const override;
  /// The text of the cell in a row and the column `ident`; "—" in a column that there is not. The
  /// base has no values at all.
  [[nodiscard]] virtual std::optional<AttributedText> cellValue(std::string_view ident,
                                                                std::size_t row) const;

  /// Sets up axes and texts of `chart`, which must not outlive this, for returns.
  virtual void configureChart(FiscalChartView& chart) const;
  /// Fills `chart` with what there is now.
  virtual void updateChart(FiscalChartView& chart) const;

  /// From an index of the chart to a row of the table, and back; none where there is none.
  [[nodiscard]] virtual std::optional<std::size_t> rowForChartIndex(std::size_t index) const;
  [[nodiscard]] virtual std::optional<std::size_t> chartIndexForRow(std::size_t row) const;

  /// The label of a return on an axis.
  [[nodiscard]] static std::string stringForValue(double value);

 protected:
  /// The text of the cell of `row` in the column `ident` of `table`; "—" where it has no such
  /// column.
  template <typename Row, std::size_t count>
  [[nodiscard]] static AttributedText cellOf(const std::array<ColumnSpecOf<Row>, count>& table,
                                             std::string_view ident, const Row& row) {
    const auto column = std::ranges::find(
        table, ident, [](const ColumnSpecOf<Row>& each) { return each.column.ident; });
    return column == table.end() ? AttributedText(std::string(absentValue)) : column->cell(row);
  }

 private:
  template <typename Row, std::size_t count>
  [[nodiscard]] static std::vector<ColumnSpec> specsOf(
      const std::array<ColumnSpecOf<Row>, count>& table) {
    std::vector<ColumnSpec> columns;
    for (const ColumnSpecOf<Row>& each : table) {
      columns.push_back(each.column);
    }
    return columns;
  }

  const std::vector<ColumnSpec> tableColumnSpecs_;
  std::vector<TableColumn> columns_;
};

}  // namespace corvane
