#include "exchange/exports/portfolio_holdings_exporter.h"

#include <array>
#include <cassert>
#include <utility>

#include "platform/text/unicode/locale.h"

namespace corvane {

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
    : PortfolioExporter(
          defaults, std::string(userDefaultsKey),
          [] {
            // In the order of the SchemaField.
            static constexpr std::array<Field, 11> fields = {{
                {"date", "Date"},
                {"kind", "Kind"},
                {"symbol", "Symbol"},
                {"name", "Name"},
                {"sharesHeld", "Shares Held"},
                {"marketPrice", "Share Price †"},
                {"marketValue", "Total Market Value †"},
                {"averagePrice", "Average Cost †"},
                {"costBase", "Adj. Cost Base †"},
                {"marketGain", "Total Market Gain †"},
                {"portfolioCurrency", "Portfolio Currency †"},
            }};
            return std::span<const Field>(fields);
          }(),
          entries.size()),
      dataSlice_(std::move(slice)),
      assetEntries_(std::move(entries)),
      primaryCurrency_(dataSlice_.portfolio->primaryCurrency()) {
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

std::optional<std::string> PortfolioHoldingsExporter::cellText(std::size_t row, std::size_t field) {
  const Line& line = lines_[row];
  switch (static_cast<SchemaField>(field)) {
    case SchemaField::date:
      return dateText(dataSlice_.nominalDateRange.upper());
    case SchemaField::kind:
      return line.isCash ? "Cash" : "Shares";
    case SchemaField::symbol:
      return line.symbol;
    case SchemaField::name:
      return line.name;
    case SchemaField::sharesHeld:
      return shareText(line.figures.held);
    case SchemaField::marketPrice:
      return moneyText(line.figures.marketPrice, primaryCurrency_);
    case SchemaField::marketValue:
      return moneyText(line.figures.marketValue, primaryCurrency_);
    case SchemaField::averagePrice:
      return moneyText(line.figures.averagePrice, primaryCurrency_);
    case SchemaField::costBase:
      return moneyText(line.figures.costBase, primaryCurrency_);
    case SchemaField::marketGain:
      return moneyText(line.figures.marketGain, primaryCurrency_);
    case SchemaField::portfolioCurrency:
      return line.isCash ? std::nullopt
                         : std::optional<std::string>(std::string_view(primaryCurrency_.code));
  }
  return std::nullopt;
}

}  // namespace corvane
