#include "presentation/performance/portfolio_chart.h"

#include <algorithm>
#include <string>
#include <utility>

#include "core/money/decimal_number_formatter.h"
#include "ledger/manager/portfolio_manager.h"
#include "platform/text/formats/date_formatter.h"
#include "presentation/performance/chart_bands.h"
#include "presentation/text/formatting.h"

namespace corvane {
namespace {

using DailySnapshots = std::vector<PortfolioSnapshotGroup::DailySnapshot>;

/// The values of an asset on top of those that have been stacked before.
class Stack {
 public:
  explicit Stack(const DailySnapshots& snapshots)
      : snapshots_(snapshots), sums_(snapshots.size()) {}

  template <typename Value>
  void add(std::string label, Value valueAt) {
    ChartDataSet series{.label = std::move(label),
                        .colour = Colour::Name::systemBlue,
                        .fill = Colour::Name::systemBlue};
    series.entries.reserve(snapshots_.size());
    for (std::size_t i = 0; i < snapshots_.size(); ++i) {
      const double base = sums_[i].doubleValue();
      sums_[i] += valueAt(snapshots_[i].snapshot);
      series.entries.push_back({static_cast<double>(i), sums_[i].doubleValue(), base});
    }
    series_.push_back(std::move(series));
  }

  void addCash(const Currency& primary) {
    add(std::string(primary.code), [&](const PortfolioSnapshot& snapshot) {
      return snapshot.currencySnapshots.get(primary).cashOnHand;
    });
  }
  void addEquity(const EquityPointer& equity) {
    add(equity->symbol, [&](const PortfolioSnapshot& snapshot) {
      return snapshot.marketValue(equity).value_or(0);
    });
  }

  [[nodiscard]] StackedSeries take() {
    colourBands(series_);
    return {std::move(series_), std::move(sums_)};
  }

