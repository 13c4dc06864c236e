#include "presentation/overview/overview_chart.h"

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

#include "platform/text/unicode/isolation.h"
#include "presentation/performance/chart_bands.h"
#include "presentation/reports/report_text.h"
#include "presentation/text/formatting.h"

namespace corvane {
namespace {

using SharedHistory = std::shared_ptr<const OverviewHistory>;

/// With more portfolios the panel beside the pointer has the total alone.
constexpr std::size_t mostBandsInPanel = 12;

std::vector<ChartDataSet> stackedBands(const OverviewHistory& history) {
  std::vector<Decimal> sums(history.sum.days.size());
  std::vector<ChartDataSet> bands;
  for (const auto& [name, values] : history.bands) {
    ChartDataSet& band = bands.emplace_back(ChartDataSet{.label = isolatedName(name)});
    band.entries.reserve(sums.size());
    for (std::size_t i = 0; i < sums.size(); ++i) {
      const double base = sums[i].doubleValue();
      sums[i] += values[i];
      band.entries.push_back({static_cast<double>(i), sums[i].doubleValue(), base});
    }
  }
  colourBands(bands);
  return bands;
}

ChartDataSet depositsOf(const OverviewHistory& history) {
  ChartDataSet line = netDepositsLine();
  for (const Decimal& amount : history.netDeposits) {
    line.entries.push_back({static_cast<double>(line.entries.size()), amount.doubleValue()});
  }
  return line;
}

/// The total of the day and its change since the first one, what it is made of, and the day.
AttributedText panelText(const OverviewHistory& history, std::size_t index) {
  if (index >= history.sum.days.size()) {
    return {};
  }
  const Currency& currency = history.sum.currency;
  const auto money = [&](const Decimal& amount) { return reportMoneyText(amount, currency); };
  const Decimal first = roundedToMinorUnits(history.sum.days.front().value, currency);
  const Decimal value = roundedToMinorUnits(history.sum.days[index].value, currency);
  AttributedText text(money(value));
  // Of what grew out of nothing there is no percentage.
  if (!first.isZero()) {
    text.append(" (").append(Formatting::changeText(currency, first, value)).append(")");
  }
  if (history.bands.size() > 1 && history.bands.size() <= mostBandsInPanel) {
    for (auto band = history.bands.rbegin(); band != history.bands.rend(); ++band) {
      text.append("\n" + isolatedName(band->name) + " ");
      text.append(money(band->values[index]), {.isMonospaced = true});
    }
  }
  if (!history.netDeposits.empty()) {
    text.append("\n" + std::string(netDepositsLabel) + " ");
    text.append(money(history.netDeposits[index]), {.isMonospaced = true});
  }
  return text.append("\n" + mediumDayText(history.sum.days[index].day));
}

/// The day before the chosen ones only says what there was at their start, and has no label.
void labelDays(FiscalChartView& chart, const OverviewHistory& history) {
  std::vector<std::pair<double, Date>> points;
  for (std::size_t i = 1; i < history.sum.days.size(); ++i) {
    points.emplace_back(static_cast<double>(i), chartDate(history.sum.days[i].day));
  }
  if (!points.empty()) {
    chart.addDateLabels(points, {points.front().second, points.back().second}, chartCalendar());
  }
}

std::string overviewInWords(const OverviewHistory& history) {
  const auto dayText = [&](const ValuationDay& day) {
    return reportMoneyText(day.value, history.sum.currency) + " on " + mediumDayText(day.day);
  };
  return "From " + dayText(history.sum.days.front()) + " to " + dayText(history.sum.days.back()) +
         ".";
}

}  // namespace

void drawOverview(FiscalChartView& chart, const SharedHistory& history,
                  const std::string& otherwise) {
  chart.clear();
  chart.noDataText = otherwise;
  if (history == nullptr || history->sum.days.empty() || !otherwise.empty()) {
    chart.changeHandler();
    return;
  }
  const auto& days = history->sum.days;
  constexpr std::size_t leastPoints = 3;  // the day before the range, and two days of it
  if (history->bands.empty() || days.size() < leastPoints) {
    chart.noDataText = history->bands.empty()
                           ? "Nothing was held on these days."
                           : reportMoneyText(days.back().value, history->sum.currency) + " on " +
                                 mediumDayText(days.back().day) +
                                 ".\nMore than one day makes a chart.";
    chart.changeHandler();
    return;
  }
  chart.currency = history->sum.currency;
  chart.reset();
  std::vector<ChartDataSet> series = stackedBands(*history);
  chart.legendEntries = legendOfBands(series, !history->netDeposits.empty());
  ChartDataSet top = std::move(series.back());
  series.pop_back();
  if (!history->netDeposits.empty()) {
    series.push_back(depositsOf(*history));
  }
  const bool hasDebt =
      std::ranges::any_of(days, [](const ValuationDay& day) { return day.value < Decimal(0); });
  chart.axisMinimum = hasDebt ? std::nullopt : std::optional<double>(0);
  chart.prescribedOpeningValue = top.entries.front().y;
  chart.prescribedClosingValue = top.entries.back().y;
  chart.accessibleText = overviewInWords(*history);
  chart.keyText = [history](std::size_t index) {
    return index < history->sum.days.size() ? mediumDayText(history->sum.days[index].day)
                                            : std::string();
  };
  chart.tooltipProvider = [history](std::size_t index) { return panelText(*history, index); };
  chart.setNoninteractiveDataSets(std::move(series));
  chart.interactiveDataSet = std::move(top);
  labelDays(chart, *history);
  chart.changeHandler();
}

}  // namespace corvane
