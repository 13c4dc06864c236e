#include "exchange/exports/portfolio_gain_loss_exporter.h"

#include <array>
#include <cassert>
#include <utility>

namespace corvane {

std::shared_ptr<PortfolioGainLossExporter> PortfolioGainLossExporter::make(PortfolioDataSlice slice,
                                                                           UserDefaults* defaults) {
  assert(slice.portfolio != nullptr && "gains are those of a portfolio");
  auto entries = slice.assetEntries({.excludingZero = false, .tradedOnly = true});
  return std::shared_ptr<PortfolioGainLossExporter>(
      new PortfolioGainLossExporter(std::move(slice), std::move(entries), defaults));
}

PortfolioGainLossExporter::PortfolioGainLossExporter(PortfolioDataSlice slice,
                                                     std::vector<PortfolioAsset> entries,
                                                     UserDefaults* defaults)
    : PortfolioExporter(
          defaults, std::string(userDefaultsKey),
          [] {
            // In the order of the SchemaField.
            static constexpr std::array<Field, 12> fields = {{
                {"openingDate", "Opening Date"},
                {"closingDate", "Closing Date"},
                {"symbol", "Symbol"},
                {"name", "Name"},
                {"sharesBought", "Shares Bought"},
                {"sharesSold", "Shares Sold"},
                {"sharesNet", "Net Shares"},
                {"costBaseAdded", "Cost Base Added †"},
                {"costBaseDisposed", "Cost Base Sold †"},
                {"proceedsOfSale", "Proceeds of Sale †"},
                {"capitalGain", "Capital Gain †"},
                {"portfolioCurrency", "Portfolio Currency †"},
            }};
            return std::span<const Field>(fields);
          }(),
          entries.size()),
      dataSlice_(std::move(slice)),
      assetEntries_(std::move(entries)),
      primaryCurrency_(dataSlice_.portfolio->primaryCurrency()) {
  const std::string openingDate = dateText(dataSlice_.nominalDateRange.lower());
  const std::string closingDate = dateText(dataSlice_.nominalDateRange.upper());
  setDefaultFilename(dataSlice_.portfolio->name + " " + closingDate);
  setTitleForSavePanel("Exporting gains/losses from " + openingDate + " to " + closingDate + ".");
  for (const PortfolioAsset& asset : assetEntries_) {
    lines_.push_back(lineOf(asset));
  }
}

std::optional<PortfolioGainLossExporter::Line> PortfolioGainLossExporter::lineOf(
    const PortfolioAsset& asset) const {
  const EquityPointer equity = asset.equity();
  if (equity == nullptr) {
    return std::nullopt;
  }
  return Line{equity->symbol, equity->name, gainLine(*dataSlice_.snapshotGroup, equity)};
}

std::optional<std::string> PortfolioGainLossExporter::cellText(std::size_t row, std::size_t field) {
  using Summary = PortfolioSnapshotGroup::TradingSummary;
  if (!lines_[row]) {
    return std::nullopt;
  }
  const Line& line = *lines_[row];
  const auto traded = [&](Decimal Summary::*figure) {
    const auto& trades = line.figures.trades;
    return trades ? std::optional((*trades).*figure) : std::nullopt;
  };
  switch (static_cast<SchemaField>(field)) {
    case SchemaField::openingDate:
      return dateText(dataSlice_.nominalDateRange.lower());
    case SchemaField::closingDate:
      return dateText(dataSlice_.nominalDateRange.upper());
    case SchemaField::symbol:
      return line.symbol;
    case SchemaField::name:
      return line.name;
    case SchemaField::sharesBought:
      return shareText(traded(&Summary::sharesBought));
    case SchemaField::sharesSold:
      return shareText(traded(&Summary::sharesSold));
    case SchemaField::sharesNet:
      return shareText(line.figures.sharesNet);
    case SchemaField::costBaseAdded:
      return moneyText(traded(&Summary::costBaseAdded), primaryCurrency_);
    case SchemaField::costBaseDisposed:
      return moneyText(traded(&Summary::costBaseDisposed), primaryCurrency_);
    case SchemaField::proceedsOfSale:
      return moneyText(traded(&Summary::proceedsOfSale), primaryCurrency_);
    case SchemaField::capitalGain:
      return moneyText(line.figures.capitalGain, primaryCurrency_);
    case SchemaField::portfolioCurrency:
      return std::string(std::string_view(primaryCurrency_.code));
  }
  return std::nullopt;
}

}  // namespace corvane
