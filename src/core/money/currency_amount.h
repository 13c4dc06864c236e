// An amount of money: a number and the currency that it is in.
#pragma once

#include <ostream>
#include <string>

#include "core/decimal/decimal.h"
#include "core/money/currency.h"

namespace corvane {

struct CurrencyAmount {
  Currency currency;
  Decimal amount;

  /// The amount in the accounting style of the user's locale with the currency's minor units, or
  /// its plain digits where the locale service gives no text.
  [[nodiscard]] std::string description() const;

  friend bool operator==(const CurrencyAmount&, const CurrencyAmount&) = default;
  friend std::ostream& operator<<(std::ostream& out, const CurrencyAmount& amount);
};

/// `amount` brought to the minor units of `currency`, to the even neighbour on a tie. Done once, at
/// the end of a computation and not between its steps.
[[nodiscard]] Decimal roundedToMinorUnits(const Decimal& amount, const Currency& currency);

/// Whether `amount` has no more digits after the point than `currency` has minor units.
[[nodiscard]] bool fitsMinorUnits(const Decimal& amount, const Currency& currency);

}  // namespace corvane
