#include "exchange/exports/portfolio_holdings_exporter.h"

#include <cassert>
#include <utility>

#include "platform/text/unicode/locale.h"

namespace corvane {

const std::array<PortfolioHoldingsExporter::SchemaField, 11> PortfolioHoldingsExporter::schema = {{
    {{"date", "Date"},
     [](Self& self, const Line& /*line*/) -> CellText {
       return self.dateText(self.dataSlice_.nominalDateRange.upper());
     }},
    {{"kind", "Kind"},
     [](Self& /*self*/, const Line& line) -> CellText { return line.isCash ? "Cash" : "Shares"; }},
    {{"symbol", "Symbol"},
     [](Self& /*self*/, const Line& line) -> CellText { return line.symbol; }},
    {{"name", "Name"}, [](Self& /*self*/, const Line& line) -> CellText { return line.name; }},
    {{"sharesHeld", "Shares Held"},
     [](Self& self, const Line& line) -> CellText { return self.shareText(line.figures.held); }},
    {{"marketPrice", "Share Price †"},
     [](Self& self, const Line& line) -> CellText { return self.money(line.figures.marketPrice); }},
    {{"marketValue", "Total Market Value †"},
     [](Self& self, const Line& line) -> CellText { return self.money(line.figures.marketValue); }},
    {{"averagePrice", "Average Cost †"},
     [](Self& self, const Line& line) -> CellText {
       return self.money(line.figures.averagePrice);
     }},
    {{"costBase", "Adj. Cost Base †"},
     [](Self& self, const Line& line) -> CellText { return self.money(line.figures.costBase); }},
    {{"marketGain", "Total Market Gain †"},
     [](Self& self, const Line& line) -> CellText { return self.money(line.figures.marketGain); }},
    {{"portfolioCurrency", "Portfolio Currency †"},
     [](Self& self, const Line& line) -> CellText {
       return line.isCash ? std::nullopt : CellText(std::string_view(self.primaryCurrency_.code));
     }},
}};

std::shared_ptr<PortfolioHoldingsExporter> PortfolioHoldingsExporter::make(PortfolioDataSlice slice,
                                                                           UserDefaults* defaults) {
  assert(slice.portfolio != nullptr && "holdings are those of a portfolio");
  auto entries = slice.assetEntries({.excludingZero = true, .tradedOnly = false});
  return std::shared_ptr<PortfolioHoldingsExporter>(
      new PortfolioHoldingsExporter(std::move(slice), std::move(entries), defaults));
}

PortfolioHoldingsExporter::PortfolioHoldingsExporter(PortfolioDataSlice slice,
                                                     std::vector<PortfolioAsset> entries,
                                                     UserDefaults* defaults)
    : PortfolioExporter(defaults, std::string(userDefaultsKey), fieldsOf(schema), entries.size()),
      dataSlice_(std::move(slice)),
      assetEntries_(std::move(entries)),
      primaryCurrency_(dataSlice_.portfolio->primaryCurrency()) {
  writeDaysOf(*dataSlice_.portfolio);
  const std::string closingDate = dateText(dataSlice_.nominalDateRange.upper());
  setDefaultFilename(dataSlice_.portfolio->name + " " + closingDate);
  setTitleForSavePanel("Exporting holdings as of " + closingDate + ".");
  const PortfolioSnapshot& snapshot = dataSlice_.lastSnapshot();
  for (const PortfolioAsset& asset : assetEntries_) {
    lines_.push_back(asset.cash() != nullptr ? lineOf(*asset.cash(), snapshot)
                                             : lineOf(asset.equity(), snapshot));
  }
}

PortfolioHoldingsExporter::Line PortfolioHoldingsExporter::lineOf(
    const Currency& cash, const PortfolioSnapshot& snapshot) {
  const std::string code(std::string_view(cash.code));
  return {.isCash = true,
          .symbol = code,
          .name = Locale::current().localizedCurrencyName(code).value_or(code),
          .figures = holdingLine(snapshot, cash)};
}

PortfolioHoldingsExporter::Line PortfolioHoldingsExporter::lineOf(
    const EquityPointer& equity, const PortfolioSnapshot& snapshot) {
  return {.isCash = false,
          .symbol = equity->symbol,
          .name = equity->name,
          .figures = holdingLine(snapshot, equity)};
}

PortfolioExporter::CellText PortfolioHoldingsExporter::money(const std::optional<Decimal>& amount) {
  return moneyText(amount, primaryCurrency_);
}

PortfolioExporter::CellText PortfolioHoldingsExporter::cellText(std::size_t row,
                                                                std::size_t field) {
  return schema.at(field).text(*this, lines_[row]);
}

}  // namespace corvane
