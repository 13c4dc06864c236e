#include "presentation/scenario/scenario_batch_data_source.h"

#include <array>
#include <utility>

#include "core/market/frozen_equity.h"
#include "platform/async/dispatch_queue.h"
#include "platform/system/log.h"
#include "presentation/scenario/scenario_text.h"
#include "presentation/text/formatting.h"
#include "presentation/text/table_text.h"

namespace corvane {
namespace {

constexpr std::string_view strategyLabel = "Strategy Return";
constexpr std::string_view holdingLabel = "Buy & Hold Return";
constexpr double barWidth = 0.85;
constexpr double holdingShift = 0.1;  // to the left, so that it shows behind the strategy's bar
constexpr double holdingOpacity = 0.25;

struct BatchRow {
  const BatchResult& result;
  const EquityInfo* equity;  ///< null once the run is forgotten
  const UserDefaults& defaults;
  const std::optional<DecimalNumberFormatter>& money;
};

std::string batchPeriodText(const BatchResult& result, const EquityInfo* equity,
                            const UserDefaults& defaults) {
  return equity == nullptr ? std::string(absentValue)
                           : Formatting::dateRangeText(result.dateRange, *equity, defaults);
}

constexpr std::array<ScenarioDataSource::ColumnSpecOf<BatchRow>, 6> batchColumns = {{
    {{"date", "Period", false, 1000, 100, 250},
     [](const BatchRow& row) {
       return AttributedText(batchPeriodText(row.result, row.equity, row.defaults));
     }},
    {{"tradingDays", "# of Days", true, 90, 90, 120},
     [](const BatchRow& row) {
       return numericCell(std::to_string(row.result.analysis.totalTradingDays));
     }},
    {{"totalValue", "Final Value", true, 90, 90, 120},
     [](const BatchRow& row) {
       return scenarioMoneyCell(row.result.analysis.portfolio->currentValue(), row.money);
     }},
    {{"netMoneyGain", "Gain/Loss", true, 90, 90, 120},
     [](const BatchRow& row) {
       return scenarioMoneyCell(row.result.analysis.netGain(), row.money);
     }},
    {{"netPercentGain", "Gain/Loss", true, 90, 90, 120},
     [](const BatchRow& row) { return scenarioReturnCell(row.result.strategyPeriodReturn); }},
    // Scaled by the days on which the exchange was open: trading days turn at another hour, and a
    // year would be too short by those that a session has been cut into.
    {{"approxARR", "Annualized", true, 90, 90, 120},
     [](const BatchRow& row) { return scenarioReturnCell(row.result.strategyAnnualizedReturn); }},
}};

Colour gainColour() {
  return Colour::Name::systemGreen;
}
Colour lossColour() {
  return Colour::Name::systemRed;
}
Colour holdingColour() {
  return Colour(Colour::Name::black).withAlpha(holdingOpacity);
}

AttributedText batchSummary(const std::vector<BatchResultPointer>& results) {
  const auto [least, greatest] = returnSpan(results);
  const TextStyle bold{.weight = FontWeight::bold};
  AttributedText text("Yields range from ");
  text.append(returnText(least).value_or("?"), bold);
  text.append(" to ").append(returnText(greatest).value_or("?"), bold);
  return text.append(". Analyzed returns over " + std::to_string(results.size()) +
                     " time periods.");
}

}  // namespace

std::optional<std::string> ScenarioBatchDataSource::NoBatchMethodError::description() const {
  return "There is no way chosen in which the period is to be divided.";
}

ScenarioBatchDataSource::ScenarioBatchDataSource(const UserDefaults& defaults)
    : ScenarioDataSource(batchColumns), defaults_(defaults) {}

void ScenarioBatchDataSource::beginAnalysis(const EquityPointer& equity, std::vector<Quote> quotes,
                                            const Decimal& initialInvestment,
                                            const InvestmentStrategy& strategy,
                                            Completion completion) {
  reset();
  if (!quoteRangeProvider) {
    Log::write("No batch methodology specified prior to analysis.");
    DispatchQueue::main()->async([completion = std::move(completion)] {
      completion(std::make_shared<const NoBatchMethodError>());
    });
    return;
  }
  equity_ = frozenEquity(*equity);
  batch_.begin(
      {equity, std::move(quotes), *quoteRangeProvider, strategy, initialInvestment},
      [this] { progressHandler(); },
      [this, completion = std::move(completion)](const ErrorPointer& error) {
        summaryString = batchSummary(results());
        completion(error);
      });
}

void ScenarioBatchDataSource::cancel() {
  if (!batch_.isRunning()) {
    return;
  }
  batch_.cancel();
  summaryString = AttributedText("Cancelled. ");
  summaryString->append(batchSummary(results()));
}

void ScenarioBatchDataSource::reset() {
  batch_.reset();
  equity_ = nullptr;
  summaryString.reset();
}

std::string ScenarioBatchDataSource::periodText(const BatchResult& result) const {
  return batchPeriodText(result, equity_.get(), defaults_);
}

AttributedText ScenarioBatchDataSource::briefCell(std::size_t row, std::size_t column) const {
  return columns().at(column).identifier != "date" || equity_ == nullptr
             ? AttributedText()
             : AttributedText(Formatting::briefDateRangeText(results().at(row)->dateRange, *equity_,
                                                             defaults_));
}

std::optional<AttributedText> ScenarioBatchDataSource::cellValue(std::string_view ident,
                                                                 std::size_t row) const {
  return cellOf<BatchRow>(batchColumns, ident,
                          {*results().at(row), equity_.get(), defaults_, currencyFormatter});
}

void ScenarioBatchDataSource::configureChart(FiscalChartView& chart) const {
  ScenarioDataSource::configureChart(chart);
  chart.keyTitle = "Period";
  chart.keyText = [this](std::size_t index) {
    return index < results().size() ? periodText(*results()[index]) : std::string();
  };
  chart.tooltipProvider = [this](std::size_t index) { return tooltip(index); };
  chart.legendEntries = std::vector<ChartLegendEntry>{
      {std::string(holdingLabel), holdingColour(), ChartLegendEntry::Mark::area},
      {std::string(strategyLabel), gainColour(), ChartLegendEntry::Mark::area},
      {std::string(strategyLabel), lossColour(), ChartLegendEntry::Mark::area}};
}

void ScenarioBatchDataSource::updateChart(FiscalChartView& chart) const {
  chart.clear();
  // While results come they are in no order.
  if (!batch_.isRunning() && !results().empty()) {
    fillBars(chart);
    chart.accessibleText =
        equity_->symbol + ". " + summaryString.value_or(AttributedText()).plainText();
  }
  ScenarioDataSource::updateChart(chart);
}

void ScenarioBatchDataSource::fillBars(FiscalChartView& chart) const {
  ChartDataSet held{.label = std::string(holdingLabel),
                    .colour = holdingColour(),
                    .shape = ChartDataSet::Shape::bars,
                    .barWidth = barWidth};
  ChartDataSet gained{.label = std::string(strategyLabel),
                      .colour = gainColour(),
                      .shape = ChartDataSet::Shape::bars,
                      .barWidth = barWidth};
  // The bound that differs from one period to the next one names it.
  const bool endsDiffer = quoteRangeProvider == BatchMethod::accumulatingFromStart;
  std::vector<std::pair<double, Date>> days;
  for (std::size_t i = 0; i < results().size(); ++i) {
    const BatchResult& result = *results()[i];
    const auto x = static_cast<double>(i);
    days.emplace_back(x, endsDiffer ? result.dateRange.upper() : result.dateRange.lower());
    if (!result.buyAndHoldReturn.isNaN()) {
      held.entries.push_back({x - holdingShift, result.buyAndHoldReturn.doubleValue()});
    }
    if (!result.strategyPeriodReturn.isNaN()) {
      gained.entries.push_back({x, result.strategyPeriodReturn.doubleValue()});
      gained.entryColours.push_back(result.strategyPeriodReturn > 0 ? gainColour() : lossColour());
    }
  }
  chart.xAxisMinimum = -0.5;
  chart.xAxisMaximum = static_cast<double>(results().size()) - 0.5;
  chart.setNoninteractiveDataSets({std::move(held)});
  chart.interactiveDataSet = std::move(gained);
  chart.prescribedOpeningValue = 0;
  if (days.front().second <= days.back().second) {
    chart.addDateLabels(days, {days.front().second, days.back().second}, equity_->calendar);
  }
}

std::optional<std::size_t> ScenarioBatchDataSource::rowForChartIndex(std::size_t index) const {
  return index < results().size() ? std::optional(index) : std::nullopt;
}

AttributedText ScenarioBatchDataSource::tooltip(std::size_t index) const {
  if (index >= results().size()) {
    return {};
  }
  const BatchResult& result = *results()[index];
  const int days = result.analysis.totalTradingDays;
  return AttributedText(returnText(result.strategyPeriodReturn).value_or("—") + "\n" +
                        periodText(result) + " (" + std::to_string(days) + " " +
                        (days == 1 ? "day" : "days") + ")");
}

}  // namespace corvane
