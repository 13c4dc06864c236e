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

/// A figure that was worked out before the ledger was changed, and that its rows no longer give: a
/// leaf that says so.
[[nodiscard]] TrailNode ofOlderLedger(std::string label, const Decimal& value, std::string unit);

}  // namespace corvane
