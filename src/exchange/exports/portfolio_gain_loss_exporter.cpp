#include "exchange/exports/portfolio_gain_loss_exporter.h"

#include <cassert>
#include <utility>

namespace corvane {
namespace {

using Summary = PortfolioSnapshotGroup::TradingSummary;

}  // namespace

const std::array<PortfolioGainLossExporter::SchemaField, 12> PortfolioGainLossExporter::schema = {{
    {{"openingDate", "Opening Date"},
     [](Self& self, const Line& /*line*/) -> CellText {
       return self.dateText(self.dataSlice_.nominalDateRange.lower());
     }},
    {{"closingDate", "Closing Date"},
     [](Self& self, const Line& /*line*/) -> CellText {
       return self.dateText(self.dataSlice_.nominalDateRange.upper());
     }},
    {{"symbol", "Symbol"},
     [](Self& /*self*/, const Line& line) -> CellText { return line.symbol; }},
    {{"name", "Name"}, [](Self& /*self*/, const Line& line) -> CellText { return line.name; }},
    {{"sharesBought", "Shares Bought"},
     [](Self& self, const Line& line) -> CellText {
       return self.shareText(traded(line, &Summary::sharesBought));
     }},
    {{"sharesSold", "Shares Sold"},
     [](Self& self, const Line& line) -> CellText {
       return self.shareText(traded(line, &Summary::sharesSold));
     }},
    {{"sharesNet", "Net Shares"},
     [](Self& self, const Line& line) -> CellText {
       return self.shareText(line.figures.sharesNet);
     }},
    {{"costBaseAdded", "Cost Base Added †"},
     [](Self& self, const Line& line) -> CellText {
       return self.money(traded(line, &Summary::costBaseAdded));
     }},
    {{"costBaseDisposed", "Cost Base Sold †"},
     [](Self& self, const Line& line) -> CellText {
       return self.money(traded(line, &Summary::costBaseDisposed));
     }},
    {{"proceedsOfSale", "Proceeds of Sale †"},
     [](Self& self, const Line& line) -> CellText {
       return self.money(traded(line, &Summary::proceedsOfSale));
     }},
    {{"capitalGain", "Capital Gain †"},
     [](Self& self, const Line& line) -> CellText { return self.money(line.figures.capitalGain); }},
    {{"portfolioCurrency", "Portfolio Currency †"},
     [](Self& self, const Line& /*line*/) -> CellText {
       return std::string(std::string_view(self.primaryCurrency_.code));
     }},
}};

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
    : PortfolioExporter(defaults, std::string(userDefaultsKey), fieldsOf(schema), entries.size()),
      dataSlice_(std::move(slice)),
      assetEntries_(std::move(entries)),
      primaryCurrency_(dataSlice_.portfolio->primaryCurrency()) {
  writeDaysOf(*dataSlice_.portfolio);
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

std::optional<Decimal> PortfolioGainLossExporter::traded(const Line& line, Figure figure) {
  const auto& trades = line.figures.trades;
  return trades ? std::optional((*trades).*figure) : std::nullopt;
}

PortfolioExporter::CellText PortfolioGainLossExporter::money(const std::optional<Decimal>& amount) {
  return moneyText(amount, primaryCurrency_);
}

PortfolioExporter::CellText PortfolioGainLossExporter::cellText(std::size_t row,
                                                                std::size_t field) {
  return lines_[row] ? schema.at(field).text(*this, *lines_[row]) : std::nullopt;
}

}  // namespace corvane
