#include "presentation/scenario/scenario_detail_data_source.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <utility>

#include "core/market/frozen_equity.h"
#include "core/market/quote_provider.h"
#include "platform/async/dispatch_queue.h"
#include "presentation/scenario/scenario_text.h"
#include "presentation/text/formatting.h"
#include "presentation/text/table_text.h"
#include "scenario/background_disposal.h"

namespace corvane {
namespace {

using Row = ScenarioPortfolio::Transaction;

constexpr double circleRadius = 8;

Decimal quantityOf(const Row& row) {
  const auto* trade = std::get_if<BasicTransaction::Trade>(&row.basic.kind);
  return trade == nullptr ? Decimal() : trade->sharesAdded;
}

Decimal netEquityOf(const Row& row) {
  return row.runningNetShares * row.mostRecentSharePrice;
}

Decimal totalValueOf(const Row& row) {
  return row.cashNet.value_or(0) + netEquityOf(row);
}

ScenarioEventLook lookOf(const Row& row) {
  return scenarioEventLook(row.eventType.value_or(Row::EventType::open));
}

/// Where there was no price at all, the close of the books has no day.
std::string eventDayText(Date date, const DateFormatter& formatter) {
  return date == Date::distantPast() ? std::string(absentValue) : formatter.string(date);
}

struct EventLine {
  const Row& row;
  const DateFormatter& dates;
  const std::optional<DecimalNumberFormatter>& money;
};

AttributedText scenarioEventCell(const EventLine& line) {
  const ScenarioEventLook look = lookOf(line.row);
  return AttributedText("●", {.colour = look.colour}).append(" " + std::string(look.label));
}

constexpr std::array<ScenarioDataSource::ColumnSpecOf<EventLine>, 8> eventLineColumns = {{
    {{"date", "Date", false, 1000, 100, 250},
     [](const EventLine& line) {
       return AttributedText(eventDayText(line.row.settlementDate(), line.dates));
     }},
    {{"transaction", "Transaction", false, 80, 80, 120}, scenarioEventCell},
    {{"quantity", "Qty", true, 60, 60, 120},
     [](const EventLine& line) { return numericCell(quantityOf(line.row).description()); }},
    {{"price", "Price", true, 90, 90, 120},
     [](const EventLine& line) {
       return scenarioMoneyCell(line.row.mostRecentSharePrice, line.money);
     }},
    {{"netShares", "Net Qty", true, 60, 60, 120},
     [](const EventLine& line) { return numericCell(line.row.runningNetShares.description()); }},
    {{"netEquity", "Net Equity", true, 90, 90, 120},
     [](const EventLine& line) { return scenarioMoneyCell(netEquityOf(line.row), line.money); }},
    {{"netCash", "Net Cash", true, 90, 90, 120},
     [](const EventLine& line) {
       return scenarioMoneyCell(line.row.cashNet.value_or(0), line.money);
     }},
    {{"totalValue", "Total Value", true, 90, 90, 120},
     [](const EventLine& line) { return scenarioMoneyCell(totalValueOf(line.row), line.money); }},
}};

const Row& rowOf(const TransactionPointer& pointer) {
  return dynamic_cast<const Row&>(*pointer);
}

/// The index of the first of `dates`, which are ascending, that is `date`.
std::optional<std::size_t> indexOfDate(const std::vector<Date>& dates, Date date) {
  const auto found = std::ranges::lower_bound(dates, date);
  return found == dates.end() || *found != date
             ? std::nullopt
             : std::optional(static_cast<std::size_t>(found - dates.begin()));
}

/// The returns that `values` stand for; values that are no numbers are left out.
std::vector<ChartEntry> returnsOver(const std::vector<Decimal>& values, const Decimal& initial) {
  const double invested = initial.doubleValue();
  std::vector<ChartEntry> entries;
  entries.reserve(values.size());
  for (std::size_t i = 0; i < values.size(); ++i) {
    const double y = values[i].doubleValue() / invested - 1;
    if (std::isfinite(y)) {
      entries.push_back({static_cast<double>(i), y});
    }
  }
  return entries;
}

/// Where the days of an exchange begin among its quotes; within one day, all quotes.
std::vector<std::pair<double, Date>> startsOfDays(const ScenarioAnalyzer& analyzer) {
  const auto& sessions = analyzer.sessionNumbers;
  const bool isOneDay = sessions.empty() || sessions.front() == sessions.back();
  std::vector<std::pair<double, Date>> starts;
  for (std::size_t i = 0; i < sessions.size(); ++i) {
    if (isOneDay || i == 0 || sessions[i] != sessions[i - 1]) {
      starts.emplace_back(static_cast<double>(i), analyzer.quotes[i].fromDate);
    }
  }
  return starts;
}

ChartDataSet circlesOf(const ScenarioAnalyzer::Analysis& analysis, const std::vector<Date>& dates) {
  ChartDataSet circles{
      .label = "Buy/Sell", .shape = ChartDataSet::Shape::circles, .circleRadius = circleRadius};
  const Decimal initial = analysis.initialInvestment();
  for (const TransactionPointer& pointer : analysis.portfolio->transactions()) {
    const Row& row = rowOf(pointer);
    const auto index = indexOfDate(dates, row.settlementDate());
    const Decimal gain = totalValueOf(row) / initial - 1;
    if (index && !gain.isNaN()) {
      const ScenarioEventLook look = lookOf(row);
      circles.entries.push_back({static_cast<double>(*index), gain.doubleValue()});
      circles.entryColours.push_back(look.colour);
      circles.entrySigns.emplace_back(look.sign);
    }
  }
  return circles;
}

AttributedText detailSummary(const ScenarioAnalyzer::Analysis& analysis) {
  AttributedText text("Yielded ");
  text.append(returnText(analysis.rateOfReturn()).value_or("?"), {.weight = FontWeight::bold});
  return text.append(". Made " + std::to_string(analysis.totalTradesMade) + " trades over " +
                     std::to_string(analysis.totalDaysTradedOn) + " of the " +
                     std::to_string(analysis.totalTradingDays) + " trading days.");
}

}  // namespace

/// A run under way, for the main queue alone but for the flag.
struct ScenarioDetailDataSource::Run {
  Completion completion;
  /// Keeps what has not started from being carried out.
  std::shared_ptr<std::atomic<bool>> isGivenUp = std::make_shared<std::atomic<bool>>(false);
};

/// What a run reads, on another thread.
struct ScenarioDetailDataSource::Order {
  EquityPointer equity;
  std::vector<Quote> quotes;
  Decimal initialInvestment;
  InvestmentStrategy strategy;
  std::shared_ptr<QuoteProvider> provider;  ///< kept alive, so that its going fails no run
};

/// All that is shown, so that the main queue has nothing left to compute.
struct ScenarioDetailDataSource::Outcome {
  std::shared_ptr<const ScenarioAnalyzer> analyzer;
  std::shared_ptr<const ScenarioAnalyzer::Analysis> analysis;  ///< null where a step failed
  std::vector<Decimal> buyAndHoldValues;
  std::vector<Date> quoteDates;
  std::vector<std::pair<double, Date>> dayStarts;
  ChartDataSet transactions;
  ChartDataSet portfolioValues;
  ChartDataSet heldValues;
  ErrorPointer error;
};

ScenarioDetailDataSource::ScenarioDetailDataSource(const UserDefaults& defaults)
    : ScenarioDataSource(eventLineColumns), defaults_(defaults) {}

ScenarioDetailDataSource::~ScenarioDetailDataSource() {
  ScenarioDetailDataSource::reset();
}

void ScenarioDetailDataSource::beginAnalysis(const EquityPointer& equity, std::vector<Quote> quotes,
                                             const Decimal& initialInvestment,
                                             const InvestmentStrategy& strategy,
                                             Completion completion) {
  reset();
  dateFormatter_ = Formatting::equityDateFormatter(*equity, defaults_);
  dateFormatter_.timeStyle = DateFormatter::Style::shortStyle;
  strategy_ = strategy;
  initialInvestment_ = initialInvestment;
  run_ = std::make_shared<Run>(std::move(completion));
  DispatchQueue::global(QualityOfService::userInitiated)
      ->async([this, weakRun = std::weak_ptr(run_), isGivenUp = run_->isGivenUp,
               order = std::make_unique<Order>(frozenEquity(*equity), std::move(quotes),
                                               initialInvestment, strategy,
                                               equity->quoteProvider.lock())]() mutable {
        Outcome outcome;
        if (!*isGivenUp) {
          outcome = carryOut(*order);
        }
        // The place where a provider ends is the main queue.
        DispatchQueue::main()->async([this, weakRun = std::move(weakRun),
                                      provider = std::move(order->provider),
                                      outcome = std::move(outcome)]() mutable {
          // A run lives no longer than this object.
          if (const auto run = weakRun.lock()) {
            run_ = nullptr;
            const ErrorPointer error = outcome.error;
            take(std::move(outcome));
            run->completion(error);
          } else {
            disposeElsewhere(std::make_shared<Outcome>(std::move(outcome)), std::move(provider));
          }
        });
      });
}

ScenarioDetailDataSource::Outcome ScenarioDetailDataSource::carryOut(Order& order) {
  Outcome outcome;
  try {
    auto days = tradingDayNumbers(order.quotes, *order.equity);
    outcome.analyzer = std::make_shared<const ScenarioAnalyzer>(
        order.equity, std::move(order.quotes), std::move(days));
    const ScenarioAnalyzer& analyzer = *outcome.analyzer;
    auto analysis = std::make_shared<const ScenarioAnalyzer::Analysis>(
        analyzer.analyze(std::nullopt, order.strategy, order.initialInvestment));
    auto held =
        analyzer.analyze(std::nullopt, InvestmentStrategy::buyAndHold(), order.initialInvestment);
    outcome.buyAndHoldValues = std::move(held.portfolioValues);
    for (const Quote& quote : analyzer.quotes) {
      outcome.quoteDates.push_back(quote.fromDate);
    }
    const Decimal initial = analysis->initialInvestment();
    outcome.dayStarts = startsOfDays(analyzer);
    outcome.transactions = circlesOf(*analysis, outcome.quoteDates);
    outcome.portfolioValues = {.label = "Strategy Return",
                               .entries = returnsOver(analysis->portfolioValues, initial),
                               .colour = Colour::Name::systemTeal,
                               .lineWidth = 2};
    outcome.heldValues = {.label = "Buy & Hold Return",
                          .entries = returnsOver(outcome.buyAndHoldValues, initial),
                          .colour = Colour::Name::black,
                          .isDashed = true};
    outcome.analysis = std::move(analysis);
  } catch (const Error& error) {
    outcome.error = error.copy();
  }
  return outcome;
}

void ScenarioDetailDataSource::take(Outcome outcome) {
  if (outcome.analysis == nullptr) {
    return;
  }
  analyzer_ = std::move(outcome.analyzer);
  equity_ = analyzer_->equity;
  analysis_ = std::move(outcome.analysis);
  buyAndHoldValues_ = std::move(outcome.buyAndHoldValues);
  quoteDates_ = std::move(outcome.quoteDates);
  dayStarts_ = std::move(outcome.dayStarts);
  transactionsDataSet_ = std::move(outcome.transactions);
  portfolioValueDataSet_ = std::move(outcome.portfolioValues);
  buyAndHoldValuesDataSet_ = std::move(outcome.heldValues);
  summaryString = detailSummary(*analysis_);
}

void ScenarioDetailDataSource::cancel() {
  if (run_ != nullptr) {
    *run_->isGivenUp = true;
    run_ = nullptr;
    summaryString = AttributedText("Cancelled.");
  }
}

void ScenarioDetailDataSource::reset() {
  cancel();
  summaryString.reset();
  if (analyzer_ != nullptr) {
    auto provider = equity_->quoteProvider.lock();
    disposeElsewhere(std::make_shared<Outcome>(Outcome{
                         .analyzer = std::exchange(analyzer_, nullptr),
                         .analysis = std::exchange(analysis_, nullptr),
                         .buyAndHoldValues = *std::exchange(buyAndHoldValues_, std::nullopt),
                         .quoteDates = *std::exchange(quoteDates_, std::nullopt),
                         .dayStarts = std::exchange(dayStarts_, {}),
                         .transactions = std::exchange(transactionsDataSet_, {}),
                         .portfolioValues = std::exchange(portfolioValueDataSet_, {}),
                         .heldValues = std::exchange(buyAndHoldValuesDataSet_, {}),
                         .error = nullptr}),
                     std::move(provider));
  }
  equity_ = nullptr;
}

const ScenarioAnalyzer::Analysis* ScenarioDetailDataSource::analysis() const {
  return analysis_.get();
}

std::unique_ptr<ScenarioHeatMap> ScenarioDetailDataSource::makeHeatMap() const {
  return analyzer_ == nullptr || analyzer_->quotes.empty()
             ? nullptr
             : std::make_unique<ScenarioHeatMap>(analyzer_, strategy_, initialInvestment_);
}

std::size_t ScenarioDetailDataSource::numberOfRows() const {
  return analysis_ == nullptr ? 0 : analysis_->portfolio->transactions().size();
}

const Row& ScenarioDetailDataSource::rowAt(std::size_t row) const {
  return rowOf(analysis_->portfolio->transactions().at(row));
}

std::string ScenarioDetailDataSource::dateText(Date date) const {
  return eventDayText(date, dateFormatter_);
}

AttributedText ScenarioDetailDataSource::briefCell(std::size_t row, std::size_t column) const {
  const Date date = rowAt(row).settlementDate();
  if (columns().at(column).identifier != "date" || date == Date::distantPast()) {
    return {};
  }
  DateFormatter brief = dateFormatter_;
  brief.dateStyle = DateFormatter::Style::shortStyle;
  return AttributedText(brief.string(date));
}

std::optional<AttributedText> ScenarioDetailDataSource::cellValue(std::string_view ident,
                                                                  std::size_t row) const {
  return cellOf<EventLine>(eventLineColumns, ident,
                           {rowAt(row), dateFormatter_, currencyFormatter});
}

void ScenarioDetailDataSource::configureChart(FiscalChartView& chart) const {
  ScenarioDataSource::configureChart(chart);
  chart.keyText = [this](std::size_t index) {
    return quoteDates_ && index < quoteDates_->size() ? dateText((*quoteDates_)[index])
                                                      : std::string();
  };
  chart.tooltipProvider = [this](std::size_t index) { return tooltip(index); };
}

void ScenarioDetailDataSource::updateChart(FiscalChartView& chart) const {
  chart.clear();
  if (analysis_ != nullptr && !quoteDates_->empty()) {
    std::vector<ChartDataSet> lines;
    lines.reserve(2);
    lines.push_back(buyAndHoldValuesDataSet_);
    lines.push_back(portfolioValueDataSet_);
    chart.setNoninteractiveDataSets(std::move(lines));
    chart.interactiveDataSet = transactionsDataSet_;
    chart.prescribedOpeningValue = 0;
    if (!portfolioValueDataSet_.entries.empty()) {
      chart.prescribedClosingValue = portfolioValueDataSet_.entries.back().y;
    }
    chart.addDateLabels(dayStarts_, {quoteDates_->front(), quoteDates_->back()}, equity_->calendar);
    const auto& held = buyAndHoldValuesDataSet_.entries;
    chart.accessibleText =
        equity_->symbol + ", " + dateText(quoteDates_->front()) + " to " +
        dateText(quoteDates_->back()) + ". " +
        summaryString.value_or(AttributedText()).plainText() +
        (held.empty() ? "" : " Buying and holding yielded " + stringForValue(held.back().y) + ".");
  }
  ScenarioDataSource::updateChart(chart);
}

std::optional<std::size_t> ScenarioDetailDataSource::rowForChartIndex(std::size_t index) const {
  if (!quoteDates_ || index >= quoteDates_->size()) {
    return std::nullopt;
  }
  const Date date = (*quoteDates_)[index];
  const auto& rows = analysis_->portfolio->transactions();
  const auto found = std::ranges::lower_bound(
      rows, date, {}, [](const TransactionPointer& row) { return row->settlementDate(); });
  return found == rows.end() || (*found)->settlementDate() != date
             ? std::nullopt
             : std::optional(static_cast<std::size_t>(found - rows.begin()));
}

std::optional<std::size_t> ScenarioDetailDataSource::chartIndexForRow(std::size_t row) const {
  return row < numberOfRows() ? indexOfDate(*quoteDates_, rowAt(row).settlementDate())
                              : std::nullopt;
}

AttributedText ScenarioDetailDataSource::tooltip(std::size_t index) const {
  const auto row = rowForChartIndex(index);
  if (!row) {
    return {};
  }
  const Row& shown = rowAt(*row);
  const auto price =
      currencyFormatter ? currencyFormatter->string(shown.mostRecentSharePrice) : std::nullopt;
  const Decimal gain = totalValueOf(shown) / analysis_->initialInvestment() - 1;
  return AttributedText(std::string(lookOf(shown).label) + " (" + quantityOf(shown).description() +
                        " @ " + price.value_or("?") + "); net gain/loss: " +
                        returnText(gain).value_or("?") + "\n" + dateText(shown.settlementDate()));
}

}  // namespace corvane
