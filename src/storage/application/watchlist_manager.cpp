#include "storage/application/watchlist_manager.h"

#include <chrono>
#include <iterator>

#include "platform/system/log.h"

namespace corvane {
namespace {

double secondsOf(DispatchQueue::Duration duration) {
  return std::chrono::duration<double>(duration).count();
}

EquitySet difference(EquitySet equities, const EquitySet& others) {
  std::erase_if(equities, [&](const EquityPointer& equity) { return others.contains(equity); });
  return equities;
}

/// What a valuation of `portfolios` needs; one that cannot be listed needs nothing.
EquitySet valuationEquities(const std::vector<PortfolioPointer>& portfolios) {
  EquitySet equities;
  for (const auto& portfolio : portfolios) {
    if (const auto manager = portfolio->manager.lock()) {
      try {
        equities.merge(manager->valuationEquities(portfolio));
      } catch (const Error&) {  // It has nothing to be refreshed then.
      }
    }
  }
  return equities;
}

}  // namespace

std::shared_ptr<WatchlistManager> WatchlistManager::start(OpenModels openModels,
                                                          Intervals intervals) {
  auto manager = std::make_shared<WatchlistManager>(Passkey{}, std::move(openModels), intervals);
  manager->refreshWatchlist();
  manager->refreshPortfolios();
  manager->dataSourceObservation_ = NotificationCenter::defaultCenter().addObserver(
      quoteDataSourceChanged, nullptr,
      [weakManager = std::weak_ptr(manager)](const NoPayload&) {
        if (const auto self = weakManager.lock()) {
          self->refreshWatchlist();
          self->refreshPortfolios();
        }
      },
      DispatchQueue::main());
  return manager;
}

WatchlistManager::WatchlistManager(Passkey, OpenModels openModels, Intervals intervals)
    : openModels_(std::move(openModels)), intervals_(intervals) {}

template <typename Payload>
std::function<void()> WatchlistManager::poster(const Topic<Payload>& topic, Payload payload) {
  return [weakSelf = weak_from_this(), identity = static_cast<const void*>(this), topic,
          payload = std::move(payload)] {
    // Not locked: the last reference must not end on another thread.
    if (!weakSelf.expired()) {
      NotificationCenter::defaultCenter().post(topic, identity, payload);
    }
  };
}

void WatchlistManager::refreshWatchlist() {
  EquitySet equities;
  for (const auto& model : openModels_()) {
    equities.insert(model->watchlistEquities.begin(), model->watchlistEquities.end());
  }
  refreshEquitySet(equities, nullptr,
                   [post = poster(didRefreshWatchlistEquities, equities)](bool ok) {
                     if (ok) {
                       post();
                     }
                   });
  nextWatchlistRefresh_ =
      equities.empty()
          ? std::nullopt
          : std::optional(Date::now() + secondsOf(intervals_.watchlistRefreshInterval));
  recentlyRefreshedWatchlistEquities_ = std::move(equities);
  postStatus();

  if (watchlistRefreshTimer_ != nullptr) {
    watchlistRefreshTimer_->invalidate();
  }
  watchlistRefreshTimer_ = Timer::scheduled(intervals_.watchlistRefreshInterval, false,
                                            [weakSelf = weak_from_this()](Timer&) {
                                              if (const auto self = weakSelf.lock()) {
                                                self->refreshWatchlist();
                                              }
                                            });
}

void WatchlistManager::refreshNow() {
  refreshWatchlist();
  if (portfolioPassesUnderWay_ > 0) {
    return;
  }
  for (const auto& timer : portfolioRefreshTimers_) {
    timer->invalidate();
  }
  portfolioRefreshTimers_.clear();
  refreshPortfolios();
}

WatchlistManager::Status WatchlistManager::status() const {
  Status status = outcome_;
  status.isRefreshing = requestsUnderWay_ > 0;
  for (const auto& next : {nextWatchlistRefresh_, nextPortfolioRefresh_}) {
    if (next && (!status.nextAt || *next < *status.nextAt)) {
      status.nextAt = next;
    }
  }
  if (status.nextAt && pauseEnd_) {
    status.nextAt = std::max(*status.nextAt, *pauseEnd_);
  }
  return status;
}

void WatchlistManager::postStatus() const {
  NotificationCenter::defaultCenter().post(statusDidChange, this, status());
}

void WatchlistManager::requestDidEnd(const ErrorPointer& error,
                                     std::optional<Date> nextRequestDate) {
  --requestsUnderWay_;
  pauseEnd_ = nextRequestDate;
  outcome_.failure = error;
  (error == nullptr ? outcome_.refreshedAt : outcome_.failedAt) = Date::now();
  postStatus();
}

void WatchlistManager::refreshPortfolios() {
  std::vector<PortfolioPointer> portfolios;
  for (const auto& model : openModels_()) {
    std::ranges::copy(model->portfolios(), std::back_inserter(portfolios));
  }
  ++portfolioPassesUnderWay_;
  nextPortfolioRefresh_.reset();
  const DispatchGroup group;
  refreshEquitySet(
      difference(valuationEquities(portfolios), recentlyRefreshedWatchlistEquities_),
      [group] { group.enter(); }, [group](bool) { group.leave(); });
  group.notify(DispatchQueue::main(),
               [weakSelf = weak_from_this(), post = poster(didRefreshPortfolioEquities, portfolios),
                count = portfolios.size()] {
                 Log::write("Watchlist finished refreshing ", count, " portfolios.");
                 post();
                 const auto self = weakSelf.lock();
                 if (self == nullptr) {
                   return;
                 }
                 --self->portfolioPassesUnderWay_;
                 self->nextPortfolioRefresh_ =
                     Date::now() + secondsOf(self->intervals_.portfolioRefreshInterval);
                 self->postStatus();
                 auto& timers = self->portfolioRefreshTimers_;
                 std::erase_if(timers, [](const auto& timer) { return !timer->isValid(); });
                 timers.push_back(Timer::scheduled(self->intervals_.portfolioRefreshInterval, false,
                                                   [weakSelf](Timer&) {
                                                     if (const auto manager = weakSelf.lock()) {
                                                       manager->refreshPortfolios();
                                                     }
                                                   }));
               });
}

void WatchlistManager::refreshModel(const std::shared_ptr<WorkspaceModel>& model) {
  const std::vector<PortfolioPointer> portfolios = model->portfolios();
  EquitySet equities(model->watchlistEquities.begin(), model->watchlistEquities.end());
  for (const auto& portfolio : portfolios) {
    if (!portfolio->snapshotsByYear.empty()) {
      for (const auto& [equity, holding] :
           portfolio->snapshotsByYear.rbegin()->second.equitySnapshots) {
        equities.insert(equity);
      }
    }
  }
  const EquitySet known = equities;
  equities = difference(std::move(equities), recentlyRefreshedWatchlistEquities_);
  const auto post = poster(didRefreshPortfolioEquities, portfolios);
  refreshEquitySet(equities, nullptr, [weakSelf = weak_from_this(), model, known, post](bool ok) {
    if (!ok) {
      return;
    }
    post();
    DispatchQueue::main()->async([weakSelf, model, known] {
      if (const auto self = weakSelf.lock()) {
        self->refreshRates(*model, known);
      }
    });
  });
  recentlyRefreshedWatchlistEquities_ = std::move(equities);
}

void WatchlistManager::refreshRates(const WorkspaceModel& model, const EquitySet& known) {
  const std::vector<PortfolioPointer> portfolios = model.portfolios();
  refreshEquitySet(difference(valuationEquities(portfolios), known), nullptr,
                   [post = poster(didRefreshPortfolioEquities, portfolios)](bool ok) {
                     if (ok) {
                       post();
                     }
                   });
}

void WatchlistManager::refreshEquitySet(EquitySet equities, const std::function<void()>& begins,
                                        const Ended& ended) {
  while (!equities.empty()) {
    std::uniform_int_distribution<std::size_t> position(0, equities.size() - 1);
    const auto picked = std::next(equities.begin(), static_cast<std::ptrdiff_t>(position(random_)));
    const std::shared_ptr<QuoteProvider> provider = (*picked)->quoteProvider.lock();
    if (provider == nullptr) {
      equities.erase(picked);
      continue;
    }
    std::vector<EquityPointer> partition;
    for (auto equity = equities.begin(); equity != equities.end();) {
      if ((*equity)->quoteProvider.lock() == provider) {
        partition.push_back(*equity);
        equity = equities.erase(equity);
      } else {
        ++equity;
      }
    }
    if (begins) {
      begins();
    }
    const std::string subject =
        std::to_string(partition.size()) + " equities in " + provider->providerName();
    ++requestsUnderWay_;
    provider->refreshEquities(
        std::move(partition), [weakSelf = weak_from_this(), subject, ended,
                               weakProvider = std::weak_ptr(provider)](const ErrorPointer& error) {
          DispatchQueue::main()->async([weakSelf, weakProvider, error] {
            if (const auto self = weakSelf.lock()) {
              const auto asked = weakProvider.lock();
              self->requestDidEnd(error, asked ? asked->nextRequestDate() : std::nullopt);
            }
          });
          if (error == nullptr) {
            Log::write("Watchlist refreshed ", subject, ".");
          } else {
            Log::write("Watchlist error occurred while refreshing ", subject, ": ", *error);
          }
          ended(error == nullptr);
        });
  }
}

}  // namespace corvane
