// What a row of a list of holdings stands for: cash or an equity.
#pragma once

#include <variant>

#include "core/market/equity_info.h"
#include "core/money/currency.h"
#include "platform/text/styled/attributed_text.h"

namespace corvane {

/// Cash in a currency, or an equity (never null).
class PortfolioAsset {
 public:
  explicit PortfolioAsset(Currency cash) : asset_(cash) {}
  explicit PortfolioAsset(EquityPointer equity) : asset_(std::move(equity)) {}

  /// The currency where this is cash, else null.
  [[nodiscard]] const Currency* cash() const { return std::get_if<Currency>(&asset_); }
  /// The equity where this is one, else null.
  [[nodiscard]] EquityPointer equity() const;

  /// For a list: the currency's code or the equity's symbol in medium weight, and after a dash the
  /// currency's or equity's name in regular weight. Cut off at the end where the row is too narrow.
  [[nodiscard]] AttributedText title() const;

  friend bool operator==(const PortfolioAsset& left, const PortfolioAsset& right);

 private:
  std::variant<Currency, EquityPointer> asset_;
};

}  // namespace corvane
