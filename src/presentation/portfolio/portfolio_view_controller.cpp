#include "presentation/portfolio/portfolio_view_controller.h"

#include <algorithm>
#include <array>
#include <utility>

#include "marketdata/chain/switchable_quote_provider.h"
#include "platform/overloaded.h"
#include "platform/system/log.h"
#include "presentation/portfolio/performance_warning.h"
#include "presentation/portfolio/portfolio_chart.h"
#include "presentation/portfolio/portfolio_date_presets.h"
#include "presentation/screen/cache_fallback.h"
#include "presentation/text/formatting.h"
#include "storage/application/watchlist_manager.h"

namespace corvane {
namespace {

std::shared_ptr<PortfolioManager> managerOf(const PortfolioPointer& portfolio) {
  return portfolio == nullptr ? nullptr : portfolio->manager.lock();
}

const PortfolioSnapshot& newestSnapshot(const Portfolio& portfolio) {
  static const PortfolioSnapshot empty;
  const auto& years = portfolio.snapshotsByYear;
  return years.empty() ? empty : years.rbegin()->second;
}

/// Of all equities held the one whose price is the oldest; null where there are none.
EquityPointer stalestEquity(const PortfolioSnapshot& snapshot) {
  EquityPointer stalest;
  const auto dateOf = [](const EquityPointer& equity) {
    return equity->recentDate.value_or(Date::distantPast());
  };
  for (const auto& [equity, holding] : snapshot.equitySnapshots) {
    if (stalest == nullptr || dateOf(equity) < dateOf(stalest)) {
      stalest = equity;
    }
  }
  return stalest;
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
      datesPicker(surroundings.now),
      surroundings_(std::move(surroundings)) {
  datesPicker.setAllowsIntervalSelection(false);
  // No ledger is that long: the first portfolio is shown from its beginning to its end.
  datesPicker.setDates(QueryDatesPicker::earliestPossibleDay, QueryDatesPicker::latestPossibleDay);
  datesPicker.action = [this] { reload(DatesChanged{}); };
  rebuildAssetMenu();
  reload(PortfolioChanged{});
}

void PortfolioViewController::observe() {
  holdings->openEquityHandler = transactions->openEquityHandler =
      gains->openEquityHandler = [self = weak_from_this()](const EquityPointer& equity) {
        if (const auto living = self.lock()) {
          living->openEquityHandler(equity);
        }
      };
  auto& center = NotificationCenter::defaultCenter();
  const auto self = weak_from_this();
  transactions->setReceivesCommands(selectedTabIndex() == transactionsTabIndex);
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
        const auto manager =
            living == nullptr ? nullptr : managerOf(living->currentData_.portfolio);
        if (manager == nullptr || manager->isEditedInBackground()) {
          return;  // The news of that edit brings everything.
        }
        if (std::ranges::find(refreshed, living->currentData_.portfolio) != refreshed.end()) {
          living->refreshHeading();
          living->changeHandler();
          living->fetchWhatWasMissing();
        }
      },
      DispatchQueue::main()));
}

void PortfolioViewController::quoteDataSourceDidChange() {
  const auto manager = managerOf(currentData_.portfolio);
  if (manager != nullptr && !manager->isEditedInBackground()) {
    fetch(manager);
    changeHandler();
  }
}

void PortfolioViewController::setPortfolio(const PortfolioPointer& portfolio) {
  currentData_ = {.portfolio = portfolio,
                  .ymdRange = {datesPicker.startDate(), datesPicker.endDate()}};
  incompleteEquities_.clear();
  incompleteCurrencies_.clear();
  endsOfStoredPrices_.clear();
  chart.noDataText.clear();
  chart.clear();
  rebuildAssetMenu();
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
    refreshHeading();
    rebuildDatePresets(*manager);
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
  fetch(manager);
  changeHandler();
}

void PortfolioViewController::refreshHeading() {
  const PortfolioPointer& portfolio = currentData_.portfolio;
  heading_ = {.name = portfolio->name, .value = "", .summary = {}};
  const PortfolioSnapshot& snapshot = newestSnapshot(*portfolio);
  if (snapshot.currencySnapshots.isEmpty()) {
    heading_.value = "Empty portfolio";
    return;
  }
  std::optional<PortfolioValuation> valuation;
  try {
    if (const auto manager = managerOf(portfolio)) {
      valuation = manager->valuation(portfolio);
    }
  } catch (const Error&) {
    // A price or a rate is not known: the sign below says so.
  }
  if (!valuation) {
    heading_.value = "⚠️";
    heading_.summary = AttributedText("Current portfolio value is indeterminate");
    return;
  }
  heading_.value = Formatting::currentValueText(*valuation);
  heading_.summary = AttributedText("(").append(Formatting::gainText(*valuation)).append(")");
  const EquityPointer stalest = stalestEquity(snapshot);
  if (stalest != nullptr && stalest->recentDate) {
    heading_.summary.append(" as of " +
                            Formatting::equityDateFormatter(*stalest, *surroundings_.defaults)
                                .string(*stalest->recentDate) +
                            ".");
  }
}

