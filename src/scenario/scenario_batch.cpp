#include "scenario/scenario_batch.h"

#include <cassert>
#include <utility>

#include "core/market/frozen_equity.h"
#include "core/market/quote_provider.h"
#include "platform/async/dispatch_group.h"
#include "platform/async/dispatch_work_item.h"
#include "scenario/background_disposal.h"

namespace corvane {
namespace {

Result<BatchResultPointer> outcomeOf(const ScenarioAnalyzer& analyzer,
                                     const ScenarioAnalyzer::IndexRange& range,
                                     const InvestmentStrategy& strategy,
                                     const Decimal& initialInvestment) {
  try {
    return batchResult(analyzer, range, strategy, initialInvestment);
  } catch (const Error& error) {
    return failure(error);
  }
}

}  // namespace

/// What the pieces of a batch read, on any thread.
struct ScenarioBatch::Material {
  ScenarioAnalyzer analyzer;
  std::vector<ScenarioAnalyzer::IndexRange> ranges;
  InvestmentStrategy strategy;
  Decimal initialInvestment;
};

/// A batch under way, for the main queue alone.
struct ScenarioBatch::Batch {
  ProgressHandler progressHandler;
  Completion completion;
  std::shared_ptr<QuoteProvider> provider;  ///< kept alive, so that its going fails no run
  std::vector<DispatchWorkItem> items;
  ErrorPointer error;
};

ScenarioBatch::ScenarioBatch()
    : queue_(DispatchQueue::concurrent("ca.orlend.corvane.ScenarioBatch",
                                       QualityOfService::userInitiated)) {}

ScenarioBatch::~ScenarioBatch() {
  reset();
}

void ScenarioBatch::begin(Setting setting, ProgressHandler progressHandler, Completion completion) {
  reset();
  current_ = std::make_shared<Batch>(std::move(progressHandler), std::move(completion),
                                     setting.equity->quoteProvider.lock());
  // Numbering the days of decades takes longer than a window may stand still.
  setting.equity = frozenEquity(*setting.equity);
  queue_->async(
      [this, weakBatch = std::weak_ptr(current_), setting = std::move(setting)]() mutable {
        auto days = tradingDayNumbers(setting.quotes, *setting.equity);
        auto ranges = batchRanges(setting.method, days);
        auto material = std::make_shared<const Material>(
            ScenarioAnalyzer(std::move(setting.equity), std::move(setting.quotes), std::move(days)),
            std::move(ranges), std::move(setting.strategy), setting.initialInvestment);
        DispatchQueue::main()->async(
            [this, weakBatch = std::move(weakBatch), material = std::move(material)] {
              // A batch lives no longer than this object.
              if (const auto batch = weakBatch.lock()) {
                startWork(batch, material);
              }
            });
      });
}

void ScenarioBatch::cancel() {
  if (current_ == nullptr) {
    return;
  }
  for (const DispatchWorkItem& item : current_->items) {
    item.cancel();
  }
  current_ = nullptr;
  sortByPeriod(results_);
}

void ScenarioBatch::reset() {
  cancel();
  if (!results_.empty()) {
    const auto& equity = results_.front()->analysis.portfolio->equity;
    auto provider = equity->quoteProvider.lock();
    disposeElsewhere(std::make_shared<std::vector<BatchResultPointer>>(std::exchange(results_, {})),
                     std::move(provider));
  }
  totalCount_ = 0;
  completedCount_ = 0;
}

void ScenarioBatch::startWork(const std::shared_ptr<Batch>& batch,
                              const MaterialPointer& material) {
  assert(batch == current_ && batch->items.empty());
  totalCount_ = material->ranges.size();
  const DispatchGroup group;
  for (const ScenarioAnalyzer::IndexRange& range : material->ranges) {
    const DispatchWorkItem item([this, weakBatch = std::weak_ptr(batch), material, range] {
      auto outcome =
          outcomeOf(material->analyzer, range, material->strategy, material->initialInvestment);
      DispatchQueue::main()->async([this, weakBatch, outcome = std::move(outcome)]() mutable {
        if (const auto receiver = weakBatch.lock()) {
          take(receiver, std::move(outcome));
        }
      });
    });
    batch->items.push_back(item);
    group.async(queue_, [item] { item.perform(); });
  }
  // The runs hold the provider too, whose place to end is the main queue: so it is held there until
  // the last of them has gone. By then each piece has handed over its outcome.
  group.notify(DispatchQueue::main(),
               [this, weakBatch = std::weak_ptr(batch), provider = batch->provider] {
                 if (const auto ended = weakBatch.lock()) {
                   end(ended);
                 }
               });
}

void ScenarioBatch::take(const std::shared_ptr<Batch>& batch, Result<BatchResultPointer> outcome) {
  assert(batch == current_ && completedCount_ < totalCount_);
  completedCount_ += 1;
  if (outcome) {
    results_.push_back(*std::move(outcome));
  } else {
    batch->error = outcome.error();
  }
  if (batch->progressHandler) {
    batch->progressHandler();
  }
}

void ScenarioBatch::end(const std::shared_ptr<Batch>& batch) {
  assert(batch == current_ && completedCount_ == totalCount_);
  current_ = nullptr;
  sortByPeriod(results_);
  if (batch->completion) {
    batch->completion(batch->error);
  }
}

}  // namespace corvane
