// The report of what investments have returned: figures, charts, and the tables that they rest on.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "presentation/controls/equity_combo_box.h"
#include "presentation/reports/record_table.h"
#include "presentation/reports/report_view_controller.h"
#include "presentation/reports/return_chart_view.h"
#include "reports/returns/returns_report.h"
#include "reports/trail/equity_trails.h"

namespace corvane {

/// A line from the opening value to the closing one, or from there to the heading.
struct ReconciliationLine {
  enum class Kind { term, part, sum };
  std::string title;
  Decimal amount;
  Kind kind = Kind::term;
  std::string note = {};
  TrailMaker explain = nullptr;  ///< null where it cannot be explained
};

/// The returns of a portfolio, of one equity of it, or of all portfolios of a workspace. Held by
/// shared pointer only. Main queue only.
class ReturnsViewController : public ReportViewController,
                              public std::enable_shared_from_this<ReturnsViewController> {
  struct Passkey {};

 public:
  /// The symbol of the index that was compared with last.
  static constexpr std::string_view benchmarkUserDefaultsKey = "reports.benchmark";

  [[nodiscard]] static std::shared_ptr<ReturnsViewController> make(ScreenSurroundings surroundings);
  ReturnsViewController(Passkey passkey, ScreenSurroundings surroundings);

  [[nodiscard]] std::string_view tabTitle() const override { return "Returns"; }
  [[nodiscard]] std::shared_ptr<PortfolioExporter> makeExporter() const override;

  // What is chosen.

  /// The index to compare with; none where the box has no equity.
  EquityComboBox benchmarkBox;
  /// The equities of the one portfolio, by symbol; empty for a workspace.
  [[nodiscard]] const std::vector<EquityPointer>& equities() const { return equities_; }
  /// Null for all of them.
  [[nodiscard]] const EquityPointer& chosenEquity() const { return scope_.equity; }
  void chooseEquity(const EquityPointer& equity);

  // What is shown.

  [[nodiscard]] std::string title() const override;
  /// Asks the market again.
  void retryAction();
  /// Leaves out what has no price, for as long as the window is open.
  void leaveOutAction();

  ReturnChartView returnsChart;
  ReturnChartView drawdownChart;
  RecordTable<YearOfReturns> monthTable;
  RecordTable<EquityReturns> equityTable;
  RecordTable<ReconciliationLine> reconciliationTable;

  /// What the user does to a row of equityTable.
  void openRow(std::size_t row);

  /// The last answer; null before there was one.
  [[nodiscard]] const std::shared_ptr<const ReturnsReport>& report() const { return report_; }

 private:
  void forget(const std::string& message) override;
  void scopeDidChange() override;
  void currencyDidChange() override { reload(); }
  void askMarket(const std::shared_ptr<QuoteProvider>& quotes) override;
  void marketDidAnswer(std::shared_ptr<MarketHistory> history);
  void compute();
  void take(ReturnsReport report, const ReportScope& scope);
  void takeMissing(const ReturnsReport& report);
  void takeFigures();
  void clearFigures(std::string message);
  void fetchBenchmark();
  void redrawCharts();
  void gatherNotes();
  [[nodiscard]] std::vector<ReconciliationLine> reconciliation() const;
  void addHeadingLines(std::vector<ReconciliationLine>& lines) const;
  [[nodiscard]] std::optional<BenchmarkReturn> benchmark() const;

  std::vector<EquityPointer> equities_;
  std::shared_ptr<MarketHistory> history_;
  EquitySet leftOut_;
  std::unordered_set<Currency> leftOutCurrencies_;
  std::shared_ptr<const ReturnsReport> report_;
  ReportScope reported_;  ///< what report_ is about
  /// What the lines of report_ for equities were made of; none where it has none.
  std::optional<EquityTrailGround> ground_;

  std::optional<DividendHistory> benchmarkHistory_;
  std::optional<PriceLine> benchmarkRates_;
  std::string benchmarkProblem_;
  int benchmarkGeneration_ = 0;
};

}  // namespace corvane
