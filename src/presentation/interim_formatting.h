// Money, gains and changes as text.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "core/currency.h"
#include "core/decimal.h"
#include "core/equity_info.h"
#include "ledger/portfolio_valuation.h"
#include "platform/text/attributed_text.h"
#include "platform/text/date_formatter.h"

namespace corvane {

struct Formatting {
  struct Indicator {
    std::string symbol;
    Colour colour;
  };
  static Indicator movementIndicator(const Decimal& change);
  static AttributedText moneyCell(const Decimal& amount, const Currency& currency, bool emphasised,
                                  FontWeight weight = FontWeight::regular);
  static std::string currentValueText(const PortfolioValuation& valuation);
  static AttributedText gainText(const PortfolioValuation& valuation);
  static AttributedText changeText(const Currency& currency,
                                   const std::optional<Decimal>& reference,
                                   const std::optional<Decimal>& current);
  static std::vector<Colour> hueRangeColours(std::size_t count, double firstHue, double lastHue,
                                             double brightness);
  static DateFormatter equityDateFormatter(const EquityInfo& equity);
};

}  // namespace corvane
