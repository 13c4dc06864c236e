// A strategy tried out on many sub-periods of one stretch of quotes.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "platform/async/dispatch_queue.h"
#include "platform/error.h"
#include "scenario/batch_method.h"
#include "scenario/batch_result.h"

namespace corvane {

/// Runs batches, one at a time, on a concurrent queue. All operations are for the main queue, on
/// which the handlers run too, never before begin() has returned.
///
/// Results belong to the main queue alone: a piece of work hands its result over there, where a
/// piece of a batch that has been cancelled is dropped. So nothing waits for work that runs on, and
/// nothing of an old batch gets into a new one. All that a batch reads is frozen when it begins,
/// and work that runs on after a cancelled batch keeps none of the screen alive.
class ScenarioBatch {
 public:
  /// What to try out.
  struct Setting {
    EquityPointer equity;
    std::vector<Quote> quotes;  ///< in time order
    BatchMethod method = BatchMethod::eachDay;
    InvestmentStrategy strategy;
    Decimal initialInvestment;
  };

  /// Another sub-period is done, well or not; results() and completedCount() tell of it.
  using ProgressHandler = std::function<void()>;
  /// The batch has ended: null, or the error of the sub-period that failed last. What the others
  /// yielded is in results() all the same.
  using Completion = std::function<void(ErrorPointer)>;

  ScenarioBatch();
  ScenarioBatch(const ScenarioBatch&) = delete;
  ScenarioBatch& operator=(const ScenarioBatch&) = delete;
  ~ScenarioBatch();  ///< as reset()

  /// Gives up what is under way and begins anew. Where the equity's provider has gone every
  /// sub-period fails with ScenarioSinglePortfolioManager::EquityMissingQuoteProviderError.
  void begin(Setting setting, ProgressHandler progressHandler, Completion completion);

  /// Keeps work that has not started from running and drops what is still to come; no handler runs
  /// any more. The results so far stay, sorted as at the end. Never waits. Does nothing where
  /// nothing is under way.
  void cancel();

  /// cancel(), and forgets the results.
  void reset();

  /// The results so far in the order in which they came, after the end by start and end.
  [[nodiscard]] const std::vector<BatchResultPointer>& results() const { return results_; }
  [[nodiscard]] bool isRunning() const { return current_ != nullptr; }
  /// How many sub-periods there are; 0 until they have been cut, soon after begin().
  [[nodiscard]] std::size_t totalCount() const { return totalCount_; }
  [[nodiscard]] std::size_t completedCount() const { return completedCount_; }

 private:
  struct Batch;
  struct Material;
  using MaterialPointer = std::shared_ptr<const Material>;

  void startWork(const std::shared_ptr<Batch>& batch, const MaterialPointer& material);
  void take(const std::shared_ptr<Batch>& batch, Result<BatchResultPointer> outcome);
  void end(const std::shared_ptr<Batch>& batch);

  const std::shared_ptr<DispatchQueue> queue_;
  std::shared_ptr<Batch> current_;  ///< null where nothing is under way; its only lasting holder
  std::vector<BatchResultPointer> results_;
  std::size_t totalCount_ = 0;
  std::size_t completedCount_ = 0;
};

}  // namespace corvane
