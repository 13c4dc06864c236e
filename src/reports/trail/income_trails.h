// Why a yield or an expected income is what it is.
#pragma once

#include <optional>

#include "reports/income/expected_income.h"
#include "reports/trail/trail_node.h"

namespace corvane {

/// The yield on cost of `equity` in `portfolio`, in percent: each payment of the last twelve months
/// by share, on the shares of today, by the cost base. None where the cost base is not above 0. On
/// the main queue, or on any thread for a frozen ledger.
[[nodiscard]] std::optional<TrailNode> yieldOnCostTrail(Portfolio& portfolio,
                                                        const EquityPointer& equity,
                                                        const YearMonthDay& today,
                                                        const Calendar& calendar);

/// The same by the value at the recent price, and at `rate` to the primary currency. None where the
/// equity has no recent price.
[[nodiscard]] std::optional<TrailNode> yieldOnValueTrail(Portfolio& portfolio,
                                                         const EquityPointer& equity,
                                                         const Decimal& rate,
                                                         const YearMonthDay& today,
                                                         const Calendar& calendar);

/// What `income` is expected to bring in the next twelve months: each payment, and at 0 what was
/// left out, with the reason. None without a rate. Any thread.
[[nodiscard]] std::optional<TrailNode> projectionTrail(const ExpectedIncome& income);

}  // namespace corvane
