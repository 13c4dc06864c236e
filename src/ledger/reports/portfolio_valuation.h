// The present worth of a portfolio.
#pragma once

#include "core/decimal/decimal.h"
#include "core/market/quote_provider.h"
#include "core/money/currency.h"
#include "ledger/portfolio/portfolio_snapshot.h"

namespace corvane {

/// What was put into a portfolio and what all of it is worth at the latest prices.
struct PortfolioValuation {
  Currency currency;  ///< the primary one, which both amounts are in
  Decimal netDeposited;
  Decimal currentValue;
  friend bool operator==(const PortfolioValuation&, const PortfolioValuation&) = default;
};

/// The worth of `snapshot` in `primary` at the recent prices of what it holds. What is no longer
/// held needs no price, but money that was once brought in counts at the rate of its currency.
///
/// Throws PortfolioManagerError: ForeignExchangeRateMissing, and LedgerInconsistency where an
/// equity that is held has no recent price.
[[nodiscard]] PortfolioValuation valuationOf(const PortfolioSnapshot& snapshot,
                                             const Currency& primary, QuoteProvider& quotes);

/// The equities and currency pairs whose recent prices valuationOf() needs: these and no others.
[[nodiscard]] EquitySet equitiesOfValuation(const PortfolioSnapshot& snapshot,
                                            const Currency& primary, QuoteProvider& quotes);

}  // namespace corvane
