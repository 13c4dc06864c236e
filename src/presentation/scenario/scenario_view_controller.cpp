#include "presentation/scenario/scenario_view_controller.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "core/market/quote_provider.h"
#include "platform/async/dispatch_queue.h"
#include "presentation/equity/equity_formats.h"

namespace corvane {
namespace {

constexpr std::string_view greeting = "Hello there. Let's get rich!";
constexpr std::string_view loadingText = "Hold tight; loading data…";
constexpr std::string_view failureText = "Uh oh; an error occurred during the analysis.";
constexpr std::string_view undoName = "Strategy Change";
constexpr int mostMoneyDigits = 2;
/// Rows are shown a few at a time: a batch brings hundreds in a second.
constexpr DispatchQueue::Duration reloadDelay{0.1};
/// From the table of an outcome to its chart: each takes a good part of the time in which the
/// window has to answer.
constexpr DispatchQueue::Duration chartDelay{0.001};

DecimalNumberFormatter cellFormatter(const EquityInfo& equity) {
  DecimalNumberFormatter formatter = DecimalNumberFormatter::money(equity.currency);
  formatter.maximumFractionDigits = std::max(mostMoneyDigits, formatter.minimumFractionDigits);
  return formatter;
}

}  // namespace

ScenarioViewController::ScenarioViewController(ScreenSurroundings surroundings,
                                               std::unique_ptr<ScenarioDataSource> dataSource,
                                               const KeyPaths& keyPaths)
    : strategyViewController(surroundings.now),
      surroundings_(std::move(surroundings)),
      dataSource_(std::move(dataSource)),
      keyPaths_(keyPaths),
      inquiry_(MarketInquiry::make(surroundings_.now)),
      summaryTextLabel_(greeting) {
  dataSource_->configureChart(scenarioChartView);
  scenarioChartView.valueSelectedHandler = [this](std::optional<std::size_t> index) {
    chartSelected(index);
  };
}

void ScenarioViewController::connect() {
  const auto self = weak_from_this();
  strategyViewController.parametersChangedHandler = [self] {
    if (const auto living = self.lock()) {
      living->parametersDidChange();
    }
  };
  inquiry_->answerHandler = [self](MarketInquiry::Answer& answer) {
    if (const auto living = self.lock()) {
      living->quotesDidArrive(answer);
    }
  };
  inquiry_->changeHandler = [self] {
    if (const auto living = self.lock()) {
      living->changeHandler();
    }
  };
}

const InvestmentScenario& ScenarioViewController::scenario() const {
  const auto model = documentModel_.lock();
  const auto* kept = model == nullptr
                         ? nullptr
                         : &(model->tradingScenarioSettings.*keyPaths_.lastScenarioProperties);
  return kept != nullptr && *kept ? **kept : InvestmentScenario::defaultScenario();
}

const InvestmentStrategy& ScenarioViewController::strategy() const {
  const auto model = documentModel_.lock();
  const auto* kept = model == nullptr
                         ? nullptr
                         : &(model->tradingScenarioSettings.*keyPaths_.lastStrategyProperties);
  return kept != nullptr && *kept ? **kept : InvestmentStrategy::defaultStrategy();
}

/// False where there is no document to keep them.
bool ScenarioViewController::store(const InvestmentScenario& scenario,
                                   const InvestmentStrategy& strategy) {
  const auto model = documentModel_.lock();
  if (model != nullptr) {
    model->tradingScenarioSettings.*keyPaths_.lastScenarioProperties = scenario;
    model->tradingScenarioSettings.*keyPaths_.lastStrategyProperties = strategy;
  }
  return model != nullptr;
}

void ScenarioViewController::setDocumentModel(std::weak_ptr<WorkspaceModel> model) {
  documentModel_ = std::move(model);
  strategyViewController.loadScenario(scenario(), strategy());
  clearOutcome();
  runWhenShown();
}

void ScenarioViewController::setCurrentEquity(EquityPointer equity) {
  currentEquity_ = std::move(equity);
  inquiry_->stop();
  clearOutcome();
  dataSource_->currencyFormatter =
      currentEquity_ == nullptr ? std::nullopt : std::optional(cellFormatter(*currentEquity_));
  runWhenShown();
}

void ScenarioViewController::setShown(bool isShown) {
  isShown_ = isShown;
  if (isShown_ && isRunDue_) {
    prepare();
  }
}

void ScenarioViewController::runWhenShown() {
  isRunDue_ = true;
  if (isShown_) {
    prepare();
  } else {
    summaryTextLabel_ = AttributedText(greeting);
    changeHandler();
  }
}

void ScenarioViewController::prepare() {
  isRunDue_ = false;
  const auto provider = currentEquity_ == nullptr ? nullptr : currentEquity_->quoteProvider.lock();
  if (provider != nullptr) {
    strategyViewController.loadScenario(scenario(), strategy());
    strategyViewController.prepare(
        *currentEquity_, [equity = currentEquity_](const DateRange& range) {
          const auto living = equity->quoteProvider.lock();
          return living == nullptr ? std::set<QuoteInterval>()
                                   : living->availableIntervals(equity, range);
        });
    // Bars of a spacing that is no longer to be had give way to the next longer ones.
    if (strategyViewController.scenario() != scenario()) {
      store(strategyViewController.scenario(), strategyViewController.strategy());
    }
  }
  run();
}

void ScenarioViewController::run() {
  clearOutcome();
  isOfCacheOnly_ = false;
  if (!makeQuery()) {
    summaryTextLabel_ = AttributedText(greeting);
    inquiry_->stop();
    return;
  }
  summaryTextLabel_ = AttributedText(loadingText);
  inquiry_->ask([self = weak_from_this()] {
    const auto living = self.lock();
    return living == nullptr ? std::nullopt : living->makeQuery();
  });
}

void ScenarioViewController::clearOutcome() {
  isChartDue_ = false;
  dataSource_->reset();
  newestPrice_.reset();
  selectedRow_.reset();
  dataSource_->updateChart(scenarioChartView);
  rowsChangeHandler(false);
}

/// What the run needs; none without an equity, a provider or a period, and for one to come.
std::optional<QuoteQuery> ScenarioViewController::makeQuery() const {
  if (currentEquity_ == nullptr || currentEquity_->quoteProvider.expired()) {
    return std::nullopt;
  }
  const auto range = scenario().dateRange(currentEquity_->calendar);
  const Date now =
      Date::sinceReferenceDate(std::floor(surroundings_.now().timeIntervalSinceReferenceDate()));
  if (!range || now <= range->lower()) {
    return std::nullopt;
  }
  return QuoteQuery{currentEquity_, DateRange(range->lower(), std::min(range->upper(), now)),
                    QuoteQuery::Quotes{scenario().quoteInterval, PriceAdjustment::marketNominal}};
}

void ScenarioViewController::quotesDidArrive(MarketInquiry::Answer& answer) {
  Result<QuoteFetchResult>& result = answer.result;
  if (!result || !result->quotes) {
    const ErrorPointer error =
        result ? QuoteProviderError(QuoteProviderError::QueryNotSatisfied{}).copy()
               : result.error();
    // Where the network is missing the line with the status says so, as long as it is so.
    if (!answer.isRepeatedFailure && !MarketInquiry::isForWantOfNetwork(*error) &&
        !isOfUnknownEquity(*error)) {
      surroundings_.presentError(*error);
    }
    return;
  }
  // While the market cannot be reached the cache answers every attempt, with the same prices.
  if (answer.isFromCacheOnly && std::exchange(isOfCacheOnly_, true)) {
    return;
  }
  isOfCacheOnly_ = answer.isFromCacheOnly;
  clearOutcome();
  if (!result->quotes->empty()) {
    newestPrice_ = result->quotes->back().toDate;
  }
  // A refresh may have told the currency of an equity of which only the symbol was known.
  dataSource_->currencyFormatter = cellFormatter(*answer.query.equity);
  dataSource_->beginAnalysis(answer.query.equity, *std::exchange(result->quotes, std::nullopt),
                             scenario().initialInvestment, strategy(),
                             [self = weak_from_this()](const ErrorPointer& error) {
                               if (const auto living = self.lock()) {
                                 living->analysisDidEnd(error);
                               }
                             });
}

void ScenarioViewController::analysisDidEnd(const ErrorPointer& error) {
  showOutcome();
  if (error != nullptr) {
    summaryTextLabel_ = AttributedText(failureText);
    changeHandler();
    surroundings_.presentError(*error);
  }
}

void ScenarioViewController::showOutcome() {
  // Sorting has moved the rows, so that the one that was selected is another.
  selectedRow_.reset();
  summaryTextLabel_ = dataSource_->summaryString.value_or(AttributedText());
  isChartDue_ = true;
  rowsChangeHandler(false);
  changeHandler();
  DispatchQueue::main()->asyncAfter(chartDelay, [self = weak_from_this()] {
    if (const auto living = self.lock()) {
      living->showChart();
    }
  });
}

void ScenarioViewController::showChart() {
  if (std::exchange(isChartDue_, false)) {
    dataSource_->updateChart(scenarioChartView);
    scenarioChartView.highlight(selectedRow_ ? dataSource_->chartIndexForRow(*selectedRow_)
                                             : std::nullopt);
    changeHandler();
  }
}

void ScenarioViewController::rowsDidArrive() {
  if (std::exchange(isReloadDue_, true)) {
    return;
  }
  DispatchQueue::main()->asyncAfter(reloadDelay, [self = weak_from_this()] {
    if (const auto living = self.lock()) {
      living->isReloadDue_ = false;
      if (living->dataSource_->isAnalyzing()) {
        living->rowsChangeHandler(true);
        living->changeHandler();
      }
    }
  });
}

void ScenarioViewController::parametersDidChange() {
  const InvestmentScenario oldScenario = scenario();
  const InvestmentStrategy oldStrategy = strategy();
  const InvestmentScenario& newScenario = strategyViewController.scenario();
  const InvestmentStrategy& newStrategy = strategyViewController.strategy();
  const bool isChange = newScenario != oldScenario || newStrategy != oldStrategy;
  if (!store(newScenario, newStrategy)) {
    return;
  }
  if (isChange && surroundings_.undoManager != nullptr) {
    surroundings_.undoManager->registerUndo(
        shared_from_this(), [oldScenario, oldStrategy](ScenarioViewController& screen) {
          screen.strategyViewController.setScenario(oldScenario, oldStrategy);
        });
    surroundings_.undoManager->setActionName(std::string(undoName));
  } else if (isChange) {
    surroundings_.documentDidChange();
  }
  // An undone step may be that of a tab which is not on the screen.
  isRunDue_ = !isShown_;
  if (isShown_) {
    run();
  } else {
    clearOutcome();
  }
}

bool ScenarioViewController::isBusy() const {
  return inquiry_->isWaiting() || dataSource_->isAnalyzing() || isChartDue_;
}

ProgressIndicator ScenarioViewController::progress() const {
  return {.isIndeterminate = true, .isAnimated = isBusy()};
}

void ScenarioViewController::cancelAction() {
  if (!isBusy()) {
    return;
  }
  if (dataSource_->isAnalyzing()) {
    dataSource_->cancel();
    showOutcome();
    showChart();
  } else if (isChartDue_) {
    showChart();
  } else {
    summaryTextLabel_ = AttributedText("Cancelled.");
  }
  inquiry_->stop();
}

void ScenarioViewController::runAction() {
  prepare();
}

std::string ScenarioViewController::statusText() const {
  return currentEquity_ == nullptr ? "" : marketStatusText(*inquiry_, newestPrice_);
}

void ScenarioViewController::selectRow(std::optional<std::size_t> row) {
  if (row && *row >= dataSource_->numberOfRows()) {
    return;
  }
  if (row != selectedRow_) {
    selectedRow_ = row;
    scenarioChartView.highlight(row ? dataSource_->chartIndexForRow(*row) : std::nullopt);
    selectionChangeHandler(false);
    changeHandler();
  }
}

void ScenarioViewController::chartSelected(std::optional<std::size_t> index) {
  selectedRow_ = index ? dataSource_->rowForChartIndex(*index) : std::nullopt;
  scenarioChartView.highlight(selectedRow_ ? dataSource_->chartIndexForRow(*selectedRow_)
                                           : std::nullopt);
  selectionChangeHandler(selectedRow_.has_value());
  changeHandler();
}

}  // namespace corvane
