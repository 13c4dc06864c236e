#include "presentation/portfolio/portfolio_holdings_view_controller.h"

#include <algorithm>
#include <utility>

#include "core/money/decimal_number_formatter.h"
#include "exchange/exports/portfolio_holdings_exporter.h"
#include "ledger/reports/asset_lines.h"
#include "presentation/text/day_text.h"
#include "presentation/text/formatting.h"
#include "presentation/text/table_text.h"

namespace corvane {
namespace {

enum Column { name, sharesHeld, averagePrice, marketPrice, costBase, marketValue, marketGain };

constexpr double firstHue = 1.0 / 9;
constexpr double lastHue = 5.0 / 12;
constexpr double sliceBrightness = 0.6;

std::string percentText(const Decimal& percentage) {
  DecimalNumberFormatter formatter;
  formatter.style = NumberFormatter::Style::percent;
  formatter.maximumFractionDigits = 0;
  return formatter.string(percentage / 100).value_or(percentage.description());
}

}  // namespace

PortfolioHoldingsViewController::PortfolioHoldingsViewController(ScreenSurroundings surroundings)
    : surroundings_(std::move(surroundings)) {
  pie_.noDataText = "No holdings.";
}

void PortfolioHoldingsViewController::setCurrentData(
    PortfolioDataSlice data, const std::optional<TransactionChanges>& /*changes*/) {
  currentData_ = std::move(data);
  assetEntries_ = currentData_.assetEntries({.excludingZero = true});
  fillPie();
  changeHandler();
}

std::shared_ptr<PortfolioExporter> PortfolioHoldingsViewController::makeExporter() const {
  return PortfolioHoldingsExporter::make(currentData_, surroundings_.defaults);
}

void PortfolioHoldingsViewController::openRow(std::size_t row) {
  const EquityPointer equity =
      row < assetEntries_.size() ? assetEntries_[row].equity() : EquityPointer();
  if (equity != nullptr) {
    openEquityHandler(equity);
  }
}

std::string PortfolioHoldingsViewController::title() const {
  const auto manager =
      currentData_.portfolio == nullptr ? nullptr : currentData_.portfolio->manager.lock();
  if (manager == nullptr) {
    return "";
  }
  const Date today = surroundings_.now();
  const YearMonthDay& lastDay = currentData_.ymdRange.upper();
  if (lastDay == YearMonthDay::of(today, manager->calendar)) {
    return "Current holdings";
  }
  return "All holdings on " + dayWithDistance(lastDay, today, manager->calendar);
}

const std::vector<TableColumn>& PortfolioHoldingsViewController::columns() const {
  static const std::vector<TableColumn> columns = {
      {"name", "Name"},
      {"sharesHeld", "Shares or Cash", true},
      {"averagePrice", "Average Price", true},
      {"marketPrice", "Market Price", true},
      {"costBase", "Cost Base", true},
      {"marketValue", "Market Value", true},
      {"marketGain", "Unrealized Gain", true},
  };
  return columns;
}

AttributedText PortfolioHoldingsViewController::cell(std::size_t row, std::size_t column) const {
  const PortfolioAsset& asset = assetEntries_.at(row);
  if (column == name) {
    return asset.title();
  }
  return asset.cash() != nullptr ? cashCell(*asset.cash(), column)
                                 : equityCell(asset.equity(), column);
}

AttributedText PortfolioHoldingsViewController::cashCell(const Currency& currency,
                                                         std::size_t column) const {
  const HoldingLine line = holdingLine(currentData_.lastSnapshot(), currency);
  switch (column) {
    case sharesHeld:
      return moneyTextCell(line.held, currency);
    case marketValue:
      return moneyTextCell(line.marketValue, currentData_.portfolio->primaryCurrency());
    default:
      return {};
  }
}

AttributedText PortfolioHoldingsViewController::equityCell(const EquityPointer& equity,
                                                           std::size_t column) const {
  const HoldingLine line = holdingLine(currentData_.lastSnapshot(), equity);
  const Currency& primary = currentData_.portfolio->primaryCurrency();
  switch (column) {
    case sharesHeld:
      return sharesCell(line.held);
    case averagePrice:
      return line.averagePrice ? moneyTextCell(line.averagePrice, primary) : AttributedText();
    case marketPrice:
      return line.marketPrice ? moneyTextCell(line.marketPrice, primary) : AttributedText();
    case costBase:
      return Formatting::moneyCell(line.costBase.value_or(0), primary, false);
    case marketValue:
      return moneyTextCell(line.marketValue, primary);
    case marketGain:
      return line.marketGain ? Formatting::moneyCell(*line.marketGain, primary, true)
                             : AttributedText();
    default:
      return {};
  }
}

void PortfolioHoldingsViewController::fillPie() {
  struct Entry {
    std::string label;
    Decimal value;
  };
  const PortfolioSnapshot& snapshot = currentData_.lastSnapshot();
  std::vector<Entry> entries;
  Decimal whole;
  for (const PortfolioAsset& asset : assetEntries_) {
    if (const Currency* cash = asset.cash()) {
      entries.push_back({"Cash (" + std::string(cash->code) + ")",
                         holdingLine(snapshot, *cash).marketValue.value_or(0)});
    } else {
      entries.push_back({asset.equity()->symbol, snapshot.marketValue(asset.equity()).value_or(0)});
    }
    whole += abs(entries.back().value);
  }
  std::ranges::stable_sort(entries, {}, &Entry::value);
  const auto colours =
      Formatting::hueRangeColours(entries.size(), firstHue, lastHue, sliceBrightness);
  pie_.slices.clear();
  for (std::size_t i = 0; i < entries.size(); ++i) {
    const Decimal& value = entries[i].value;
    const Decimal percentage = whole.isZero() ? Decimal(0) : value / whole * 100;
    pie_.slices.push_back(
        {entries[i].label, abs(value).doubleValue(), percentText(percentage), colours[i]});
  }
}

}  // namespace corvane
