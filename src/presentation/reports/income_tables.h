// What the report of income lists: its tables, its chart, its figures and the rows of its export.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "presentation/reports/income_view_controller.h"

namespace corvane {

/// Shared with all that tells how a figure came about; a payment has an equivalent.
using PaidIncome = std::shared_ptr<const std::vector<IncomePayment>>;

/// `currency` is asked for whenever a cell is made, `payments` when somebody wants to know how it
/// came about.
[[nodiscard]] std::vector<RecordTable<IncomeOfYear>::Column> incomeMonthColumns(
    const std::function<Currency()>& currency, const std::function<PaidIncome()>& payments);

/// What trails of the table of expectations need of the moment.
struct IncomeMoment {
  YearMonthDay today;
  Calendar calendar;
};

[[nodiscard]] std::vector<RecordTable<ExpectedIncome>::Column> expectedIncomeColumns(
    const std::function<IncomeMoment()>& moment);

/// The lines of `year`, by symbol, and their sum.
[[nodiscard]] std::vector<IncomeOfYear> incomeOfYear(const std::vector<IncomePayment>& payments,
                                                     int year);

/// Draws what was paid, month by month, and what is declared and estimated for the next twelve, as
/// bars on top of each other. With `isByYear` the months of a year stand beside those of others.
void drawIncome(IncomeChartView& chart, const std::vector<IncomePayment>& payments,
                const std::vector<ExpectedIncome>& expected, const Currency& currency,
                const YearMonthDay& today, bool isByYear);

/// The figures in one row, with all that tells how they came about.
[[nodiscard]] std::vector<ReportFigure> incomeFigures(const PaidIncome& payments,
                                                      const std::vector<ExpectedIncome>& expected,
                                                      const Currency& currency,
                                                      const YearMonthDay& today);

}  // namespace corvane