void PortfolioViewController::rebuildDatePresets(const PortfolioManager& manager) {
  const Calendar& calendar = manager.calendar;
  const Date now = surroundings_.now();
  const auto today = YearMonthDay::of(now, calendar);
  const auto& rows = currentData_.portfolio->transactions();
  datesPicker.setCalendar(calendar);
  if (!datesPicker.presets().empty()) {
    showsAllTime_ = datesPicker.startDate() == datesPicker.minimumDate() &&
                    datesPicker.endDate() == datesPicker.maximumDate();
  }
  if (rows.empty()) {
    datesPicker.setLimits(QueryDatesPicker::earliestPossibleDay,
                          QueryDatesPicker::latestPossibleDay);
    datesPicker.setDates({today.year, 1, 1}, {today.year, 12, 31});
    datesPicker.setPresets({});
    return;
  }
  const Date lastSettlement = rows.back()->settlementDate();
  const auto latest = YearMonthDay::of(now < lastSettlement ? lastSettlement : now, calendar);
  const auto earliest =
      std::min(YearMonthDay::of(rows.front()->settlementDate(), calendar), latest);
  const ClosedRange<YearMonthDay> days(earliest, latest);
  datesPicker.setLimits(earliest, latest);
  const auto kept = [&](const YearMonthDay& day, const YearMonthDay& otherwise) {
    return !showsAllTime_ && days.contains(day) ? day : otherwise;
  };
  datesPicker.setDates(kept(datesPicker.startDate(), earliest),
                       kept(datesPicker.endDate(), latest));
  datesPicker.setPresets(portfolioDatePresets(days, today));
}

void PortfolioViewController::fetch(const std::shared_ptr<PortfolioManager>& manager) {
  ++fetchesUnderWay_;
  const auto chain = std::dynamic_pointer_cast<SwitchableQuoteProvider>(manager->quoteProvider);
  const auto fallback = chain == nullptr ? nullptr : std::make_shared<CacheFallback>(chain);
  manager->fetchDailySnapshots(
      currentData_.portfolio, currentData_.ymdRange.lower(), currentData_.ymdRange.upper(),
      fallback == nullptr ? manager->quoteProvider : fallback,
      [self = weak_from_this(), fallback, portfolio = currentData_.portfolio,
       days = currentData_.ymdRange](FetchResult result) {
        const auto living = self.lock();
        if (living == nullptr) {
          return;
        }
        --living->fetchesUnderWay_;
        // Of the answers for one portfolio the last to arrive is shown. One for a portfolio that is
        // no longer on the screen has nothing to say about the one that is.
        if (living->currentData_.portfolio == portfolio) {
          if (result) {
            living->endsOfStoredPrices_ =
                fallback == nullptr ? EquityMap<Date>() : fallback->endsOfStoredPrices();
          }
          living->fetchDidEnd(std::move(result));
          // An answer for more days can arrive after the one for the days that were chosen since.
          // What it tells must not stay under the wrong dates.
          if (living->fetchesUnderWay_ == 0 && days != living->currentData_.ymdRange) {
            if (const auto current = managerOf(portfolio)) {
              living->fetch(current);
            }
          }
        }
        living->changeHandler();
      });
}

void PortfolioViewController::fetchDidEnd(FetchResult result) {
  if (result) {
    take(std::move(*result));
  } else {
    surroundings_.presentError(*result.error());
  }
  // The latest rates came with the series of rates.
  refreshHeading();
  rebuildAssetMenu();
  redrawChart();
  showInTabs();
}

/// Asks again where prices or rates could not be had, or only from the cache: an equity that had
/// not been refreshed yet is known better now, and a network that was down may be back.
void PortfolioViewController::fetchWhatWasMissing() {
  if (!incompleteEquities_.empty() || !incompleteCurrencies_.empty() ||
      !endsOfStoredPrices_.empty()) {
    reload(DatesChanged{});
  }
}

