// Why the heading of a portfolio says what it says.
#pragma once

#include <optional>
#include <string>

#include "ledger/portfolio/portfolio.h"
#include "reports/series/market_history.h"
#include "reports/trail/trail_node.h"

namespace corvane {

/// The worth of `portfolio` at the recent prices: each equity, each currency, as
/// PortfolioManager::valuation() has it. Where that has no figure, neither has the root, and its
/// note names what lacks a price or a rate; then equities that are sold out and have no price are
/// listed as well, with 0 shares. Throws PortfolioManagerError::InvalidPortfolio for a portfolio
/// without a manager. With `currency`, in that one and not in the primary currency. Main queue
/// only.
[[nodiscard]] TrailNode valueTrail(Portfolio& portfolio,
                                   const std::optional<Currency>& currency = std::nullopt);

/// The net deposits of `portfolio` at the recent rates: what each row has brought in or taken out,
/// by currency; of very many rows the older ones are one leaf. With `ratesOfDays`, which
/// depositPairs() tells what to have in, each amount stands also at the rate of its own day, as far
/// as that is known; the rate that a row implies serves where the market knew none. Throws as
/// valueTrail() does. With another `currency`, in that one, and without those of the days. Main
/// queue only.
[[nodiscard]] TrailNode depositsTrail(Portfolio& portfolio,
                                      const MarketHistory* ratesOfDays = nullptr,
                                      const std::optional<Currency>& currency = std::nullopt);

/// The exchange rates of the currencies in which something was deposited. Main queue only.
[[nodiscard]] MarketNeeds depositPairs(Portfolio& portfolio);

/// The latest price of `equity`, or the latest rate of a pair: `source` says of what, and the leaf
/// who told it and when. Not known where there is none. Main queue only.
[[nodiscard]] TrailNode latestQuote(std::string label, std::string unit, const std::string& source,
                                    const EquityInfo& equity);

}  // namespace corvane
