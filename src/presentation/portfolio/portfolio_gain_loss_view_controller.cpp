#include "presentation/portfolio/portfolio_gain_loss_view_controller.h"

#include <utility>

#include "exchange/exports/portfolio_gain_loss_exporter.h"
#include "ledger/reports/asset_lines.h"
#include "platform/text/formats/duration_formatter.h"
#include "presentation/text/day_text.h"
#include "presentation/text/formatting.h"
#include "presentation/text/table_text.h"

namespace corvane {
namespace {

enum Column {
  name,
  sharesBought,
  sharesSold,
  sharesNet,
  proceedsOfSale,
  costBaseAdded,
  costBaseDisposed,
  capitalGain
};

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
  static const std::vector<TableColumn> columns = {
      {"name", "Name"},
      {"sharesBought", "Shares Bought", true},
      {"sharesSold", "Shares Sold", true},
      {"sharesNet", "Shares Held", true},
      {"proceedsOfSale", "Proceeds of Sale", true},
      {"costBaseAdded", "Cost Base Added", true},
      {"costBaseDisposed", "Cost Base Disposed", true},
      {"capitalGain", "Capital Gain", true},
  };
  return columns;
}

AttributedText PortfolioGainLossViewController::cell(std::size_t row, std::size_t column) const {
  const PortfolioAsset& asset = assetEntries_.at(row);
  const EquityPointer equity = asset.equity();
  const GainLine line = gainLine(*currentData_.snapshotGroup, equity);
  const Currency& primary = currentData_.portfolio->primaryCurrency();
  const auto money = [&](const Decimal& amount) {
    return Formatting::moneyCell(amount, primary, false);
  };
  switch (column) {
    case name:
      return asset.title();
    case sharesNet:
      return sharesCell(line.sharesNet);
    case capitalGain:
      return Formatting::moneyCell(line.capitalGain, primary, true);
    default:
      break;
  }
  if (!line.trades) {
    return {};
  }
  switch (column) {
    case sharesBought:
      return sharesCell(line.trades->sharesBought);
    case sharesSold:
      return sharesCell(line.trades->sharesSold);
    case proceedsOfSale:
      return money(line.trades->proceedsOfSale);
    case costBaseAdded:
      return money(line.trades->costBaseAdded);
    case costBaseDisposed:
      return money(line.trades->costBaseDisposed);
    default:
      return {};
  }
}

}  // namespace corvane
