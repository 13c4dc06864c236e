#include "presentation/overview/portfolios_overview_view_controller.h"

#include <algorithm>
#include <utility>

#include "exchange/exports/report_lines_exporter.h"
#include "ledger/manager/portfolio_manager.h"
#include "platform/async/dispatch_group.h"
#include "platform/text/unicode/isolation.h"
#include "presentation/overview/overview_chart.h"
#include "reports/overview/deposits_over_time.h"
#include "storage/application/watchlist_manager.h"

namespace corvane {

std::shared_ptr<PortfoliosOverviewViewController> PortfoliosOverviewViewController::make(
    ScreenSurroundings surroundings) {
  auto made =
      std::make_shared<PortfoliosOverviewViewController>(Passkey{}, std::move(surroundings));
  made->observe();
  return made;
}

PortfoliosOverviewViewController::PortfoliosOverviewViewController(Passkey /*passkey*/,
                                                                   ScreenSurroundings surroundings)
    : ReportViewController(std::move(surroundings)),
      portfolioTable(overviewPortfolioColumns(
          {[this] { return overview_; }, [this] { return latestQuotes(); }})),
      holdingTable(overviewHoldingColumns(
          {[this] { return overview_; }, [this] { return latestQuotes(); }})),
      currencyTable(overviewCurrencyColumns([this] { return currency_; })) {
  forget("");
}

void PortfoliosOverviewViewController::observe() {
  auto& center = NotificationCenter::defaultCenter();
  const auto follow = [self = weak_from_this()] {
    if (const auto living = self.lock()) {
      living->pricesDidChange();
    }
  };
  observations_.push_back(center.addObserver(
      WatchlistManager::didRefreshPortfolioEquities, nullptr,
      [follow](const std::vector<PortfolioPointer>&) { follow(); }, DispatchQueue::main()));
  observations_.push_back(center.addObserver(
      WatchlistManager::didRefreshWatchlistEquities, nullptr,
      [follow](const EquitySet&) { follow(); }, DispatchQueue::main()));
}

std::shared_ptr<PortfolioManager> PortfoliosOverviewViewController::manager() const {
  return scope_.portfolios.empty() ? nullptr : scope_.portfolios.front()->manager.lock();
}

std::shared_ptr<QuoteProvider> PortfoliosOverviewViewController::latestQuotes() const {
  const auto owner = manager();
  return owner == nullptr ? nullptr : owner->quoteProvider;
}

void PortfoliosOverviewViewController::forget(const std::string& /*message*/) {
  overview_ = nullptr;
  history_ = nullptr;
  market_ = nullptr;
  rates_.clear();
  leftOut_ = {};
  leftOutOfHistory_ = {};
  show();
}

/// Shows the latest prices at once, and asks for the rates and the past prices that are lacking.
void PortfoliosOverviewViewController::askMarket(const std::shared_ptr<QuoteProvider>& quotes) {
  MarketNeeds needs;
  for (const PortfolioPointer& portfolio : scope_.portfolios) {
    addMarketNeeds(needs, *portfolio, scope_.days.lower(), scope_.days.upper(), calendarOf(scope_),
                   currency_);
    addDepositNeeds(needs, *portfolio);
  }
  struct Answer {
    std::shared_ptr<MarketHistory> history;
    DispatchGroup group;
  };
  const auto answer = std::make_shared<Answer>();
  answer->group.enter();
  askRates([answer] { answer->group.leave(); });
  answer->group.enter();
  // The provider is held until it has answered.
  fetchMarketHistory(quotes, needs, scope_.days.lower(), scope_.days.upper(),
                     [answer, quotes](std::shared_ptr<MarketHistory> history) {
                       answer->history = std::move(history);
                       answer->group.leave();
                     });
  answer->group.notify(
      DispatchQueue::main(),
      [answer, take = whileCurrent(*this, [](PortfoliosOverviewViewController& living,
                                             std::shared_ptr<MarketHistory> history) {
                 living.market_ = std::move(history);
                 living.compute();
               })] { take(answer->history); });
  takePresent();
}

void PortfoliosOverviewViewController::pricesDidChange() {
  if (isShown()) {
    askRates([] {});
  }
  showOrRemember();
}

/// Shows the prices known now, or does so when the page is shown.
void PortfoliosOverviewViewController::showOrRemember() {
  if (isShown()) {
    takePresent();
  } else if (!isStale()) {
    reload();
  }
}

/// Asks for the rates that no portfolio needs for its own heading, and nobody else refreshes.
/// `completion` is called once, on the main queue.
void PortfoliosOverviewViewController::askRates(std::function<void()> completion) {
  const auto owner = manager();
  const auto quotes = latestQuotes();
  if (quotes == nullptr || owner->isEditedInBackground()) {
    completion();
    return;
  }
  rates_ = ratesOfOverview(scope_.portfolios, currency_, *quotes);
  EquitySet others;
  for (const PortfolioPointer& portfolio : scope_.portfolios) {
    others.merge(owner->valuationEquities(portfolio));
  }
  std::vector<EquityPointer> asked;
  std::ranges::copy_if(rates_, std::back_inserter(asked),
                       [&](const EquityPointer& pair) { return !others.contains(pair); });
  if (asked.empty()) {
    completion();
    return;
  }
  isAskingRates_ = true;
  quotes->refreshEquities(
      std::move(asked), [self = weak_from_this(), completion = std::move(completion),
                         quotes](const ErrorPointer& /*error*/) mutable {
        DispatchQueue::main()->async([self, completion = std::move(completion), quotes] {
          if (const auto living = self.lock()) {
            living->isAskingRates_ = false;
            living->showOrRemember();
          }
          completion();
        });
      });
}

/// Figures and tables by the prices known now.
void PortfoliosOverviewViewController::takePresent() {
  const auto owner = manager();
  const auto quotes = latestQuotes();
  if (quotes == nullptr || owner->isEditedInBackground()) {
    return;
  }
  overview_ = std::make_shared<const PortfoliosOverview>(
      portfoliosOverview(scope_.portfolios, currency_, *quotes, leftOut_));
  show();
}

void PortfoliosOverviewViewController::compute() {
  ValuationScope valued{.from = scope_.days.lower(),
                        .to = scope_.days.upper(),
                        .equity = nullptr,
                        .leftOut = leftOutOfHistory_.equities,
                        .leftOutCurrencies = leftOutOfHistory_.currencies};
  inquiry_.ask(
      scope_.portfolios,
      [valued, market = market_, calendar = calendarOf(scope_), currency = currency_](
          const ReportInquiry::Ledgers& ledgers, const Cancellation& cancellation) {
        ValuationScope cancellable = valued;
        cancellable.cancellation = cancellation;
        return overviewHistory(ledgers, cancellable, *market, calendar, currency);
      },
      [self = weak_from_this()](OverviewHistory history) {
        if (const auto living = self.lock()) {
          living->take(std::move(history));
        }
      });
  changeHandler();
}

void PortfoliosOverviewViewController::take(OverviewHistory history) {
  history_ = std::make_shared<const OverviewHistory>(std::move(history));
  drawOverview(chart, history_, chartProblem());
  show();
}

/// Why there is no chart; empty where there is one, or will be.
std::string PortfoliosOverviewViewController::chartProblem() const {
  return history_ == nullptr || history_->sum.missing.empty()
             ? ""
             : "There is no chart without past prices of " + namesPhrase(history_->sum.missing) +
                   ".";
}

void PortfoliosOverviewViewController::show() {
  const OverviewTrails trails{[this] { return overview_; }, [this] { return latestQuotes(); }};
  if (overview_ == nullptr) {
    message_ = scope_.portfolios.empty() ? "No portfolios yet." : "";
    figures_.clear();
    notes_.clear();
    portfolioTable.setRecords({});
    holdingTable.setRecords({});
    currencyTable.setRecords({});
    drawOverview(chart, nullptr, message_);
  } else {
    message_ = overview_->holdings.empty() ? "Nothing is held." : "";
    figures_ =
        overviewFigures(overview_, history_, trails, surroundings_.now(), *surroundings_.defaults);
    notes_ = overviewNotes(*overview_, history_.get());
    portfolioTable.setRecords(portfolioRows(*overview_));
    holdingTable.setRecords(holdingRows(*overview_));
    currencyTable.setRecords(overview_->currencies);
  }
  showWarning();
  changeHandler();
}

void PortfoliosOverviewViewController::showWarning() {
  const bool isIncomplete = overview_ != nullptr && !overview_->missing.isEmpty();
  if (isIncomplete && isAskingRates_) {
    return;  // what is missing may be on its way
  }
  warning_ = {};
  if (isIncomplete) {
    warning_ = {"⚠️ Latest prices or rates of " + namesPhrase(overview_->missing.names()) +
                    " could not be had, so there are no totals.",
                true};
    for (const EquityPointer& equity : overview_->missing.equities) {
      if (equity->refreshProblem) {
        warning_.text += " " + *equity->refreshProblem;
        break;
      }
    }
  } else if (history_ != nullptr && !history_->sum.missing.empty()) {
    warning_ = {"⚠️ Past prices or rates of " + namesPhrase(history_->sum.missing) +
                    " could not be had, so there is no chart and no return.",
                true};
  } else if (UnpricedAssets all = leftOut_; true) {
    all.add(leftOutOfHistory_);
    if (!all.isEmpty()) {
      warning_ = {"⚠️ Left out, since no prices or rates could be had: " +
                      namesPhrase(all.names()) + ".",
                  false};
    }
  }
}

void PortfoliosOverviewViewController::retryAction() {
  leftOut_ = {};
  leftOutOfHistory_ = {};
  reload();
}

void PortfoliosOverviewViewController::leaveOutAction() {
  if (overview_ == nullptr) {
    return;
  }
  leftOut_.add(overview_->missing);
  if (history_ != nullptr && market_ != nullptr && !history_->sum.missing.empty()) {
    for (const auto& [equity, error] : market_->errorsByEquity) {
      leftOutOfHistory_.equities.insert(equity);
    }
    for (const std::string& name : history_->sum.missing) {
      if (const auto found = Currency::byCode().find(name); found != Currency::byCode().end()) {
        leftOutOfHistory_.currencies.insert(found->second);
      }
    }
    compute();
  }
  takePresent();
}

std::string PortfoliosOverviewViewController::title() const {
  if (scope_.portfolios.empty()) {
    return "";
  }
  return (scope_.isOnePortfolio() ? isolatedName(scope_.name)
                                  : std::to_string(scope_.portfolios.size()) + " portfolios") +
         ", in " + std::string(currency_.code);
}

void PortfoliosOverviewViewController::openPortfolioRow(std::size_t row) {
  if (row < portfolioTable.numberOfRows() && portfolioTable.records()[row].portfolio != nullptr) {
    openPortfolioHandler(portfolioTable.records()[row].portfolio);
  }
}

void PortfoliosOverviewViewController::openHoldingRow(std::size_t row) {
  if (row < holdingTable.numberOfRows() && holdingTable.records()[row].line.equity != nullptr) {
    openEquityHandler(holdingTable.records()[row].line.equity);
  }
}

std::shared_ptr<PortfolioExporter> PortfoliosOverviewViewController::makeExporter(
    OverviewSection section) const {
  const PortfoliosOverview none{.currency = currency_};
  const PortfoliosOverview& shown = overview_ == nullptr ? none : *overview_;
  UserDefaults* defaults = surroundings_.defaults;
  switch (section) {
    case OverviewSection::portfolios:
      return ReportLinesExporter::ofPortfolios(shown, "All Portfolios", defaults);
    case OverviewSection::holdings:
      return ReportLinesExporter::ofAllHoldings(shown, "All Holdings", defaults);
    case OverviewSection::currencies:
      return ReportLinesExporter::ofCurrencies(shown, "All Currencies", defaults);
  }
  return nullptr;
}

}  // namespace corvane
