// One run of a strategy: every row of the simulated ledger, and the returns over time.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/system/user_defaults.h"
#include "platform/text/formats/date_formatter.h"
#include "presentation/scenario/scenario_data_source.h"
#include "presentation/scenario/scenario_heat_map.h"
#include "scenario/scenario_analyzer.h"

namespace corvane {

/// The rows of the table are those of the ledger; an index of the chart is that of a quote, of
/// which many have no row and a few have several. Main queue only.
class ScenarioDetailDataSource : public ScenarioDataSource {
 public:
  /// `defaults` must outlive this.
  explicit ScenarioDetailDataSource(const UserDefaults& defaults);
  ~ScenarioDetailDataSource() override;

  void beginAnalysis(const EquityPointer& equity, std::vector<Quote> quotes,
                     const Decimal& initialInvestment, const InvestmentStrategy& strategy,
                     Completion completion) override;
  [[nodiscard]] bool isAnalyzing() const override { return run_ != nullptr; }
  void cancel() override;
  void reset() override;

  /// What the run has brought; null and none while there is nothing.
  [[nodiscard]] const ScenarioAnalyzer::Analysis* analysis() const;
  [[nodiscard]] const std::optional<std::vector<Date>>& quoteDates() const { return quoteDates_; }
  /// What holding would have been worth at each quote.
  [[nodiscard]] const std::optional<std::vector<Decimal>>& buyAndHoldValues() const {
    return buyAndHoldValues_;
  }

  /// A map of what the strategy of the run yields with other numbers, over the same quotes; null
  /// where there is no run or there are no quotes.
  [[nodiscard]] std::unique_ptr<ScenarioHeatMap> makeHeatMap() const;

  [[nodiscard]] std::size_t numberOfRows() const override;
  [[nodiscard]] std::optional<AttributedText> cellValue(std::string_view ident,
                                                        std::size_t row) const override;
  [[nodiscard]] AttributedText briefCell(std::size_t row, std::size_t column) const override;
  void configureChart(FiscalChartView& chart) const override;
  void updateChart(FiscalChartView& chart) const override;
  /// The first row that was made on the quote.
  [[nodiscard]] std::optional<std::size_t> rowForChartIndex(std::size_t index) const override;
  [[nodiscard]] std::optional<std::size_t> chartIndexForRow(std::size_t row) const override;

  // The series of the chart.

  [[nodiscard]] const ChartDataSet& portfolioValueDataSet() const { return portfolioValueDataSet_; }
  [[nodiscard]] const ChartDataSet& buyAndHoldValuesDataSet() const {
    return buyAndHoldValuesDataSet_;
  }
  [[nodiscard]] const ChartDataSet& transactionsDataSet() const { return transactionsDataSet_; }

 private:
  struct Run;
  struct Order;
  struct Outcome;

  [[nodiscard]] static Outcome carryOut(Order& order);
  void take(Outcome outcome);
  [[nodiscard]] const ScenarioPortfolio::Transaction& rowAt(std::size_t row) const;
  [[nodiscard]] AttributedText tooltip(std::size_t index) const;
  [[nodiscard]] std::string dateText(Date date) const;

  const UserDefaults& defaults_;
  std::shared_ptr<Run> run_;  ///< null where nothing is under way; its only lasting holder
  EquityPointer equity_;      ///< as it was when the run began
  InvestmentStrategy strategy_;
  Decimal initialInvestment_;
  std::shared_ptr<const ScenarioAnalyzer> analyzer_;
  std::shared_ptr<const ScenarioAnalyzer::Analysis> analysis_;
  std::optional<std::vector<Date>> quoteDates_;
  std::optional<std::vector<Decimal>> buyAndHoldValues_;
  std::vector<std::pair<double, Date>> dayStarts_;  ///< indexes of quotes, for labels
  DateFormatter dateFormatter_;
  ChartDataSet transactionsDataSet_;
  ChartDataSet portfolioValueDataSet_;
  ChartDataSet buyAndHoldValuesDataSet_;
};

}  // namespace corvane
