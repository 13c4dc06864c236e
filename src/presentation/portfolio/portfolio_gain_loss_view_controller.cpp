#include "presentation/portfolio/portfolio_gain_loss_view_controller.h"

#include <array>
#include <utility>

#include "exchange/exports/portfolio_gain_loss_exporter.h"
#include "ledger/reports/asset_lines.h"
#include "platform/text/formats/duration_formatter.h"
#include "presentation/text/day_text.h"
#include "presentation/text/formatting.h"
#include "presentation/text/table_text.h"

namespace corvane {
namespace {

using TradingSummary = PortfolioSnapshotGroup::TradingSummary;

struct GainRow {
  const PortfolioAsset& asset;
  GainLine line;
  const Currency& primary;
};

/// A number of shares that were traded; empty where nothing was.
template <Decimal TradingSummary::*count>
AttributedText tradedShares(const GainRow& row) {
  return row.line.trades ? sharesCell((*row.line.trades).*count) : AttributedText();
}

template <Decimal TradingSummary::*amount>
AttributedText tradedMoney(const GainRow& row) {
  return row.line.trades ? Formatting::moneyCell((*row.line.trades).*amount, row.primary, false)
                         : AttributedText();
}

constexpr std::array<ColumnOf<GainRow>, 8> gainColumns = {{
    {{"name", "Name"}, [](const GainRow& row) { return row.asset.title(); }},
    {{"sharesBought", "Shares Bought", true}, tradedShares<&TradingSummary::sharesBought>},
    {{"sharesSold", "Shares Sold", true}, tradedShares<&TradingSummary::sharesSold>},
    {{"sharesNet", "Shares Held", true},
     [](const GainRow& row) { return sharesCell(row.line.sharesNet); }},
    {{"proceedsOfSale", "Proceeds of Sale", true}, tradedMoney<&TradingSummary::proceedsOfSale>},
    {{"costBaseAdded", "Cost Base Added", true}, tradedMoney<&TradingSummary::costBaseAdded>},
    {{"costBaseDisposed", "Cost Base Disposed", true},
     tradedMoney<&TradingSummary::costBaseDisposed>},
    {{"capitalGain", "Capital Gain", true},
     [](const GainRow& row) {
       return Formatting::moneyCell(row.line.capitalGain, row.primary, true);
     }},
}};

/// The length of `days`, counted from the day before the first one, so that one day is a day long.
std::string lengthText(const ClosedRange<YearMonthDay>& days, const Calendar& calendar) {
  const YearMonthDay& first = days.lower();
  const DurationFormatter formatter{.maximumUnitCount = 2, .collapsesLargestUnit = true};
  return formatter
      .string(YearMonthDay{first.year, first.month, first.day - 1}.startIn(calendar),
              days.upper().startIn(calendar), calendar)
      .value_or("the period");
}

}  // namespace

PortfolioGainLossViewController::PortfolioGainLossViewController(ScreenSurroundings surroundings)
    : surroundings_(std::move(surroundings)) {}

void PortfolioGainLossViewController::setCurrentData(
    PortfolioDataSlice data, const std::optional<TransactionChanges>& /*changes*/) {
  currentData_ = std::move(data);
  assetEntries_ = currentData_.assetEntries({.tradedOnly = true});
  changeHandler();
}

std::shared_ptr<PortfolioExporter> PortfolioGainLossViewController::makeExporter() const {
  return PortfolioGainLossExporter::make(currentData_, surroundings_.defaults);
}

void PortfolioGainLossViewController::openRow(std::size_t row) {
  const EquityPointer equity =
      row < assetEntries_.size() ? assetEntries_[row].equity() : EquityPointer();
  if (equity != nullptr) {
    openEquityHandler(equity);
  }
}

std::string PortfolioGainLossViewController::title() const {
  const auto manager =
      currentData_.portfolio == nullptr ? nullptr : currentData_.portfolio->manager.lock();
  if (manager == nullptr) {
    return "";
  }
  const Calendar& calendar = manager->calendar;
  const YearMonthDay& lastDay = currentData_.ymdRange.upper();
  const Date today = surroundings_.now();
  const std::string title =
      "Realized gains/losses over " + lengthText(currentData_.ymdRange, calendar);
  return lastDay == YearMonthDay::of(today, calendar)
             ? title + " as of today"
             : title + " as of " + dayWithDistance(lastDay, today, calendar);
}

const std::vector<TableColumn>& PortfolioGainLossViewController::columns() const {
  static const std::vector<TableColumn> columns = columnsOf(gainColumns);
  return columns;
}

AttributedText PortfolioGainLossViewController::cell(std::size_t row, std::size_t column) const {
  const PortfolioAsset& asset = assetEntries_.at(row);
  return gainColumns.at(column).cell({asset, gainLine(*currentData_.snapshotGroup, asset.equity()),
                                      currentData_.portfolio->primaryCurrency()});
}

}  // namespace corvane
