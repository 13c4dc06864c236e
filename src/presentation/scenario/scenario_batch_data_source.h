// A strategy on many sub-periods: one row and one bar for each.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/error.h"
#include "platform/system/user_defaults.h"
#include "presentation/scenario/scenario_data_source.h"
#include "scenario/scenario_batch.h"

namespace corvane {

/// Rows come as sub-periods are done, in whatever order; at the end they are sorted by start and
/// end, and the chart is filled. Main queue only.
class ScenarioBatchDataSource : public ScenarioDataSource {
 public:
  using BatchResult = corvane::BatchResult;

  /// A run was begun without a way to cut the period.
  class NoBatchMethodError : public ErrorValue<NoBatchMethodError> {
   public:
    static constexpr std::string_view domain = "ca.orlend.corvane.ScenarioBatchDataSource";
    static constexpr int code = 999;
    [[nodiscard]] std::optional<std::string> description() const override;
    [[nodiscard]] bool hasSameValues(const NoBatchMethodError& /*other*/) const { return true; }
  };

  /// `defaults` must outlive this.
  explicit ScenarioBatchDataSource(const UserDefaults& defaults);

  /// How the period is cut; without it every run fails.
  std::optional<BatchMethod> quoteRangeProvider;
  /// Called when another sub-period is done.
  std::function<void()> progressHandler = [] {};

  void beginAnalysis(const EquityPointer& equity, std::vector<Quote> quotes,
                     const Decimal& initialInvestment, const InvestmentStrategy& strategy,
                     Completion completion) override;
  [[nodiscard]] bool isAnalyzing() const override { return batch_.isRunning(); }
  void cancel() override;
  void reset() override;

  [[nodiscard]] const std::vector<BatchResultPointer>& results() const { return batch_.results(); }
  /// How many sub-periods there are, 0 until they have been cut, and how many are done.
  [[nodiscard]] std::size_t totalCount() const { return batch_.totalCount(); }
  [[nodiscard]] std::size_t completedCount() const { return batch_.completedCount(); }

  [[nodiscard]] std::size_t numberOfRows() const override { return results().size(); }
  [[nodiscard]] std::optional<AttributedText> cellValue(std::string_view ident,
                                                        std::size_t row) const override;
  [[nodiscard]] AttributedText briefCell(std::size_t row, std::size_t column) const override;
  void configureChart(FiscalChartView& chart) const override;
  void updateChart(FiscalChartView& chart) const override;
  [[nodiscard]] std::optional<std::size_t> rowForChartIndex(std::size_t index) const override;

 private:
  [[nodiscard]] std::string periodText(const BatchResult& result) const;
  [[nodiscard]] AttributedText tooltip(std::size_t index) const;
  void fillBars(FiscalChartView& chart) const;

  const UserDefaults& defaults_;
  EquityPointer equity_;  ///< as it was when the run began
  ScenarioBatch batch_;
};

}  // namespace corvane
