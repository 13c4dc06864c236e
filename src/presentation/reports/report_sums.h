// How figures of reports came about that are made of other lines of them.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "presentation/controls/table_model.h"
#include "presentation/reports/income_view_controller.h"
#include "presentation/reports/returns_view_controller.h"

namespace corvane {

/// The return of a month or a year of `report`: its own days, linked. None where what was measured
/// does not link to the figure, as after a debt.
[[nodiscard]] std::optional<TrailNode> periodTrail(const ReturnsReport& report,
                                                   const PeriodReturn& period);

/// What one equity has earned by what all of `report` have.
[[nodiscard]] TrailNode shareOfGainTrail(const ReturnsReport& report, const EquityFigures& figures);

/// The sum over the equities of `report` of what `amountOf` has of each. None where the report has
/// no lines for equities.
[[nodiscard]] std::optional<TrailNode> equitiesTrail(
    const ReturnsReport& report, const std::string& label,
    const std::function<Decimal(const EquityFigures&)>& amountOf);

/// The closing value of `report` as the sum of what led to it, and the part that currencies play as
/// what is left of it.
[[nodiscard]] TrailNode closingTrail(const ReturnsReport& report);
[[nodiscard]] TrailNode currencyTrail(const ReturnsReport& report);

/// The payments of `payments` that `counts` takes, and their sum in `currency`.
[[nodiscard]] TrailNode paymentsTrail(const std::string& label,
                                      const std::vector<IncomePayment>& payments,
                                      const Currency& currency,
                                      const std::function<bool(const IncomePayment&)>& counts);

/// What all of `expected` are expected to pay together; none where one has no rate.
[[nodiscard]] std::optional<TrailNode> expectedTrail(const std::vector<ExpectedIncome>& expected,
                                                     const Currency& currency);

/// What was paid on the shares of today in twelve months, by what they cost, over all of
/// `expected`.
[[nodiscard]] std::optional<TrailNode> yieldOfAllTrail(const std::vector<ExpectedIncome>& expected,
                                                       const Currency& currency);

}  // namespace corvane
