// What the report of a tax year lists: its tables, its figures and the rows of its export.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "presentation/taxes/tax_year_view_controller.h"

namespace corvane {

/// What makes the trails of the figures of a disposal.
struct DisposalTrails {
  using Maker = std::function<TrailMaker(const TaxYear::Disposal&)>;
  Maker taxGain;  ///< also of what is denied
  Maker costBase;
  Maker ledgerGain;
};
/// The year that the lines are of, asked for when somebody wants to know how one came about.
using ShownTaxYear = std::function<std::shared_ptr<const TaxYear>()>;

[[nodiscard]] std::vector<RecordTable<TaxYear::Disposal>::Column> disposalColumns(
    const DisposalTrails& trails);
[[nodiscard]] std::vector<RecordTable<TaxYear::Totals>::Column> taxTotalsColumns(
    const ShownTaxYear& year);
[[nodiscard]] std::vector<RecordTable<TaxIncomeLine>::Column> taxIncomeColumns(
    const ShownTaxYear& year);
[[nodiscard]] std::vector<RecordTable<TaxCheckLine>::Column> taxCheckColumns();
[[nodiscard]] std::vector<RecordTable<TaxYear::CostAtEnd>::Column> costAtEndColumns(
    const std::function<TrailMaker(const TaxYear::CostAtEnd&)>& trail);

/// Totals of the year; without disposals one of 0.00 in `currency`.
[[nodiscard]] std::vector<TaxYear::Totals> taxTotals(const TaxYear& year, const Currency& currency);
/// Income by equity, then the sum of each kind, then fees and adjustments.
[[nodiscard]] std::vector<TaxIncomeLine> taxIncomeLines(const TaxYear& year);
/// Deemed gains, then what is not computed.
[[nodiscard]] std::vector<TaxCheckLine> taxCheckLines(const TaxYear& year);

/// The figures of each of `currencies`, the primary ones, with which `year` has to do; of the first
/// where it has to do with none.
[[nodiscard]] std::vector<ReportFigure> taxFigures(const std::shared_ptr<const TaxYear>& year,
                                                   const std::vector<Currency>& currencies);

}  // namespace corvane
