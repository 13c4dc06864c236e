#include "scenario/strategy_grid.h"

#include <algorithm>
#include <cassert>
#include <utility>

#include "core/market/quote_provider.h"
#include "platform/async/dispatch_work_item.h"

namespace corvane {

/// A grid under way, for the main queue alone but for the setting, which nobody changes.
struct StrategyGrid::Run {
  std::shared_ptr<const Setting> setting;
  ProgressHandler progressHandler;
  Completion completion;
  std::shared_ptr<QuoteProvider> provider;  ///< kept alive, so that its going fails no run
  std::vector<DispatchWorkItem> items;
  ErrorPointer error;
};

struct StrategyGrid::RowOutcome {
  std::vector<Decimal> returns;
  std::optional<Decimal> buyAndHoldReturn;  ///< of the first row
  ErrorPointer error;
};

StrategyGrid::StrategyGrid()
    : queue_(DispatchQueue::concurrent("ca.orlend.corvane.StrategyGrid",
                                       QualityOfService::userInitiated)) {}

StrategyGrid::~StrategyGrid() {
  cancel();
}

void StrategyGrid::begin(Setting setting, ProgressHandler progressHandler, Completion completion) {
  assert(setting.rows.parameter != nullptr && setting.columns.parameter != nullptr);
  assert(setting.rows.parameter != setting.columns.parameter && "a number has one value at a time");
  cancel();
  cells_.assign(setting.rows.values.size(), {});
  buyAndHoldReturn_.reset();
  completedCount_ = 0;
  auto provider = setting.analyzer->equity->quoteProvider.lock();
  current_ =
      std::make_shared<Run>(std::make_shared<const Setting>(std::move(setting)),
                            std::move(progressHandler), std::move(completion), std::move(provider));
  for (std::size_t row = 0; row < cells_.size(); ++row) {
    startRow(current_, row);
  }
}

void StrategyGrid::startRow(const std::shared_ptr<Run>& run, std::size_t row) {
  const DispatchWorkItem item([this, weakRun = std::weak_ptr(run), setting = run->setting,
                               provider = run->provider, row]() mutable {
    auto outcome = outcomeOfRow(*setting, row);
    // The place where a provider ends is the main queue.
    DispatchQueue::main()->async([this, weakRun = std::move(weakRun),
                                  provider = std::move(provider), row,
                                  outcome = std::move(outcome)]() mutable {
      // A run lives no longer than this object.
      if (const auto living = weakRun.lock()) {
        take(living, row, std::move(outcome));
      }
    });
  });
  run->items.push_back(item);
  item.performOn(queue_);
}

StrategyGrid::RowOutcome StrategyGrid::outcomeOfRow(const Setting& setting, std::size_t row) {
  RowOutcome outcome;
  InvestmentStrategy strategy = setting.strategy;
  strategy.*setting.rows.parameter = setting.rows.values[row];
  const auto returnOf = [&](const InvestmentStrategy& tried) {
    try {
      return setting.analyzer->analyze(std::nullopt, tried, setting.initialInvestment)
          .rateOfReturn();
    } catch (const Error& error) {
      outcome.error = error.copy();
      return Decimal::nan();
    }
  };
  for (const Decimal& value : setting.columns.values) {
    strategy.*setting.columns.parameter = value;
    outcome.returns.push_back(returnOf(strategy));
  }
  if (row == 0) {
    outcome.buyAndHoldReturn = returnOf(InvestmentStrategy::buyAndHold());
  }
  return outcome;
}

void StrategyGrid::take(const std::shared_ptr<Run>& run, std::size_t row, RowOutcome outcome) {
  assert(run == current_ && completedCount_ < cells_.size());
  completedCount_ += 1;
  cells_[row] = std::move(outcome.returns);
  if (outcome.buyAndHoldReturn) {
    buyAndHoldReturn_ = outcome.buyAndHoldReturn;
  }
  if (outcome.error != nullptr) {
    run->error = outcome.error;
  }
  if (completedCount_ < cells_.size()) {
    run->progressHandler();
  } else {
    current_ = nullptr;
    run->completion(run->error);
  }
}

void StrategyGrid::cancel() {
  if (current_ != nullptr) {
    for (const DispatchWorkItem& item : current_->items) {
      item.cancel();
    }
    current_ = nullptr;
  }
}

std::optional<Decimal> StrategyGrid::cell(std::size_t row, std::size_t column) const {
  const auto& returns = cells_.at(row);
  return column < returns.size() ? std::optional(returns[column]) : std::nullopt;
}

std::size_t StrategyGrid::cellsAboveHolding() const {
  std::size_t count = 0;
  for (const auto& returns : cells_) {
    count += static_cast<std::size_t>(std::ranges::count_if(returns, [&](const Decimal& found) {
      return buyAndHoldReturn_ && !found.isNaN() && found > *buyAndHoldReturn_;
    }));
  }
  return count;
}

}  // namespace corvane
