// Which row of a ledger a line of a trail comes from.
#pragma once

#include <cstddef>
#include <string>

#include "ledger/portfolio/portfolio.h"
#include "reports/trail/trail_node.h"

namespace corvane {

/// "row 3 of “Savings”" for the row at position 2.
[[nodiscard]] std::string rowText(const Portfolio& portfolio, std::size_t position);

/// Sets source and row of `leaf` to `row` of a portfolio that was called `name`. Any thread.
[[nodiscard]] TrailNode fromRow(TrailNode leaf, const std::string& name, TrailNode::Row row);

/// Sets source and row of `leaf` to the row at `position`: that of the ledger itself where
/// `portfolio` is a copy of it. On the main queue, or on any thread for a FrozenPortfolio.
[[nodiscard]] TrailNode fromRow(TrailNode leaf, Portfolio& portfolio, std::size_t position);

}  // namespace corvane
