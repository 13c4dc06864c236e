// How the sums of a tax year came about.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "presentation/controls/table_model.h"
#include "presentation/taxes/tax_year_view_controller.h"

namespace corvane {

using TaxAmountOf = std::function<Decimal(const TaxYear::Disposal&)>;

/// The sum over the disposals of `year` in `currency`, of `equity` or where that is null of all, of
/// what `amountOf` has of each; disposals of which that is 0 are left out.
[[nodiscard]] TrailNode disposalsTrail(const std::string& label, const TaxYear& year,
                                       const EquityPointer& equity, const Currency& currency,
                                       const TaxAmountOf& amountOf);

/// One line of the income of a tax year: its rows, at their equivalents or as they were paid.
[[nodiscard]] TrailNode taxIncomeLineTrail(const TaxYear::Income& line, bool atEquivalents);

/// Interest, fees and adjustments of `year` in `currency`.
[[nodiscard]] TrailNode taxAdjustmentsTrail(const TaxYear& year, const Currency& currency);

/// The sum of the income of `year` in `currency`, of the kinds that `counts` takes.
[[nodiscard]] TrailNode taxIncomeTrail(const std::string& label, const TaxYear& year,
                                       const Currency& currency,
                                       const std::function<bool(TransactionType)>& counts);

/// The sum of the deemed gains of `year` in `currency`.
[[nodiscard]] TrailNode deemedGainsTrail(const TaxYear& year, const Currency& currency);

}  // namespace corvane
