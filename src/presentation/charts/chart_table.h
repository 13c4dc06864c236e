// The data of a chart as a table.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "presentation/charts/base_chart_view.h"
#include "presentation/controls/table_model.h"

namespace corvane {

/// One row for each x of the chart, one column for each series (two for one of candles), as they
/// were when this was made. Main queue only.
class ChartTable : public TableModel {
 public:
  explicit ChartTable(const BaseChartView& chart);

  [[nodiscard]] const std::vector<TableColumn>& columns() const override { return columns_; }
  [[nodiscard]] std::size_t numberOfRows() const override { return rows_.size(); }
  [[nodiscard]] AttributedText cell(std::size_t row, std::size_t column) const override;

  /// The table as UTF-8 text, with a row of titles: cells in double quotes, joined by commas, lines
  /// ended by CR LF, values as plain numbers with a point.
  [[nodiscard]] std::string csv() const;

 private:
  struct Row {
    std::string key;
    std::vector<std::optional<double>> values;
  };

  std::vector<std::string> titles_;
  std::vector<TableColumn> columns_;
  std::vector<Row> rows_;
  std::function<std::string(double)> valueText_;
};

}  // namespace corvane
