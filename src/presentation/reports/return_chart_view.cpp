#include "presentation/reports/return_chart_view.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "presentation/reports/report_text.h"
#include "presentation/text/formatting.h"

namespace corvane {
namespace {

constexpr double drawdownAlpha = 0.35;
constexpr double benchmarkWidth = 1.5;
constexpr double leastStepOfRates = 0.0001;

using MeasuredDays = std::vector<TimeWeightedReturn::Day>;

/// What `day` shows in the panel beside the pointer: the values of `series` at its place, and its
/// date.
std::function<AttributedText(std::size_t)> returnTooltips(std::vector<ChartDataSet> series,
                                                          std::vector<YearMonthDay> days) {
  return [series = std::move(series), days = std::move(days)](std::size_t index) {
    AttributedText text;
    if (index >= days.size()) {
      return text;
    }
    for (const ChartDataSet& set : series) {
      text.append(set.label + " ");
      text.append(returnRateText(set.entries.at(index).y) + "\n", {.isMonospaced = true});
    }
    return text.append(mediumDayText(days[index]));
  };
}

/// Gives `chart` its main series, the words about it and the dates below.
void finishReturnChart(ReturnChartView& chart, std::vector<ChartDataSet> series,
                       const MeasuredDays& measured) {
  std::vector<YearMonthDay> days;
  std::vector<std::pair<double, Date>> points;
  for (const auto& day : measured) {
    points.emplace_back(static_cast<double>(days.size()), chartDate(day.day));
    days.push_back(day.day);
  }
  chart.prescribedOpeningValue = 0;
  chart.prescribedClosingValue = series.front().entries.back().y;
  chart.accessibleText = series.front().label + ": " +
                         returnRateText(series.front().entries.back().y) + " from " +
                         mediumDayText(days.front()) + " to " + mediumDayText(days.back()) + ".";
  chart.keyText = [days](std::size_t index) {
    return index < days.size() ? mediumDayText(days[index]) : std::string();
  };
  chart.tooltipProvider = returnTooltips(series, days);
  chart.interactiveDataSet = std::move(series.front());
  series.erase(series.begin());
  chart.setNoninteractiveDataSets(std::move(series));
  chart.addDateLabels(points, {points.front().second, points.back().second}, chartCalendar());
  chart.changeHandler();
}

}  // namespace

ReturnChartView::ReturnChartView() {
  leftAxisRenderer = std::make_shared<TextAxisRenderer>(
      [](double value) { return plainRateText(value); }, leastStepOfRates);
  rightAxisRenderer = nullptr;
  valueText = [](double value) { return returnRateText(value); };
}

AttributedText ReturnChartView::changeText(double from, double to) const {
  const double change = (1 + to) / (1 + from) - 1;
  return AttributedText(
      returnRateText(change),
      {.colour = Formatting::movementIndicator(Decimal::fromDouble(change)).colour});
}

void drawReturns(ReturnChartView& chart, const TimeWeightedReturn& returns,
                 const std::optional<BenchmarkReturn>& benchmark,
                 const std::string& benchmarkName) {
  chart.clear();
  if (returns.days.empty()) {
    return;
  }
  std::vector<ChartDataSet> series = {
      {.label = "Time-weighted return", .colour = Colour::Name::systemBlue, .lineWidth = 2}};
  if (benchmark) {
    series.push_back({.label = benchmarkName,
                      .colour = Colour::Name::systemOrange,
                      .lineWidth = benchmarkWidth,
                      .isDashed = true});
  }
  const double benchmarkStart = benchmark ? benchmark->indexOn(returns.days.front().day) : 1;
  for (const auto& day : returns.days) {
    const auto x = static_cast<double>(series.front().entries.size());
    series.front().entries.push_back({x, day.index - 1});
    if (benchmark) {
      series.back().entries.push_back({x, benchmark->indexOn(day.day) / benchmarkStart - 1});
    }
  }
  chart.legendEntries = {{series.front().label, series.front().colour}};
  if (benchmark) {
    chart.legendEntries->push_back(
        {benchmarkName, series.back().colour, ChartLegendEntry::Mark::dashedLine});
  }
  finishReturnChart(chart, std::move(series), returns.days);
}

void drawDrawdowns(ReturnChartView& chart, const TimeWeightedReturn& returns) {
  chart.clear();
  if (returns.days.empty()) {
    return;
  }
  ChartDataSet falls{.label = "Below the highest point",
                     .colour = Colour::Name::systemRed,
                     .fill = Colour(Colour::Name::systemRed).withAlpha(drawdownAlpha)};
  double peak = 0;
  for (const auto& day : returns.days) {
    peak = std::max(peak, day.index);
    falls.entries.push_back({static_cast<double>(falls.entries.size()), day.index / peak - 1});
  }
  chart.legendEntries = {{falls.label, falls.colour, ChartLegendEntry::Mark::area}};
  finishReturnChart(chart, {std::move(falls)}, returns.days);
}

}  // namespace corvane
