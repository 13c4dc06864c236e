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

}  // namespace corvane
