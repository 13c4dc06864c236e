// The shares of a holder and what they cost, as every country keeps them.
#pragma once

#include "core/decimal/decimal.h"
#include "core/money/currency.h"

namespace corvane {

/// Costs are of the average share, in the minor units of one currency.
struct TaxPool {
  Decimal shares;
  Decimal cost;

  void take(const Decimal& added, const Decimal& amount, const Currency& currency);
  /// The rest keeps its part of the cost; nothing is left of that where shares were owed already.
  void giveUp(const Decimal& given, const Currency& currency);
  void journal(const Decimal& added, const Decimal& amount, const Currency& currency);
  void addCost(const Decimal& amount, const Currency& currency);
  /// What comes back beyond the cost, a gain of its own; else 0.
  [[nodiscard]] Decimal returnCost(const Decimal& amount, const Currency& currency);
};

}  // namespace corvane
