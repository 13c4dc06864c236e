#include "presentation/portfolio/portfolio_holdings_view_controller.h"

#include <algorithm>
#include <array>
#include <utility>

#include "core/money/decimal_number_formatter.h"
#include "exchange/exports/portfolio_holdings_exporter.h"
#include "ledger/reports/asset_lines.h"
#include "presentation/text/day_text.h"
#include "presentation/text/formatting.h"
#include "presentation/text/table_text.h"
#include "reports/trail/ledger_trails.h"

namespace corvane {
namespace {

struct HoldingRow {
  const PortfolioAsset& asset;
  HoldingLine line;
  const Currency& primary;
};

AttributedText moneyOrEmpty(const std::optional<Decimal>& amount, const Currency& currency) {
  return amount ? moneyTextCell(amount, currency) : AttributedText();
}

AttributedText heldCell(const HoldingRow& row) {
  const Currency* cash = row.asset.cash();
  return cash != nullptr ? moneyTextCell(row.line.held, *cash) : sharesCell(row.line.held);
}

AttributedText costBaseCell(const HoldingRow& row) {
  return row.asset.cash() != nullptr
             ? AttributedText()
             : Formatting::moneyCell(row.line.costBase.value_or(0), row.primary, false);
}

AttributedText marketGainCell(const HoldingRow& row) {
  return row.line.marketGain ? Formatting::moneyCell(*row.line.marketGain, row.primary, true)
                             : AttributedText();
}

/// Cash has a balance and a value, and nothing else.
constexpr std::array<ColumnOf<HoldingRow>, 7> holdingColumns = {{
    {{"name", "Name"}, [](const HoldingRow& row) { return row.asset.title(); }},
    {{"sharesHeld", "Shares or Cash", true}, heldCell},
    {{"averagePrice", "Average Price", true},
     [](const HoldingRow& row) { return moneyOrEmpty(row.line.averagePrice, row.primary); }},
    {{"marketPrice", "Market Price", true},
     [](const HoldingRow& row) { return moneyOrEmpty(row.line.marketPrice, row.primary); }},
    {{"costBase", "Cost Base", true}, costBaseCell},
    {{"marketValue", "Market Value", true},
     [](const HoldingRow& row) { return moneyTextCell(row.line.marketValue, row.primary); }},
    {{"marketGain", "Unrealized Gain", true}, marketGainCell},
}};

constexpr double firstHue = 1.0 / 9;
constexpr double lastHue = 5.0 / 12;
constexpr double sliceBrightness = 0.6;

std::string percentText(const Decimal& percentage) {
  DecimalNumberFormatter formatter;
  formatter.style = NumberFormatter::Style::percent;
  formatter.maximumFractionDigits = 0;
  return formatter.string(percentage / 100).value_or(percentage.description());
}

/// Null for cash, and behind the last row.
EquityPointer equityIn(const std::vector<PortfolioAsset>& entries, std::size_t row) {
  return row < entries.size() ? entries[row].equity() : EquityPointer();
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
  const EquityPointer equity = equityIn(assetEntries_, row);
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
  static const std::vector<TableColumn> columns = columnsOf(holdingColumns);
  return columns;
}

AttributedText PortfolioHoldingsViewController::cell(std::size_t row, std::size_t column) const {
  const PortfolioAsset& asset = assetEntries_.at(row);
  const PortfolioSnapshot& snapshot = currentData_.lastSnapshot();
  return holdingColumns.at(column).cell({asset,
                                         asset.cash() != nullptr
                                             ? holdingLine(snapshot, *asset.cash())
                                             : holdingLine(snapshot, asset.equity()),
                                         currentData_.portfolio->primaryCurrency()});
}

void PortfolioHoldingsViewController::showReturns(std::size_t row) {
  const EquityPointer equity = equityIn(assetEntries_, row);
  if (equity != nullptr) {
    showReturnsHandler(equity);
  }
}

/// Of a cost base: that after the last of the rows that are shown.
TrailMaker PortfolioHoldingsViewController::trailOf(std::size_t row, std::size_t column) const {
  const EquityPointer equity = assetEntries_.at(row).equity();
  const auto manager = currentData_.portfolio->manager.lock();
  if (columns().at(column).identifier != "costBase" || equity == nullptr || manager == nullptr) {
    return nullptr;
  }
  return [portfolio = currentData_.portfolio, equity, calendar = manager->calendar,
          last = currentData_.ymdRange.upper()]() -> std::optional<TrailNode> {
    const auto& rows = portfolio->transactions();
    for (std::size_t i = rows.size(); i-- > 0;) {
      const EquityPointer* named = rows[i]->basic.equity();
      if (named != nullptr && **named == *equity &&
          YearMonthDay::of(rows[i]->settlementDate(), calendar) <= last) {
        return costBaseTrail(*portfolio, i, calendar);
      }
    }
    return std::nullopt;
  };
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
