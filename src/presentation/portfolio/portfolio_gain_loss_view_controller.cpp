#include "presentation/portfolio/portfolio_gain_loss_view_controller.h"

#include <utility>

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
  const auto& summaries = currentData_.snapshotGroup->tradingSummaryByEquity;
  const auto found = summaries.find(equity);
  const auto* summary = found == summaries.end() ? nullptr : &found->second;
  const Currency& primary = currentData_.portfolio->primaryCurrency();
  const auto money = [&](const Decimal& amount) {
    return Formatting::moneyCell(amount, primary, false);
  };
  const auto held = [&](const PortfolioSnapshot& snapshot) {
    return snapshot.equitySnapshots.get(equity);
  };
  switch (column) {
    case name:
      return asset.title();
    case sharesNet:
      return sharesCell(held(currentData_.lastSnapshot()).sharesHeld);
    case capitalGain:
      return Formatting::moneyCell(held(currentData_.lastSnapshot()).cumulativeCapitalGain -
                                       held(currentData_.firstSnapshot()).cumulativeCapitalGain,
                                   primary, true);
    default:
      break;
  }
  if (summary == nullptr) {
    return {};
  }
  switch (column) {
    case sharesBought:
      return sharesCell(summary->sharesBought);
    case sharesSold:
      return sharesCell(summary->sharesSold);
    case proceedsOfSale:
      return money(summary->proceedsOfSale);
    case costBaseAdded:
      return money(summary->costBaseAdded);
    case costBaseDisposed:
      return money(summary->costBaseDisposed);
    default:
      return {};
  }
}

}  // namespace corvane
