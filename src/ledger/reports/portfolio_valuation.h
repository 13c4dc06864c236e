// The present worth of a portfolio.
#pragma once

#include "core/decimal/decimal.h"
#include "core/money/currency.h"

namespace corvane {

/// What was put into a portfolio and what all of it is worth at the latest prices.
struct PortfolioValuation {
  Currency currency;  ///< the primary one, which both amounts are in
  Decimal netDeposited;
  Decimal currentValue;
  friend bool operator==(const PortfolioValuation&, const PortfolioValuation&) = default;
};

}  // namespace corvane
