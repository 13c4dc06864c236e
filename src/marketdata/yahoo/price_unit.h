// What the figures of the service are told in.
#pragma once

#include <optional>
#include <string_view>

#include "core/decimal/decimal.h"
#include "core/money/currency.h"

namespace corvane {

/// A currency, or the part of one in which some exchanges tell their prices: pence, agorot, cents.
/// Such prices are read as amounts of the currency itself. Any thread.
struct PriceUnit {
  Currency currency;
  int decimals = 0;  ///< a price of the unit has so many more in the currency

  /// None for a code that is neither a currency's nor one of the parts that the service is known to
  /// use ("GBp", "ZAc", "ILA").
  [[nodiscard]] static std::optional<PriceUnit> withCode(std::string_view code);

  [[nodiscard]] Decimal amount(const Decimal& price) const;
  [[nodiscard]] std::optional<Decimal> amount(const std::optional<Decimal>& price) const;
};

}  // namespace corvane
