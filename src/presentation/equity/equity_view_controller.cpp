#include "presentation/equity/equity_view_controller.h"

#include <algorithm>
#include <utility>

#include "platform/async/notification_center.h"
#include "presentation/equity/equity_formats.h"
#include "storage/application/watchlist_manager.h"

namespace corvane {
namespace {

/// Older prices of an equity that nobody else refreshes are refreshed when it is shown.
constexpr double freshSeconds = 60;

/// As `surroundings`, but an equity that is asked for before anything is known of it is no failure:
/// it is asked for again when a refresh has told what it is.
ScreenSurroundings withoutWordsOfUnknown(ScreenSurroundings surroundings) {
  surroundings.presentError = [present = surroundings.presentError](const Error& error) {
    if (!isOfUnknownEquity(error)) {
      present(error);
    }
  };
  return surroundings;
}

}  // namespace

std::shared_ptr<EquityViewController> EquityViewController::make(ScreenSurroundings surroundings) {
  auto made = std::make_shared<EquityViewController>(Passkey{}, std::move(surroundings));
  made->observe();
  return made;
}

EquityViewController::EquityViewController(Passkey /*passkey*/, ScreenSurroundings surroundings)
    : overview(OverviewViewController::make(withoutWordsOfUnknown(surroundings))),
      history(HistoryViewController::make(withoutWordsOfUnknown(surroundings))),
      surroundings_(std::move(surroundings)),
      tabs_{overview, history} {}

void EquityViewController::observe() {
  const auto self = weak_from_this();
  const auto add = [&](const auto& topic, void (EquityViewController::*handle)()) {
    observations_.push_back(NotificationCenter::defaultCenter().addObserver(
        topic, nullptr,
        [self, handle](const auto& /*payload*/) {
          if (const auto living = self.lock()) {
            ((*living).*handle)();
          }
        },
        DispatchQueue::main()));
  };
  add(WatchlistManager::didRefreshWatchlistEquities, &EquityViewController::equitiesDidRefresh);
  add(WatchlistManager::didRefreshPortfolioEquities, &EquityViewController::equitiesDidRefresh);
  add(WatchlistManager::quoteDataSourceChanged, &EquityViewController::passEquityToTabs);
}

void EquityViewController::addTab(const std::shared_ptr<EquityTab>& tab) {
  tabs_.push_back(tab);
  if (auto* taker = dynamic_cast<WorkspaceDocumentModelHaving*>(tab.get())) {
    taker->setDocumentModel(documentModel_);
  }
  tab->setCurrentEquity(currentEquity_);
}

void EquityViewController::selectTab(std::size_t index) {
  if (index == selectedTab_ || index >= tabs_.size()) {
    return;
  }
  tabs_[selectedTab_]->setShown(false);
  selectedTab_ = index;
  tabs_[selectedTab_]->setShown(isShown_);
  changeHandler();
}

void EquityViewController::setCurrentEquity(EquityPointer equity) {
  const auto symbolOf = [](const EquityPointer& shown) {
    return shown == nullptr ? std::string() : shown->symbol;
  };
  const bool isAnother = symbolOf(equity) != symbolOf(currentEquity_) ||
                         (equity == nullptr) != (currentEquity_ == nullptr);
  currentEquity_ = std::move(equity);
  refreshHeading();
  if (isAnother) {
    passEquityToTabs();
    refreshEquity();
  }
  changeHandler();
}

void EquityViewController::setDocumentModel(std::weak_ptr<WorkspaceModel> model) {
  documentModel_ = std::move(model);
  for (const auto& tab : tabs_) {
    if (auto* taker = dynamic_cast<WorkspaceDocumentModelHaving*>(tab.get())) {
      taker->setDocumentModel(documentModel_);
    }
  }
  changeHandler();
}

void EquityViewController::setShown(bool isShown) {
  isShown_ = isShown;
  tabs_[selectedTab_]->setShown(isShown);
}

bool EquityViewController::isWatchlistButtonHidden() const {
  const auto model = documentModel_.lock();
  return model == nullptr || currentEquity_ == nullptr ||
         std::ranges::any_of(model->watchlistEquities, [&](const EquityPointer& watched) {
           return watched->symbol == currentEquity_->symbol;
         });
}

void EquityViewController::addToWatchlistAction() {
  if (!isWatchlistButtonHidden() && addToWatchlistHandler) {
    addToWatchlistHandler(currentEquity_);
    changeHandler();
  }
}

void EquityViewController::refreshHeading() {
  heading_ = equityHeading(currentEquity_, surroundings_.now(), *surroundings_.defaults);
}

/// Fetches the present price of an equity that is only looked at: nobody else does.
void EquityViewController::refreshEquity() {
  const auto provider = currentEquity_ == nullptr ? nullptr : currentEquity_->quoteProvider.lock();
  if (provider == nullptr || isWatchlistButtonHidden()) {
    return;
  }
  if (currentEquity_->isAuthoritative && currentEquity_->recentDate &&
      surroundings_.now().timeIntervalSince(*currentEquity_->recentDate) < freshSeconds) {
    return;
  }
  const bool wasKnown = currentEquity_->isAuthoritative;
  provider->refreshEquities({currentEquity_}, [self = weak_from_this(), equity = currentEquity_,
                                               wasKnown](const ErrorPointer& error) {
    DispatchQueue::main()->async([self, equity, wasKnown, failed = error != nullptr] {
      const auto living = self.lock();
      if (living == nullptr || failed || living->currentEquity_ != equity) {
        return;
      }
      if (!wasKnown) {
        living->passEquityToTabs();
      }
      living->equitiesDidRefresh();
    });
  });
}

void EquityViewController::equitiesDidRefresh() {
  if (currentEquity_ != nullptr) {
    refreshHeading();
    if (!doTabsKnowEquity_ && currentEquity_->isAuthoritative) {
      passEquityToTabs();
    }
    overview->equityDidRefresh();
    changeHandler();
  }
}

void EquityViewController::passEquityToTabs() {
  doTabsKnowEquity_ = currentEquity_ == nullptr || currentEquity_->isAuthoritative;
  for (const auto& tab : tabs_) {
    tab->setCurrentEquity(currentEquity_);
  }
}

void EquityViewController::settingsDidChange() {
  refreshHeading();
  passEquityToTabs();
  changeHandler();
}

}  // namespace corvane
