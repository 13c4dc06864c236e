#include "presentation/reports/returns_view_controller.h"

#include <algorithm>
#include <utility>

#include "exchange/exports/report_lines_exporter.h"
#include "ledger/manager/portfolio_manager.h"
#include "platform/text/unicode/isolation.h"
#include "presentation/reports/returns_tables.h"
#include "reports/series/report_days.h"

namespace corvane {
namespace {

bool isLeftOut(const Currency& currency, const std::unordered_set<Currency>& leftOut) {
  return leftOut.contains(currency);
}

/// A report, and the place of the one portfolio that it is about among those asked for; none where
/// it is about several.
struct PlacedReport {
  ReturnsReport report;
  std::optional<std::size_t> place;
};

/// The report of all of `ledgers` together, in `currency`.
PlacedReport reportOf(const std::vector<PortfolioPointer>& ledgers, const ValuationScope& scope,
                      const MarketHistory& history, const Calendar& calendar,
                      const Currency& currency) {
  std::vector<ReturnsReport> reports;
  std::size_t place = 0;
  for (std::size_t i = 0; i < ledgers.size(); ++i) {
    const Currency& primary = ledgers[i]->primaryCurrency();
    if (primary == currency || !isLeftOut(primary, scope.leftOutCurrencies)) {
      reports.push_back(returnsReport(*ledgers[i], scope, history, calendar));
      place = i;
    }
  }
  if (reports.size() == 1 && reports.front().series.currency == currency) {
    return {std::move(reports.front()), place};
  }
  return {combinedReport(reports, currency, history), std::nullopt};
}

}  // namespace

std::shared_ptr<ReturnsViewController> ReturnsViewController::make(
    ScreenSurroundings surroundings) {
  auto made = std::make_shared<ReturnsViewController>(Passkey{}, std::move(surroundings));
  made->benchmarkBox.action = [self = made->weak_from_this()] {
    if (const auto living = self.lock()) {
      const EquityPointer& chosen = living->benchmarkBox.selectedEquity();
      if (chosen != nullptr || living->benchmarkBox.text().empty()) {
        living->surroundings_.defaults->set(benchmarkUserDefaultsKey,
                                            JSONValue(chosen == nullptr ? "" : chosen->id()));
        living->fetchBenchmark();
      }
    }
  };
  return made;
}

ReturnsViewController::ReturnsViewController(Passkey /*passkey*/, ScreenSurroundings surroundings)
    : ReportViewController(std::move(surroundings)),
      monthTable(monthColumns([this] { return report_; })),
      equityTable(equityReturnsColumns(
          [this] { return currency_; },
          {.report = [this] { return report_; }, .ground = [this] { return ground_; }})),
      reconciliationTable(reconciliationColumns([this] { return currency_; })) {
  benchmarkBox.setPlaceholder("None");
  clearFigures("No portfolio selected.");
}

void ReturnsViewController::forget(const std::string& message) {
  report_ = nullptr;
  ground_.reset();
  history_ = nullptr;
  leftOut_.clear();
  leftOutCurrencies_.clear();
  warning_ = {};
  clearFigures(message);
}

void ReturnsViewController::scopeDidChange() {
  equities_.clear();
  if (currentData_.portfolio != nullptr) {
    for (const PortfolioAsset& asset : currentData_.assetEntries({})) {
      if (asset.equity() != nullptr) {
        equities_.push_back(asset.equity());
      }
    }
  }
}

void ReturnsViewController::chooseEquity(const EquityPointer& equity) {
  scope_.equity = equity;
  reload();
}

void ReturnsViewController::retryAction() {
  leftOut_.clear();
  leftOutCurrencies_.clear();
  reload();
}

void ReturnsViewController::leaveOutAction() {
  if (report_ == nullptr || history_ == nullptr) {
    return;
  }
  for (const auto& [equity, error] : history_->errorsByEquity) {
    leftOut_.insert(equity);
  }
  for (const std::string& name : report_->series.missing) {
    if (const auto found = Currency::byCode().find(name); found != Currency::byCode().end()) {
      leftOutCurrencies_.insert(found->second);
    }
  }
  compute();
}

/// Asks for what the scope needs, and then for the figures.
void ReturnsViewController::askMarket(const std::shared_ptr<QuoteProvider>& quotes) {
  MarketNeeds needs;
  for (const PortfolioPointer& portfolio : scope_.portfolios) {
    addMarketNeeds(needs, *portfolio, scope_.days.lower(), scope_.days.upper(), calendarOf(scope_),
                   currency_);
  }
  // The provider is held until it has answered.
  fetchMarketHistory(quotes, needs, scope_.days.lower(), scope_.days.upper(),
                     whileCurrent(*this, [quotes](ReturnsViewController& living,
                                                  std::shared_ptr<MarketHistory> history) {
                       living.marketDidAnswer(std::move(history));
                     }));
  fetchBenchmark();
}

void ReturnsViewController::marketDidAnswer(std::shared_ptr<MarketHistory> history) {
  history_ = std::move(history);
  compute();
}

void ReturnsViewController::compute() {
  const ValuationScope valued{.from = scope_.days.lower(),
                              .to = scope_.days.upper(),
                              .equity = scope_.equity,
                              .leftOut = leftOut_,
                              .leftOutCurrencies = leftOutCurrencies_};
  inquiry_.ask(
      scope_.portfolios,
      [valued, history = history_, calendar = calendarOf(scope_), currency = currency_](
          const ReportInquiry::Ledgers& ledgers, const Cancellation& cancellation) {
        ValuationScope cancellable = valued;
        cancellable.cancellation = cancellation;
        return reportOf(ledgers, cancellable, *history, calendar, currency);
      },
      [self = weak_from_this(), scope = scope_, valued, history = history_,
       calendar = calendarOf(scope_)](PlacedReport placed) {
        if (const auto living = self.lock()) {
          living->ground_.reset();
          if (placed.place) {
            living->ground_ = {scope.portfolios.at(*placed.place), valued, history, calendar};
          }
          living->take(std::move(placed.report), scope);
        }
      });
  changeHandler();
}

void ReturnsViewController::take(ReturnsReport report, const ReportScope& scope) {
  reported_ = scope;
  report_ = std::make_shared<const ReturnsReport>(std::move(report));
  warning_ = {};
  if (!report_->series.missing.empty()) {
    takeMissing(*report_);
  } else if (!report_->timeWeighted.total) {
    clearFigures("Nothing was held in these days.");
  } else {
    takeFigures();
  }
  changeHandler();
}

/// No figure stands for what could not be had.
void ReturnsViewController::takeMissing(const ReturnsReport& report) {
  warning_ = {"⚠️ Prices or rates of " + namesPhrase(report.series.missing) +
                  " could not be had, so there are no figures.",
              true};
  for (const auto& [equity, error] : history_->errorsByEquity) {
    warning_.text += " " + error->description().value_or("");
    break;
  }
  clearFigures("There are no figures without prices.");
}

void ReturnsViewController::takeFigures() {
  message_.clear();
  std::vector<std::string> names;
  for (const EquityPointer& equity : leftOut_) {
    names.push_back(equity->symbol);
  }
  for (const Currency& currency : leftOutCurrencies_) {
    names.emplace_back(currency.code);
  }
  std::ranges::sort(names);
  if (!names.empty()) {
    warning_ = {
        "⚠️ Left out, since no prices or rates could be had: " + namesPhrase(names) + ".",
        false};
  }
  figures_ = returnsFigures(report_);
  monthTable.setRecords(returnGrid(report_->timeWeighted));
  equityTable.setRecords(report_->equities);
  reconciliationTable.setRecords(reconciliation());
  redrawCharts();
}

void ReturnsViewController::clearFigures(std::string message) {
  message_ = std::move(message);
  figures_.clear();
  notes_.clear();
  monthTable.setRecords({});
  equityTable.setRecords({});
  reconciliationTable.setRecords({});
  returnsChart.noDataText = drawdownChart.noDataText = message_;
  returnsChart.clear();
  drawdownChart.clear();
}

/// The chart, the figure and the notes that the benchmark plays a part in.
void ReturnsViewController::redrawCharts() {
  if (report_ == nullptr || !report_->timeWeighted.total) {
    return;
  }
  const auto compared = benchmark();
  const EquityPointer& equity = benchmarkBox.selectedEquity();
  const std::string name = equity == nullptr ? "" : equity->symbol;
  drawReturns(returnsChart, report_->timeWeighted, compared, name);
  drawDrawdowns(drawdownChart, report_->timeWeighted);
  figures_ = returnsFigures(report_);
  if (compared) {
    figures_.push_back(benchmarkFigure(*compared, name, report_->timeWeighted));
  }
  gatherNotes();
}

void ReturnsViewController::gatherNotes() {
  notes_ = report_->notes;
  if (!benchmarkProblem_.empty()) {
    notes_.push_back(benchmarkProblem_);
  } else if (benchmarkHistory_ && !benchmark()) {
    notes_.emplace_back("The market knows no price of the benchmark before these days.");
  }
  const auto isPart = [](const YearOfReturns& line) {
    return std::ranges::any_of(line.months,
                               [](const auto& month) { return month && !month->isWhole; }) ||
           !line.whole.isWhole;
  };
  if (std::ranges::any_of(monthTable.records(), isPart)) {
    notes_.emplace_back("* A part of the month or of the year was measured.");
  }
}

std::vector<ReconciliationLine> ReturnsViewController::reconciliation() const {
  std::vector<ReconciliationLine> lines = bridgeLines(report_, scope_.days);
  if (scope_.isOnePortfolio() && scope_.equity == nullptr && leftOut_.empty() &&
      leftOutCurrencies_.empty()) {
    addHeadingLines(lines);
  }
  return lines;
}

/// From the closing value to the one in the heading, which stands at the latest prices and counts
/// the cash that a portfolio without accounts has piled up.
void ReturnsViewController::addHeadingLines(std::vector<ReconciliationLine>& lines) const {
  const PortfolioPointer& portfolio = scope_.portfolios.front();
  const auto manager = portfolio->manager.lock();
  if (manager == nullptr ||
      scope_.days.upper() != YearMonthDay::of(surroundings_.now(), manager->calendar)) {
    return;
  }
  try {
    const ValueBridge& bridge = report_->series.bridge;
    const Decimal heading = manager->valuation(portfolio).currentValue;
    using enum ReconciliationLine::Kind;
    if (!bridge.dividendsKeptAsCash.isZero()) {
      lines.push_back({"+ Dividends kept as cash", bridge.dividendsKeptAsCash, term,
                       "taken out, as far as returns are concerned"});
    }
    lines.push_back({"± Latest prices and rates",
                     heading - bridge.closing - bridge.dividendsKeptAsCash, term,
                     "the heading goes by these, the closing value by the last closes"});
    lines.push_back({"= Value in the heading", heading, sum});
    Decimal foreign;
    if (!portfolio->snapshotsByYear.empty()) {
      for (const auto& [currency, cash] :
           portfolio->snapshotsByYear.rbegin()->second.currencySnapshots) {
        if (currency != portfolio->primaryCurrency()) {
          const auto rate =
              manager->quoteProvider->exchangeRateEquity(currency, portfolio->primaryCurrency())
                  ->recentPrice;
          foreign += cash.cashOnHand * rate.value_or(0);
        }
      }
    }
    if (!foreign.isZero()) {
      lines.push_back({"of it cash in other currencies", foreign, part,
                       "the chart of performance does not draw it"});
    }
  } catch (const Error&) {
    // Without a latest price there is no heading either, which says so itself.
  }
}

void ReturnsViewController::fetchBenchmark() {
  const auto quotes = reportQuotes(scope_);
  const int generation = ++benchmarkGeneration_;
  benchmarkProblem_.clear();
  if (quotes != nullptr) {
    benchmarkBox.setQuoteProvider(scope_.portfolios.front()->manager.lock()->quoteProvider);
    if (benchmarkBox.selectedEquity() == nullptr && benchmarkBox.text().empty() &&
        benchmarkHistory_ == std::nullopt) {
      const auto stored = surroundings_.defaults->string(benchmarkUserDefaultsKey).value_or("");
      if (!stored.empty()) {
        benchmarkBox.setSelectedEquity(
            scope_.portfolios.front()->manager.lock()->quoteProvider->equityWithId(stored));
      }
    }
  }
  const EquityPointer equity = benchmarkBox.selectedEquity();
  benchmarkHistory_.reset();
  benchmarkRates_.reset();
  if (quotes == nullptr || equity == nullptr) {
    redrawCharts();
    changeHandler();
    return;
  }
  const auto answered = [self = weak_from_this(), generation](auto take) {
    return [self, generation, take = std::move(take)](auto&& answer) {
      const auto living = self.lock();
      if (living != nullptr && living->benchmarkGeneration_ == generation) {
        take(*living, std::forward<decltype(answer)>(answer));
        living->redrawCharts();
        living->changeHandler();
      }
    };
  };
  const YearMonthDay from = scope_.days.lower();
  const YearMonthDay to = scope_.days.upper();
  fetchDividendHistory(
      quotes, equity, from, to,
      answered([quotes](ReturnsViewController& living, Result<DividendHistory> answer) {
        if (answer) {
          living.benchmarkHistory_ = std::move(*answer);
        } else {
          living.benchmarkProblem_ =
              "The benchmark could not be had. " + answer.error()->description().value_or("");
        }
      }));
  if (equity->currency == currency_) {
    return;
  }
  MarketNeeds needs;
  const CurrencyPair pair{equity->currency, currency_};
  needs.pairs.insert(pair);
  fetchMarketHistory(quotes, needs, from, to,
                     answered([pair, quotes](ReturnsViewController& living,
                                             const std::shared_ptr<MarketHistory>& rates) {
                       if (const auto found = rates->rates.find(pair);
                           found != rates->rates.end()) {
                         living.benchmarkRates_ = found->second;
                       }
                     }));
}

std::optional<BenchmarkReturn> ReturnsViewController::benchmark() const {
  const EquityPointer& equity = benchmarkBox.selectedEquity();
  if (!benchmarkHistory_ || equity == nullptr) {
    return std::nullopt;
  }
  if (equity->currency == currency_) {
    return benchmarkReturn(*benchmarkHistory_, nullptr, scope_.days.lower());
  }
  return benchmarkRates_
             ? benchmarkReturn(*benchmarkHistory_, &*benchmarkRates_, scope_.days.lower())
             : std::nullopt;
}

std::string ReturnsViewController::title() const {
  if (scope_.portfolios.empty()) {
    return "";
  }
  // Until a new answer is there, of what the old one is.
  const ReportScope& shown = report_ == nullptr ? scope_ : reported_;
  return (shown.equity == nullptr ? isolatedName(shown.name) : shown.equity->symbol) + ", " +
         mediumDayText(shown.days.lower()) + " – " + mediumDayText(shown.days.upper()) +
         (shown.isOnePortfolio() ? "" : ", in " + std::string(currency_.code));
}

void ReturnsViewController::openRow(std::size_t row) {
  const auto quotes = reportQuotes(scope_);
  if (quotes != nullptr && row < equityTable.numberOfRows()) {
    // The lines are about copies; the screen wants the equity itself.
    openEquityHandler(quotes->equityWithId(equityTable.records()[row].figures.equity->id()));
  }
}

std::shared_ptr<PortfolioExporter> ReturnsViewController::makeExporter() const {
  const bool hasFigures = report_ != nullptr && report_->timeWeighted.total;
  return ReportLinesExporter::ofReturns(hasFigures ? *report_ : ReturnsReport(), benchmark(),
                                        scope_.name, calendarOf(scope_), surroundings_.defaults);
}

}  // namespace corvane
