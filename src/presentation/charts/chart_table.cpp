#include "presentation/charts/chart_table.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

#include "exchange/brokers/row_text.h"

namespace corvane {

ChartTable::ChartTable(const BaseChartView& chart) : valueText_(chart.valueText) {
  std::vector<std::pair<const ChartDataSet*, double ChartEntry::*>> series;
  titles_.push_back(chart.keyTitle);
  const auto add = [&](const ChartDataSet& dataSet) {
    if (dataSet.shape == ChartDataSet::Shape::candles) {
      series.emplace_back(&dataSet, &ChartEntry::y);
      series.emplace_back(&dataSet, &ChartEntry::base);
      titles_.insert(titles_.end(), {"High", "Low"});
    } else {
      series.emplace_back(&dataSet, &ChartEntry::y);
      titles_.push_back(dataSet.label);
    }
  };
  std::ranges::for_each(chart.noninteractiveDataSets(), add);
  if (chart.interactiveDataSet) {
    add(*chart.interactiveDataSet);
  }
  // Bars may stand a little beside the place that they belong to.
  std::map<std::size_t, std::vector<std::optional<double>>> byIndex;
  for (std::size_t column = 0; column < series.size(); ++column) {
    const auto& [dataSet, member] = series[column];
    for (const ChartEntry& entry : dataSet->entries) {
      const double x = dataSet->shape == ChartDataSet::Shape::bars ? std::round(entry.x) : entry.x;
      if (const auto index = chart.convertXFromGraphToDataIndex(x)) {
        auto& values = byIndex[*index];
        values.resize(series.size());
        values[column] = entry.*member;
      }
    }
  }
  rows_.reserve(byIndex.size());
  for (auto& [index, values] : byIndex) {
    rows_.push_back(
        {chart.keyText ? chart.keyText(index) : std::to_string(index + 1), std::move(values)});
  }
  for (const std::string& title : titles_) {
    columns_.push_back(
        {.identifier = title, .title = title, .isNumeric = &title != &titles_.front()});
  }
}

AttributedText ChartTable::cell(std::size_t row, std::size_t column) const {
  if (column == 0) {
    return AttributedText(rows_.at(row).key);
  }
  const auto value = rows_.at(row).values.at(column - 1);
  if (!value) {
    return {};
  }
  AttributedText text(valueText_ ? valueText_(*value) : Decimal::fromDouble(*value).description());
  text.alignment = TextAlignment::right;
  return text;
}

std::string ChartTable::csv() const {
  std::string text = rowText(titles_, ImportExportFieldDelimiter::comma);
  for (const Row& row : rows_) {
    std::vector<std::string> cells{row.key};
    for (const auto& value : row.values) {
      cells.push_back(value ? Decimal::fromDouble(*value).description() : "");
    }
    text += rowText(cells, ImportExportFieldDelimiter::comma);
  }
  return text;
}

}  // namespace corvane
