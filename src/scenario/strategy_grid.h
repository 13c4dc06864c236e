// A strategy tried out with two of its numbers varied, over one stretch of quotes.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "platform/async/dispatch_queue.h"
#include "platform/error.h"
#include "scenario/scenario_analyzer.h"

namespace corvane {

/// Runs grids, one at a time, on a concurrent queue. All operations are for the main queue, on
/// which the handlers run too, never before begin() has returned. What comes of a grid that has
/// been given up is dropped, and nobody waits for it.
class StrategyGrid {
 public:
  /// A number of the strategy, and the values that it takes.
  struct Axis {
    Decimal InvestmentStrategy::*parameter = nullptr;
    std::vector<Decimal> values;
  };
  struct Setting {
    std::shared_ptr<const ScenarioAnalyzer> analyzer;  ///< of a frozen equity
    InvestmentStrategy strategy;                       ///< what else it says
    Decimal initialInvestment;
    Axis rows;
    Axis columns;
  };

  /// A row is done; cell() and completedCount() tell of it.
  using ProgressHandler = std::function<void()>;
  /// All rows are: null, or the error of the run that failed last, whose cell has no return.
  using Completion = std::function<void(ErrorPointer)>;

  StrategyGrid();
  StrategyGrid(const StrategyGrid&) = delete;
  StrategyGrid& operator=(const StrategyGrid&) = delete;
  ~StrategyGrid();

  /// Gives up what is under way and begins anew.
  void begin(Setting setting, ProgressHandler progressHandler, Completion completion);
  /// Keeps rows that have not started from running; no handler runs any more. What there is stays.
  void cancel();

  [[nodiscard]] bool isRunning() const { return current_ != nullptr; }
  [[nodiscard]] std::size_t totalCount() const { return cells_.size(); }  ///< of rows
  [[nodiscard]] std::size_t completedCount() const { return completedCount_; }

  /// The gain for each unit invested; NaN where nothing was or the run failed, none until it is
  /// done.
  [[nodiscard]] std::optional<Decimal> cell(std::size_t row, std::size_t column) const;
  /// The same of buying and holding.
  [[nodiscard]] const std::optional<Decimal>& buyAndHoldReturn() const { return buyAndHoldReturn_; }
  /// How many cells have a return above that of buying and holding.
  [[nodiscard]] std::size_t cellsAboveHolding() const;

 private:
  struct Run;
  struct RowOutcome;

  [[nodiscard]] static RowOutcome outcomeOfRow(const Setting& setting, std::size_t row);
  void startRow(const std::shared_ptr<Run>& run, std::size_t row);
  void take(const std::shared_ptr<Run>& run, std::size_t row, RowOutcome outcome);

  const std::shared_ptr<DispatchQueue> queue_;
  std::shared_ptr<Run> current_;  ///< null where nothing is under way; its only lasting holder
  std::vector<std::vector<Decimal>> cells_;  ///< a row is empty until it is done
  std::optional<Decimal> buyAndHoldReturn_;
  std::size_t completedCount_ = 0;
};

}  // namespace corvane
