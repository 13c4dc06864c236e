// The cost of what was sold, as the tax law of the United Kingdom has it.
#pragma once

#include <span>

#include "reports/tax/tax_walk.h"

namespace corvane {

/// Sales are matched with purchases of so many days after them at most.
inline constexpr int daysOfMatching = 30;

/// Walks `rows` as walkTaxes() does. Shares that a taxable holder sells are matched with his
/// purchases of the same day, then with those of the next 30 days, the earliest first, and then
/// with his pool at its average cost (Taxation of Chargeable Gains Act 1992, ss. 104, 105 and
/// 106A). Purchases that were matched never enter the pool. What somebody else buys plays no part,
/// and nothing is denied. A disposal is provisional as long as a purchase may still change it.
[[nodiscard]] TaxWalk matchShares(std::span<const TaxRow> rows, std::span<const TaxHolder> holders,
                                  const TaxRules& rules);

}  // namespace corvane
