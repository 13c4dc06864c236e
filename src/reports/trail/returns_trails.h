// Why a return is what it is.
#pragma once

#include <optional>
#include <span>

#include "core/money/currency.h"
#include "reports/series/valuation_series.h"
#include "reports/trail/trail_node.h"

namespace corvane {

enum class ReturnsDetail {
  stretches,  ///< from one flow to the next
  days,
};

/// The time-weighted return of `days`, as timeWeightedReturn() has it, in percent: the growth of
/// each stretch between flows, multiplied by years. None where nothing was measured. Any thread.
[[nodiscard]] std::optional<TrailNode> timeWeightedTrail(
    std::span<const ValuationDay> days, const Currency& currency,
    ReturnsDetail detail = ReturnsDetail::stretches);

/// The money-weighted return of `days` for their whole span, in percent: each payment, what it has
/// grown to at the rate, and that all of them come to 0. A note names other rates that do the same.
/// None where there is no rate. Any thread.
[[nodiscard]] std::optional<TrailNode> moneyWeightedTrail(std::span<const ValuationDay> days,
                                                          const Currency& currency);

}  // namespace corvane
