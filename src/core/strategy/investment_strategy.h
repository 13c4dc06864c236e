// When a simulated trader buys and sells, and how much.
#pragma once

#include <string_view>

#include "core/decimal/decimal.h"
#include "platform/data/json.h"

namespace corvane {

/// The rules of a simulated trader. Spreads are fractions of a reference price (0.05 is 5%), slices
/// are fractions of the shares held, maxima are money in the equity's currency.
///
/// A maximum of Decimal::greatestFiniteMagnitude() is no limit: a purchase may spend all the cash
/// there is. A slice of 1 is the whole holding.
struct InvestmentStrategy {
  Decimal targetBuySpread;        ///< how far below the reference price to buy
  Decimal targetBuyMax;           ///< the most that one purchase may spend
  Decimal targetSellSpread;       ///< how far above the reference price to sell
  Decimal targetSellSlice;        ///< what one sale gives up
  bool isStopLossActive = false;  ///< whether the four rules below count at all
  Decimal stopLossBuySpread;      ///< how far above the reference price to buy
  Decimal stopLossBuyMax;         ///< the most that one purchase may spend
  Decimal stopLossSellSpread;     ///< how far below the reference price to sell
  Decimal stopLossSellSlice;      ///< what one sale gives up

  /// The limit of a purchase, and the money of a scenario, until the user sets another: 1000.
  [[nodiscard]] static const Decimal& defaultMaximum();

  /// 5% spreads, purchases of up to the default maximum, sales of everything; no stop loss.
  [[nodiscard]] static const InvestmentStrategy& defaultStrategy();

  /// Spends all the cash at the first price and never sells: what strategies are compared with.
  [[nodiscard]] static const InvestmentStrategy& buyAndHold();

  friend bool operator==(const InvestmentStrategy&, const InvestmentStrategy&) = default;
};

/// `strategy` as a JSON object of all its fields. Throws JSONError for a NaN.
[[nodiscard]] JSONValue json(const InvestmentStrategy& strategy, std::string_view path = "");

/// The strategy that `value` holds, read at `path` of a document. Every field is required, others
/// are ignored. Throws JSONError.
[[nodiscard]] InvestmentStrategy investmentStrategy(const JSONValue& value,
                                                    std::string_view path = "");

}  // namespace corvane