 private:
  const DailySnapshots& snapshots_;
  std::vector<Decimal> sums_;
  std::vector<ChartDataSet> series_;
};

/// Puts the chosen days below the chart. The snapshot before them only says what there was at
/// their start, and must not have a label of its own.
void addDayLabels(FiscalChartView& chart, const PortfolioDataSlice& data,
                  const Calendar& calendar) {
  const DailySnapshots& snapshots = data.snapshotGroup->sortedSnapshots;
  std::vector<std::pair<double, Date>> points;
  points.reserve(snapshots.size());
  for (std::size_t i = 0; i < snapshots.size(); ++i) {
    if (data.ymdRange.contains(snapshots[i].ymd)) {
      points.emplace_back(static_cast<double>(i), snapshots[i].ymd.startIn(calendar));
    }
  }
  if (!points.empty()) {
    chart.addDateLabels(points, {points.front().second, points.back().second}, calendar);
  }
}

std::string longDate(const YearMonthDay& day, const Calendar& calendar) {
  return DateFormatter{.dateStyle = DateFormatter::Style::longStyle,
                       .timeZone = calendar.timeZone()}
      .string(day.startIn(calendar));
}

std::string moneyText(const Decimal& value, const Currency& currency) {
  return DecimalNumberFormatter::money(currency).string(value).value_or("");
}

/// `value` as it is shown: converted sums have digits that nobody can pay.
Decimal inMinorUnits(const Decimal& value, const Currency& currency) {
  return rounded(value, currency.minorUnits, RoundingMode::bankers);
}

/// The value of the day, its change since the first one, and the day itself.
std::function<AttributedText(std::size_t)> tooltips(
    std::shared_ptr<const PortfolioSnapshotGroup> group, std::vector<Decimal> total,
    const Currency& currency, const Calendar& calendar) {
  return
      [group = std::move(group), total = std::move(total), currency, calendar](std::size_t index) {
        if (index >= total.size()) {
          return AttributedText();
        }
        AttributedText text(moneyText(total[index], currency));
        // Of what grew out of nothing there is no percentage.
        if (!inMinorUnits(total.front(), currency).isZero()) {
          text.append(" (")
              .append(Formatting::changeText(currency, inMinorUnits(total.front(), currency),
                                             inMinorUnits(total[index], currency)))
              .append(")");
        }
        return text.append("\n" + longDate(group->sortedSnapshots.at(index).ymd, calendar));
      };
}

std::string accessibleText(const std::vector<Decimal>& total, const DailySnapshots& snapshots,
                           const Currency& currency, const Calendar& calendar) {
  return "From " + moneyText(total.front(), currency) + " on " +
         longDate(snapshots.front().ymd, calendar) + " to " + moneyText(total.back(), currency) +
         " on " + longDate(snapshots.back().ymd, calendar) + ".";
}

/// Why there is nothing to draw; empty where there is something.
std::string whyNothingIsDrawn(const PortfolioDataSlice& data, const std::vector<Decimal>& total,
                              const std::optional<ChartDataSet>& deposits,
                              const Calendar& calendar) {
  const auto isZero = [](const auto& value) { return value.isZero(); };
  const auto isFlat = [](const ChartEntry& entry) { return entry.y == 0; };
  if (std::ranges::all_of(total, isZero) &&
      (!deposits || std::ranges::all_of(deposits->entries, isFlat))) {
    return "Nothing was held on these days.";
  }
  if (data.ymdRange.lower() == data.ymdRange.upper()) {
    return moneyText(total.back(), data.portfolio->primaryCurrency()) + " on " +
           longDate(data.ymdRange.upper(), calendar) + ".\nMore than one day makes a chart.";
  }
  return "";
}

}  // namespace

StackedSeries stackedSeries(const PortfolioDataSlice& data,
                            const std::optional<PortfolioAsset>& asset) {
  Stack stack(data.snapshotGroup->sortedSnapshots);
  if (!asset || asset->cash() != nullptr) {
    stack.addCash(data.portfolio->primaryCurrency());
  }
  if (!asset) {
    for (const PortfolioAsset& entry : data.assetEntries({})) {
      if (entry.equity() != nullptr) {
        stack.addEquity(entry.equity());
      }
    }
  } else if (asset->equity() != nullptr) {
    stack.addEquity(asset->equity());
  }
  return stack.take();
}

ChartDataSet netDepositsSeries(const PortfolioSnapshotGroup& group) {
  ChartDataSet series = netDepositsLine();
  for (const auto& [day, snapshot] : group.sortedSnapshots) {
    Decimal deposited;
    for (const auto& [currency, cash] : snapshot.currencySnapshots) {
      deposited += cash.netCashDeposited * cash.exchangeRate.value_or(0);
    }
    series.entries.push_back({static_cast<double>(series.entries.size()), deposited.doubleValue()});
  }
  return series;
}

void drawPortfolioChart(FiscalChartView& chart, const PortfolioDataSlice& data,
                        const std::optional<PortfolioAsset>& asset) {
  chart.clear();
  const Currency& primary = data.portfolio->primaryCurrency();
  chart.noDataText.clear();
  chart.currency = primary;
  chart.reset();
  const auto manager = data.portfolio->manager.lock();
  if (manager == nullptr || data.snapshotGroup == nullptr ||
      data.snapshotGroup->sortedSnapshots.empty()) {
    return;
  }
  const DailySnapshots& snapshots = data.snapshotGroup->sortedSnapshots;
  const Calendar& calendar = manager->calendar;

  auto [series, total] = stackedSeries(data, asset);
  std::optional<ChartDataSet> deposits;
  if (!asset || asset->cash() != nullptr) {
    deposits = netDepositsSeries(*data.snapshotGroup);
  }
  chart.noDataText = whyNothingIsDrawn(data, total, deposits, calendar);
  if (!chart.noDataText.empty()) {
    chart.changeHandler();
    return;
  }
  chart.legendEntries = legendOfBands(series, deposits.has_value());
  ChartDataSet topLine = std::move(series.back());
  series.pop_back();
  if (deposits) {
    series.push_back(std::move(*deposits));
  }
  chart.axisMinimum =
      data.portfolio->allowsNegativeBalances ? std::nullopt : std::optional<double>(0);
  chart.prescribedOpeningValue = topLine.entries.front().y;
  chart.prescribedClosingValue = topLine.entries.back().y;
  chart.accessibleText = accessibleText(total, snapshots, primary, calendar);
  chart.keyText = [group = data.snapshotGroup, calendar](std::size_t index) {
    return index < group->sortedSnapshots.size()
               ? longDate(group->sortedSnapshots[index].ymd, calendar)
               : std::string();
  };
  chart.tooltipProvider = tooltips(data.snapshotGroup, std::move(total), primary, calendar);
  chart.setNoninteractiveDataSets(std::move(series));
  chart.interactiveDataSet = std::move(topLine);
  addDayLabels(chart, data, calendar);
  chart.changeHandler();
}

}  // namespace corvane