void PortfolioViewController::take(PortfolioManager::FetchDailySnapshotsResult result) {
  currentData_.snapshotGroup =
      std::make_shared<const PortfolioSnapshotGroup>(std::move(result.snapshotGroup));
  incompleteEquities_.clear();
  for (const auto& [equity, error] : result.fetchErrorsByEquity) {
    Log::write("Failed to fetch past performance for ", equity->id(), ": ", *error);
    incompleteEquities_.insert(equity);
  }
  incompleteCurrencies_.clear();
  for (const auto& [currency, error] : result.fetchErrorsByCurrency) {
    // The neutral one is that of an equity of which a refresh has told nothing yet.
    if (currency != Currency::noCurrency()) {
      Log::write("Failed to fetch exchange rates for ", currency.code, ": ", *error);
    }
    incompleteCurrencies_.insert(currency);
  }
}

std::size_t PortfolioViewController::selectedAssetIndex() const {
  const auto found = std::ranges::find_if(assetMenu_, [this](const AssetMenuItem& item) {
    return !item.isSeparator && item.asset == currentAsset_;
  });
  return static_cast<std::size_t>(found - assetMenu_.begin());
}

void PortfolioViewController::chooseAsset(std::size_t index) {
  const AssetMenuItem& item = assetMenu_.at(index);
  if (!item.isSeparator) {
    currentAsset_ = item.asset;
    reload(AssetFilterChanged{});
  }
}

void PortfolioViewController::rebuildAssetMenu() {
  availableCurrencies_.clear();
  assetMenu_ = {{.title = "All", .asset = std::nullopt}};
  std::vector<AssetMenuItem> currencies;
  for (const PortfolioAsset& asset : currentData_.assetEntries({})) {
    if (const Currency* cash = asset.cash()) {
      availableCurrencies_.push_back(*cash);
      currencies.push_back({std::string(cash->code), asset});
    } else {
      assetMenu_.push_back({asset.equity()->symbol, asset});
    }
  }
  if (assetMenu_.size() > 1 && !currencies.empty()) {
    assetMenu_.push_back({.title = "", .asset = std::nullopt, .isSeparator = true});
  }
  assetMenu_.insert(assetMenu_.end(), currencies.begin(), currencies.end());
  if (selectedAssetIndex() == assetMenu_.size()) {
    currentAsset_.reset();
  }
}

void PortfolioViewController::redrawChart() {
  drawPortfolioChart(chart, currentData_, currentAsset_);
  refreshWarning();
}

void PortfolioViewController::refreshWarning() {
  std::vector<std::string> symbols;
  std::vector<std::string> codes;
  if (currentData_.snapshotGroup != nullptr) {
    const PortfolioSnapshotGroup& group = *currentData_.snapshotGroup;
    // A rate that only the price of an equity needs is missed as much as that of cash.
    CurrencySet needed = group.currenciesHeldOrTraded;
    for (const EquityPointer& equity : group.equitiesHeldOrTraded) {
      needed.insert(equity->currency);
      if (incompleteEquities_.contains(equity)) {
        symbols.push_back(equity->symbol);
      }
    }
    for (const Currency& currency : incompleteCurrencies_) {
      if (needed.contains(currency)) {
        codes.emplace_back(std::string_view(currency.code));
      }
    }
  }
  std::optional<std::string> lastDay;
  if (!endsOfStoredPrices_.empty()) {
    // The one that stands for all is the oldest: nothing on the screen is older than it says.
    const auto oldest = std::ranges::min_element(endsOfStoredPrices_, {},
                                                 [](const auto& entry) { return entry.second; });
    lastDay = Formatting::equityDateFormatter(*oldest->first, *surroundings_.defaults)
                  .string(oldest->second);
  }
  warning_ = performanceWarning(std::move(symbols), std::move(codes), lastDay);
}

void PortfolioViewController::showInTabs() {
  const std::array<CurrentPortfolioHaving*, numberOfTabs> tabs = {holdings.get(),
                                                                  transactions.get(), gains.get()};
  for (CurrentPortfolioHaving* tab : tabs) {
    tab->setCurrentData(currentData_, std::nullopt);
  }
}

std::size_t PortfolioViewController::selectedTabIndex() const {
  const auto stored = surroundings_.defaults->integer(tabIndexUserDefaultsKey).value_or(0);
  return stored >= 0 && static_cast<std::size_t>(stored) < numberOfTabs
             ? static_cast<std::size_t>(stored)
             : 0;
}

void PortfolioViewController::selectTab(std::size_t index) {
  surroundings_.defaults->set(tabIndexUserDefaultsKey, JSONValue(static_cast<std::int64_t>(index)));
  transactions->setReceivesCommands(index == transactionsTabIndex);
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
