// Why the heading of a portfolio says what it says.
#pragma once

#include "ledger/portfolio/portfolio.h"
#include "reports/series/market_history.h"
#include "reports/trail/trail_node.h"

namespace corvane {

/// The worth of `portfolio` at the recent prices: each equity, each currency, as
/// PortfolioManager::valuation() has it. Where that has no figure, neither has the root, and its
/// note names what lacks a price or a rate; then equities that are sold out and have no price are
/// listed as well, with 0 shares. Throws PortfolioManagerError::InvalidPortfolio for a portfolio
/// without a manager. Main queue only.
[[nodiscard]] TrailNode valueTrail(Portfolio& portfolio);

/// The net deposits of `portfolio` at the recent rates: what each row has brought in or taken out,
/// by currency; of very many rows the older ones are one leaf. With `ratesOfDays`, which
/// depositPairs() tells what to have in, each amount stands also at the rate of its own day, as far
/// as that is known; the rate that a row implies serves where the market knew none. Throws as
/// valueTrail() does. Main queue only.
[[nodiscard]] TrailNode depositsTrail(Portfolio& portfolio,
                                      const MarketHistory* ratesOfDays = nullptr);

/// The exchange rates of the currencies in which something was deposited. Main queue only.
[[nodiscard]] MarketNeeds depositPairs(Portfolio& portfolio);

}  // namespace corvane
