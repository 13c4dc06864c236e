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
#include "presentation/reports/report_scope.h"
#include "presentation/reports/report_text.h"
#include "presentation/reports/return_chart_view.h"
#include "presentation/screen/current_portfolio_having.h"
#include "presentation/screen/screen_surroundings.h"
#include "reports/inquiry/report_inquiry.h"
#include "reports/returns/returns_report.h"

namespace corvane {

/// A line from the opening value to the closing one, or from there to the heading.
struct ReconciliationLine {
  enum class Kind { term, part, sum };
  std::string title;
  Decimal amount;
  Kind kind = Kind::term;
  std::string note = {};
};

/// The returns of a portfolio, of one equity of it, or of all portfolios of a workspace. It asks
/// the market only while it is shown, computes on the queue of reports, and drops answers that have
/// been overtaken; until a new one is there the old one stays. Held by shared pointer only. Main
/// queue only.
class ReturnsViewController : public PortfolioTab,
                              public std::enable_shared_from_this<ReturnsViewController> {
  struct Passkey {};

 public:
  /// The symbol of the index that was compared with last.
  static constexpr std::string_view benchmarkUserDefaultsKey = "reports.benchmark";

  [[nodiscard]] static std::shared_ptr<ReturnsViewController> make(ScreenSurroundings surroundings);
  ReturnsViewController(Passkey passkey, ScreenSurroundings surroundings);

  /// Called when anything but the charts and the tables has changed, which have handlers of their
  /// own.
  std::function<void()> changeHandler = [] {};

  // As a tab of a portfolio.
  [[nodiscard]] const PortfolioDataSlice& currentData() const override { return currentData_; }
  void setCurrentData(PortfolioDataSlice data,
                      const std::optional<TransactionChanges>& changes) override;
  [[nodiscard]] std::string_view tabTitle() const override { return "Returns"; }
  [[nodiscard]] std::shared_ptr<PortfolioExporter> makeExporter() const override;
  [[nodiscard]] bool hasOwnChart() const override { return true; }
  /// A tab that is not selected is not shown.
  void setReceivesCommands(bool receivesCommands) override { setShown(receivesCommands); }

  // As a report of a workspace.

  /// Reports on `scope`; the same one once more looks at ledgers and prices anew.
  void setScope(ReportScope scope);
  [[nodiscard]] const ReportScope& scope() const { return scope_; }
  void setShown(bool isShown);

  // What is chosen.

  /// The index to compare with; none where the box has no equity.
  EquityComboBox benchmarkBox;
  /// The equities of the one portfolio, by symbol; empty for a workspace.
  [[nodiscard]] const std::vector<EquityPointer>& equities() const { return equities_; }
  /// Null for all of them.
  [[nodiscard]] const EquityPointer& chosenEquity() const { return scope_.equity; }
  void chooseEquity(const EquityPointer& equity);
  /// In which money can be reported; more than one only for portfolios of several.
  [[nodiscard]] const std::vector<Currency>& currencies() const { return currencies_; }
  [[nodiscard]] const Currency& currency() const { return currency_; }
  void chooseCurrency(std::size_t index);

  // What is shown.

  /// Whether prices or figures are being waited for.
  [[nodiscard]] bool isBusy() const { return isFetching_ || inquiry_.isAsking(); }
  /// Of what in which days, in a sentence.
  [[nodiscard]] std::string title() const;
  /// In place of figures; empty where there are some.
  [[nodiscard]] const std::string& message() const { return message_; }
  [[nodiscard]] const std::vector<ReportFigure>& figures() const { return figures_; }
  /// What the reader should know of the figures, a sentence each.
  [[nodiscard]] const std::vector<std::string>& notes() const { return notes_; }
  [[nodiscard]] const ReportWarning& warning() const { return warning_; }
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
  void reload();
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

  ScreenSurroundings surroundings_;
  PortfolioDataSlice currentData_;
  ReportScope scope_;
  std::vector<EquityPointer> equities_;
  std::vector<Currency> currencies_;
  Currency currency_ = Currency::cad();
  bool isShown_ = false;
  bool isStale_ = false;  ///< to be made anew when it is shown
  bool isFetching_ = false;
  int generation_ = 0;  ///< of the question to the market
  std::shared_ptr<MarketHistory> history_;
  EquitySet leftOut_;
  std::unordered_set<Currency> leftOutCurrencies_;
  std::shared_ptr<const ReturnsReport> report_;
  ReportScope reported_;  ///< what report_ is about

  std::optional<DividendHistory> benchmarkHistory_;
  std::optional<PriceLine> benchmarkRates_;
  std::string benchmarkProblem_;
  int benchmarkGeneration_ = 0;

  std::string message_;
  std::vector<ReportFigure> figures_;
  std::vector<std::string> notes_;
  ReportWarning warning_;
  ReportInquiry inquiry_;
};

}  // namespace corvane
