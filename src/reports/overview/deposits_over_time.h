// What had been put into portfolios by each day of a series.
#pragma once

#include <span>
#include <vector>

#include "ledger/portfolio/portfolio.h"
#include "reports/series/market_history.h"
#include "reports/series/valuation_series.h"

namespace corvane {

/// The net deposits of `portfolios` at the end of each of `days`, since the start of their ledgers
/// and at the rates of each day: what was deposited in another currency moves with its rate, as in
/// the chart of a portfolio. Empty where a rate is not known on a day that needs it. On the main
/// queue, or on any thread for copies. O(rows + days × currencies).
[[nodiscard]] std::vector<Decimal> depositsOverTime(std::span<const PortfolioPointer> portfolios,
                                                    std::span<const ValuationDay> days,
                                                    const Currency& currency,
                                                    const MarketHistory& history,
                                                    const Calendar& calendar);

/// Adds the rates that these deposits need beside those that valuing `portfolio` needs. Main queue
/// only.
void addDepositNeeds(MarketNeeds& needs, const Portfolio& portfolio);

}  // namespace corvane
