#include "presentation/scenario/scenario_batch_view_controller.h"

namespace corvane {
namespace {

/// The days of a scenario name neither a time nor a zone.
DateComponents dayComponents(Date date, const Calendar& calendar) {
  return calendar.dateComponents({CalendarUnit::year, CalendarUnit::month, CalendarUnit::day},
                                 date);
}

}  // namespace

std::shared_ptr<ScenarioBatchViewController> ScenarioBatchViewController::make(
    const ScreenSurroundings& surroundings) {
  auto made = std::make_shared<ScenarioBatchViewController>(Passkey{}, surroundings);
  made->connect();
  return made;
}

ScenarioBatchViewController::ScenarioBatchViewController(Passkey /*passkey*/,
                                                         const ScreenSurroundings& surroundings)
    : ScenarioViewController(surroundings,
                             std::make_unique<ScenarioBatchDataSource>(*surroundings.defaults),
                             {&Settings::batchScenario, &Settings::batchStrategy}) {
  const auto stored = surroundings.defaults->integer(userDefaultsBatchTypeKeyName).value_or(0);
  const bool isKnown = 0 <= stored && stored < static_cast<std::int64_t>(batchTypes.size());
  selectedBatchType_ = isKnown ? static_cast<std::size_t>(stored) : 0;
  batchSource().quoteRangeProvider = batchTypes.at(selectedBatchType_);
  batchSource().progressHandler = [this] { rowsDidArrive(); };
  scenarioChartView.valueDoubleClickedHandler = [this](std::size_t index) {
    if (const auto row = scenarioDataSource().rowForChartIndex(index)) {
      selectRow(row);
      goToDetailAction();
    }
  };
}

const ScenarioBatchDataSource& ScenarioBatchViewController::batchDataSource() const {
  return static_cast<const ScenarioBatchDataSource&>(scenarioDataSource());
}

ScenarioBatchDataSource& ScenarioBatchViewController::batchSource() {
  return static_cast<ScenarioBatchDataSource&>(dataSource());
}

void ScenarioBatchViewController::selectBatchType(std::size_t index) {
  if (index == selectedBatchType_ || index >= batchTypes.size()) {
    return;
  }
  selectedBatchType_ = index;
  surroundings().defaults->set(userDefaultsBatchTypeKeyName,
                               JSONValue(static_cast<std::int64_t>(index)));
  batchSource().quoteRangeProvider = batchTypes.at(index);
  runWhenShown();
}

ProgressIndicator ScenarioBatchViewController::progress() const {
  const ScenarioBatchDataSource& source = batchDataSource();
  if (!source.isAnalyzing() || source.totalCount() == 0) {
    return ScenarioViewController::progress();
  }
  return {.maximum = static_cast<double>(source.totalCount()),
          .value = static_cast<double>(source.completedCount()),
          .isAnimated = true};
}

std::string ScenarioBatchViewController::statusText() const {
  const ScenarioBatchDataSource& source = batchDataSource();
  return source.isAnalyzing() && source.totalCount() > 0
             ? "Replayed " + std::to_string(source.completedCount()) + " of " +
                   std::to_string(source.totalCount()) + " time periods."
             : ScenarioViewController::statusText();
}

void ScenarioBatchViewController::goToDetailAction() {
  if (!isGoToDetailEnabled()) {
    return;
  }
  const DateRange& period = batchDataSource().results().at(*selectedRow())->dateRange;
  const Calendar& calendar = currentEquity()->calendar;
  // The last day is the one in which the last bar ends. A bar of a minute or an hour ends with its
  // session at the latest. One of a day ends at the same hour of the day after, which is taken too:
  // a run then has one bar more than the row that it was called from.
  InvestmentScenario detail = scenario();
  detail.fromDateComponents = dayComponents(period.lower(), calendar);
  detail.toDateComponents = dayComponents(period.upper(), calendar);
  goToDetailHandler(detail, strategyViewController.strategy());
}

}  // namespace corvane
