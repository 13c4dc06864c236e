// What the report of returns lists: columns of its tables, its figures and the rows of its export.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "presentation/reports/report_text.h"
#include "presentation/reports/returns_view_controller.h"

namespace corvane {

/// `report` is asked for when somebody wants to know how a return came about.
[[nodiscard]] std::vector<RecordTable<YearOfReturns>::Column> monthColumns(
    const std::function<std::shared_ptr<const ReturnsReport>()>& report);
/// What trails of the table of equities need: the report and what it was made of.
struct EquityTrails {
  std::function<std::shared_ptr<const ReturnsReport>()> report;
  std::function<std::optional<EquityTrailGround>()> ground;
};

/// `currency` is asked for whenever a cell is made.
[[nodiscard]] std::vector<RecordTable<EquityReturns>::Column> equityReturnsColumns(
    std::function<Currency()> currency, const EquityTrails& trails);
[[nodiscard]] std::vector<RecordTable<ReconciliationLine>::Column> reconciliationColumns(
    std::function<Currency()> currency);

/// The figures in one row. `report` lives as long as somebody may ask how they came about.
[[nodiscard]] std::vector<ReportFigure> returnsFigures(
    const std::shared_ptr<const ReturnsReport>& report);
[[nodiscard]] ReportFigure benchmarkFigure(const BenchmarkReturn& benchmark,
                                           const std::string& name,
                                           const TimeWeightedReturn& returns);

/// The bridge from the opening value to the closing one.
[[nodiscard]] std::vector<ReconciliationLine> bridgeLines(
    const std::shared_ptr<const ReturnsReport>& report, const ClosedRange<YearMonthDay>& days);

}  // namespace corvane
