#include "core/market/portfolio_asset.h"

#include "platform/text/unicode/locale.h"

namespace corvane {

EquityPointer PortfolioAsset::equity() const {
  const auto* equity = std::get_if<EquityPointer>(&asset_);
  return equity == nullptr ? nullptr : *equity;
}

AttributedText PortfolioAsset::title() const {
  std::string primary;
  std::optional<std::string> secondary;
  if (const Currency* currency = cash()) {
    primary = currency->code;
    secondary = Locale::current().localizedCurrencyName(currency->code).value_or(primary);
  } else {
    primary = equity()->symbol;
    secondary = equity()->name;
  }
  AttributedText title(primary, {.weight = FontWeight::medium});
  if (secondary) {
    title.append(" — " + *secondary);
  }
  title.lineBreak = LineBreak::truncateTail;
  return title;
}

bool operator==(const PortfolioAsset& left, const PortfolioAsset& right) {
  if (left.cash() != nullptr && right.cash() != nullptr) {
    return *left.cash() == *right.cash();
  }
  const EquityPointer leftEquity = left.equity();
  const EquityPointer rightEquity = right.equity();
  return leftEquity != nullptr && rightEquity != nullptr && *leftEquity == *rightEquity;
}

}  // namespace corvane
