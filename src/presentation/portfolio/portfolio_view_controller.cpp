#include "presentation/portfolio/portfolio_view_controller.h"

#include <algorithm>
#include <utility>

#include "presentation/performance/performance_warning.h"
#include "presentation/performance/portfolio_chart.h"
#include "reports/trail/heading_trails.h"
#include "storage/application/watchlist_manager.h"

namespace corvane {
namespace {

std::shared_ptr<PortfolioManager> managerOf(const PortfolioPointer& portfolio) {
  return portfolio == nullptr ? nullptr : portfolio->manager.lock();
}

/// The rates of the days on which something was deposited in `needs`.
void fetchRatesOfDeposits(const PortfolioPointer& portfolio, const MarketNeeds& needs,
                          std::function<void(std::shared_ptr<MarketHistory>)> take) {
  const ReportScope scope{.name = "", .portfolios = {portfolio}};
  const auto quotes = reportQuotes(scope);
  const auto& rows = portfolio->transactions();
  if (quotes == nullptr || rows.empty()) {
    take(std::make_shared<MarketHistory>());
    return;
  }
  const auto dayOf = [&](const TransactionPointer& row) {
    return YearMonthDay::of(row->settlementDate(), calendarOf(scope));
  };
  // The provider is held until it has answered.
  fetchMarketHistory(quotes, needs, dayOf(rows.front()), dayOf(rows.back()),
                     [quotes, take = std::move(take)](std::shared_ptr<MarketHistory> history) {
                       take(std::move(history));
                     });
}

}  // namespace

std::shared_ptr<PortfolioViewController> PortfolioViewController::make(
    ScreenSurroundings surroundings) {
  auto made = std::make_shared<PortfolioViewController>(Passkey{}, std::move(surroundings));
  made->observe();
  return made;
}

PortfolioViewController::PortfolioViewController(Passkey /*passkey*/,
                                                 ScreenSurroundings surroundings)
    : holdings(std::make_shared<PortfolioHoldingsViewController>(surroundings)),
      transactions(std::make_shared<PortfolioTransactionsViewController>(surroundings)),
      gains(std::make_shared<PortfolioGainLossViewController>(surroundings)),
      returns(ReturnsViewController::make(surroundings)),
      income(IncomeViewController::make(surroundings)),
      tabs{holdings.get(), transactions.get(), gains.get(), returns.get(), income.get()},
      datesPicker(surroundings.now),
      surroundings_(std::move(surroundings)) {
  datesPicker.setAllowsIntervalSelection(false);
  // No ledger is that long: the first portfolio is shown from its beginning to its end.
  datesPicker.setDates(QueryDatesPicker::earliestPossibleDay, QueryDatesPicker::latestPossibleDay);
  datesPicker.action = [this] { reload(DatesChanged{}); };
  reload(PortfolioChanged{});
}

void PortfolioViewController::observe() {
  auto& center = NotificationCenter::defaultCenter();
  const auto self = weak_from_this();
  for (std::size_t i = 0; i < tabs.size(); ++i) {
    tabs[i]->setReceivesCommands(i == selectedTabIndex());
    tabs[i]->openEquityHandler = [self](const EquityPointer& equity) {
      if (const auto living = self.lock()) {
        living->openEquityHandler(equity);
      }
    };
    tabs[i]->explainHandler = [self](const TrailMaker& trail) {
      if (const auto living = self.lock()) {
        living->explainHandler(trail, nullptr);
      }
    };
  }
  history_->answerHandler = [self](Result<PortfolioSnapshotGroup> result) {
    if (const auto living = self.lock()) {
      living->fetchDidEnd(std::move(result));
    }
  };
  history_->changeHandler = [self] {
    if (const auto living = self.lock()) {
      living->changeHandler();
    }
  };
  holdings->showReturnsHandler = [self](const EquityPointer& equity) {
    if (const auto living = self.lock()) {
      living->returns->chooseEquity(equity);
      living->selectTab(living->indexOf(*living->returns));
      living->changeHandler();
    }
  };
  transactions->duplicateHandler = [self](const BasicTransaction& original) {
    if (const auto living = self.lock()) {
      living->performSegue(CreateTransaction{living->currentData_.portfolio, original});
    }
  };
  observations_.push_back(center.addObserver(
      PortfolioManager::didChangePortfolio, nullptr,
      [self](const PortfolioManager::PortfolioChange& change) {
        const auto living = self.lock();
        if (living != nullptr && change.portfolio != nullptr &&
            change.portfolio == living->currentData_.portfolio) {
          living->reload(PortfolioChanged{change.transactionChanges});
        }
      },
      DispatchQueue::main()));
  observations_.push_back(center.addObserver(
      WatchlistManager::quoteDataSourceChanged, nullptr,
      [self](const NoPayload&) {
        if (const auto living = self.lock()) {
          living->quoteDataSourceDidChange();
        }
      },
      DispatchQueue::main()));
  observations_.push_back(center.addObserver(
      WatchlistManager::didRefreshPortfolioEquities, nullptr,
      [self](const std::vector<PortfolioPointer>& refreshed) {
        const auto living = self.lock();
        if (living != nullptr &&
            std::ranges::find(refreshed, living->currentData_.portfolio) != refreshed.end()) {
          living->portfolioEquitiesDidRefresh();
        }
      },
      DispatchQueue::main()));
}

void PortfolioViewController::quoteDataSourceDidChange() {
  const auto manager = managerOf(currentData_.portfolio);
  if (manager != nullptr && !manager->isEditedInBackground()) {
    history_->fetch(currentData_.ymdRange);
    changeHandler();
  }
}

void PortfolioViewController::portfolioEquitiesDidRefresh() {
  const auto manager = managerOf(currentData_.portfolio);
  if (manager == nullptr || manager->isEditedInBackground()) {
    return;  // The news of that edit brings everything.
  }
  heading_ = portfolioHeading(currentData_.portfolio, *surroundings_.defaults);
  changeHandler();
  // An equity that had not been refreshed yet is known better now, and a network that was down may
  // be back.
  if (!history_->missing().isEmpty()) {
    reload(DatesChanged{});
  }
}

void PortfolioViewController::setPortfolio(const PortfolioPointer& portfolio) {
  currentData_ = {.portfolio = portfolio,
                  .ymdRange = {datesPicker.startDate(), datesPicker.endDate()}};
  history_->follow(portfolio);
  chart.noDataText.clear();
  chart.clear();
  assetMenu_.offer(currentData_);
  refreshWarning();
  // The tabs must not go on showing, and offering for edits, what is in another portfolio.
  showInTabs();
  reload(PortfolioChanged{});
}

void PortfolioViewController::reload(ReloadReason reason) {
  const auto manager = managerOf(currentData_.portfolio);
  if (manager == nullptr) {
    heading_ = {};
    chart.noDataText = "No portfolio selected.";
    chart.clear();
    showInTabs();
    changeHandler();
    return;
  }
  auto* change = std::get_if<PortfolioChanged>(&reason);
  if (change != nullptr) {
    heading_ = portfolioHeading(currentData_.portfolio, *surroundings_.defaults);
    days_.limit(datesPicker, *currentData_.portfolio, manager->calendar, surroundings_.now());
  }
  currentData_.selectDays({datesPicker.startDate(), datesPicker.endDate()});
  if (std::holds_alternative<AssetFilterChanged>(reason)) {
    redrawChart();
    showInTabs();
    changeHandler();
    return;
  }
  // The rows need no prices. They are shown at once, with what an edit has done to them: until the
  // prices come the user must not select, and delete, rows that are gone, and afterwards his
  // selection must stay.
  transactions->setCurrentData(currentData_,
                               change == nullptr ? std::nullopt : std::move(change->changes));
  history_->fetch(currentData_.ymdRange);
  changeHandler();
}

void PortfolioViewController::fetchDidEnd(Result<PortfolioSnapshotGroup> result) {
  if (result) {
    currentData_.snapshotGroup = std::make_shared<const PortfolioSnapshotGroup>(std::move(*result));
  } else {
    surroundings_.presentError(*result.error());
  }
  // The latest rates came with the series of rates.
  heading_ = portfolioHeading(currentData_.portfolio, *surroundings_.defaults);
  assetMenu_.offer(currentData_);
  redrawChart();
  showInTabs();
}

void PortfolioViewController::chooseAsset(std::size_t index) {
  if (assetMenu_.choose(index)) {
    reload(AssetFilterChanged{});
  }
}

void PortfolioViewController::redrawChart() {
  drawPortfolioChart(chart, currentData_, assetMenu_.currentAsset());
  refreshWarning();
}

void PortfolioViewController::refreshWarning() {
  warning_ = performanceWarning(history_->missing(), currentData_.snapshotGroup.get(),
                                *surroundings_.defaults);
}

void PortfolioViewController::showInTabs() {
  for (PortfolioTab* tab : tabs) {
    tab->setCurrentData(currentData_, std::nullopt);
  }
}

std::size_t PortfolioViewController::indexOf(const PortfolioTab& tab) const {
  return static_cast<std::size_t>(std::ranges::find(tabs, &tab) - tabs.begin());
}

std::size_t PortfolioViewController::selectedTabIndex() const {
  const auto stored = surroundings_.defaults->integer(tabIndexUserDefaultsKey).value_or(0);
  return stored >= 0 && static_cast<std::size_t>(stored) < tabs.size()
             ? static_cast<std::size_t>(stored)
             : 0;
}

void PortfolioViewController::selectTab(std::size_t index) {
  surroundings_.defaults->set(tabIndexUserDefaultsKey, JSONValue(static_cast<std::int64_t>(index)));
  for (std::size_t i = 0; i < tabs.size(); ++i) {
    tabs[i]->setReceivesCommands(i == index);
  }
}

void PortfolioViewController::showTransaction(std::size_t position) {
  const auto manager = managerOf(currentData_.portfolio);
  if (manager == nullptr || position >= currentData_.portfolio->transactions().size()) {
    return;
  }
  const TransactionPointer row = currentData_.portfolio->transactions()[position];
  const auto day = YearMonthDay::of(row->settlementDate(), manager->calendar);
  if (!currentData_.ymdRange.contains(day)) {
    datesPicker.setDates(std::min(datesPicker.startDate(), day),
                         std::max(datesPicker.endDate(), day));
    reload(DatesChanged{});
  }
  selectTab(indexOf(*transactions));
  transactions->showTransaction(row);
  changeHandler();
}

TrailMaker PortfolioViewController::valueTrailMaker() const {
  return currentData_.portfolio == nullptr
             ? TrailMaker()
             : [portfolio = currentData_.portfolio]() -> std::optional<TrailNode> {
    return valueTrail(*portfolio);
  };
}

PortfolioViewController::GainTrail PortfolioViewController::gainTrail() const {
  if (currentData_.portfolio == nullptr) {
    return {};
  }
  const PortfolioPointer& shown = currentData_.portfolio;
  // Filled by the fetch, for the trail that is made after it.
  const auto ratesOfDays = std::make_shared<std::shared_ptr<MarketHistory>>();
  GainTrail gain{.maker = [shown, ratesOfDays]() -> std::optional<TrailNode> {
                   return differenceOf(
                       "Gain: value less net deposits", std::string(shown->primaryCurrency().code),
                       {valueTrail(*shown), depositsTrail(*shown, ratesOfDays->get())});
                 },
                 .fetch = nullptr};
  if (MarketNeeds needs = depositPairs(*shown); !needs.pairs.empty()) {
    gain.fetch = [shown, ratesOfDays, needs = std::move(needs)](std::function<void()> whenThere) {
      fetchRatesOfDeposits(
          shown, needs,
          [ratesOfDays, whenThere = std::move(whenThere)](std::shared_ptr<MarketHistory> history) {
            *ratesOfDays = std::move(history);
            whenThere();
          });
    };
  }
  return gain;
}

void PortfolioViewController::createTransactionAction() {
  if (canCreateTransaction()) {
    performSegue(CreateTransaction{currentData_.portfolio});
  }
}

void PortfolioViewController::editPortfolioAction() {
  if (canEditPortfolio()) {
    performSegue(EditPortfolio{currentData_.portfolio});
  }
}

void PortfolioViewController::deletePortfolioAction() {
  if (currentData_.portfolio != nullptr && deletePortfolioHandler) {
    deletePortfolioHandler(currentData_.portfolio);
  }
}

std::unique_ptr<EditPortfolioViewController> PortfolioViewController::makeEditPortfolioForm()
    const {
  if (currentData_.portfolio == nullptr) {
    return nullptr;
  }
  auto form = std::make_unique<EditPortfolioViewController>();
  form->behaviour =
      EditPortfolioViewController::Modify{currentData_.portfolio, surroundings_.undoManager};
  form->presentError = surroundings_.presentError;
  return form;
}

std::unique_ptr<EditTransactionViewController> PortfolioViewController::makeCreateTransactionForm(
    const CreateTransaction& segue) const {
  if (managerOf(segue.portfolio) == nullptr) {
    return nullptr;
  }
  auto form = std::make_unique<EditTransactionViewController>();
  form->behaviour = EditTransactionViewController::Create{segue.portfolio, segue.original};
  form->presentError = surroundings_.presentError;
  form->now = surroundings_.now;
  form->setWorkspace(documentModel_);
  return form;
}

bool PortfolioViewController::placeOrder(const Order& order, const PortfolioPointer& portfolio) {
  const auto manager = managerOf(portfolio);
  if (manager == nullptr) {
    return true;
  }
  try {
    manager->placeOrder(order, portfolio, surroundings_.undoManager);
  } catch (const Error& error) {
    surroundings_.presentError(error);
    return false;
  }
  if (surroundings_.undoManager != nullptr) {
    surroundings_.undoManager->setActionName("New Transaction");
  }
  return true;
}

}  // namespace corvane
