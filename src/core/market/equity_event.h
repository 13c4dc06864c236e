// What happened to an equity that changes the meaning of its past prices.
#pragma once

#include <ostream>
#include <string>
#include <variant>

#include "core/decimal/decimal.h"
#include "core/decimal/fraction.h"
#include "core/market/quote_query.h"
#include "platform/time/date.h"

namespace corvane {

/// A split or a dividend of an equity.
struct EquityEvent {
  struct Split {
    Fraction ratio;  ///< shares after for shares before: 2/1 doubles the holding
    friend bool operator==(const Split&, const Split&) = default;
  };
  struct Dividend {
    Decimal amount;  ///< per share, in the equity's currency
    friend bool operator==(const Dividend&, const Dividend&) = default;
  };
  using Kind = std::variant<Split, Dividend>;

  Date date;
  Kind kind;
  /// The basis on which the event's own figures are told.
  PriceAdjustment priceAdjustment;

  /// The event in one line.
  [[nodiscard]] std::string description() const;

  friend bool operator==(const EquityEvent&, const EquityEvent&) = default;
  friend std::ostream& operator<<(std::ostream& out, const EquityEvent& event);
};

}  // namespace corvane
