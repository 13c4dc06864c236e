// Why a figure of a ledger is what it is.
#pragma once

#include <cstddef>
#include <optional>

#include "ledger/portfolio/portfolio.h"
#include "reports/trail/trail_node.h"

namespace corvane {

/// The cost base of an equity after the row at `row`, which names one: each row since the holding
/// was last 0, the exact figure and its rounding. Of very many rows the older ones are one opening
/// leaf. None for rows without an equity, and before the ledger has been walked. Main queue only.
[[nodiscard]] std::optional<TrailNode> costBaseTrail(Portfolio& portfolio, std::size_t row,
                                                     const Calendar& calendar);

/// The capital gain of the sale at `row`; none where it is no sale. A note says where gain and cost
/// base do not add up to the cent, since each is rounded by itself. Main queue only.
[[nodiscard]] std::optional<TrailNode> capitalGainTrail(Portfolio& portfolio, std::size_t row,
                                                        const Calendar& calendar);

/// The worth of `portfolio` at the recent prices: each equity, each currency. Throws what
/// PortfolioManager::valuation throws where there is none. Main queue only.
[[nodiscard]] TrailNode valueTrail(Portfolio& portfolio);

/// The net deposits of `portfolio` at the recent rates: what each row has brought in or taken out,
/// by currency. Throws as valueTrail() does. Main queue only.
[[nodiscard]] TrailNode depositsTrail(Portfolio& portfolio);

}  // namespace corvane
