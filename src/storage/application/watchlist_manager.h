// Keeps the recent prices of what the user looks at up to date while the program runs.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <random>
#include <vector>

#include "core/market/equity_info.h"
#include "platform/async/dispatch_group.h"
#include "platform/async/notification_center.h"
#include "platform/async/timer.h"
#include "storage/workspace/workspace_model.h"

namespace corvane {

/// Refreshes the equities of all watchlists on a fast timer and those that the portfolios hold on a
/// slow one, each provider's in one call, and tells of what is in by notification.
///
/// A refresh that fails is told in the log and the status and tried again with the next timer. Main
/// queue only; the two notifications are posted where the provider's completion runs, or on the
/// main queue.
class WatchlistManager : public std::enable_shared_from_this<WatchlistManager> {
  struct Passkey {};

 public:
  /// The models of the open workspaces as they are now.
  using OpenModels = std::function<std::vector<std::shared_ptr<WorkspaceModel>>()>;

  /// Carries the equities of the refresh.
  static constexpr Topic<EquitySet> didRefreshWatchlistEquities{
      "ca.orlend.corvane.WatchlistManager.didRefreshWatchlistEquities"};
  /// Carries the portfolios whose equities have been refreshed.
  static constexpr Topic<std::vector<PortfolioPointer>> didRefreshPortfolioEquities{
      "ca.orlend.corvane.WatchlistManager.didRefreshPortfolioEquities"};
  /// At this news both refreshes run at once.
  static constexpr Topic<NoPayload> quoteDataSourceChanged{"AppDelegate.quoteDataSourceChanged"};

  /// How the refreshes go.
  struct Status {
    bool isRefreshing = false;
    std::optional<Date> refreshedAt = {};  ///< when a request last succeeded; none in this run yet
    ErrorPointer failure = nullptr;        ///< of the latest request; null where it succeeded
    std::optional<Date> failedAt = {};     ///< when that was
    /// The next refresh that has something to ask for, and may: a service can ask for a pause.
    std::optional<Date> nextAt = {};
  };
  /// Carries the status, which has changed. Posted on the main queue.
  static constexpr Topic<Status> statusDidChange{
      "ca.orlend.corvane.WatchlistManager.statusDidChange"};

  struct Intervals {
    DispatchQueue::Duration watchlistRefreshInterval{30.0};
    /// From the end of one refresh to the start of the next.
    DispatchQueue::Duration portfolioRefreshInterval{120.0};
  };

  /// Starts both refreshes, and with them their timers.
  [[nodiscard]] static std::shared_ptr<WatchlistManager> start(OpenModels openModels) {
    return start(std::move(openModels), Intervals{});
  }
  [[nodiscard]] static std::shared_ptr<WatchlistManager> start(OpenModels openModels,
                                                               Intervals intervals);

  WatchlistManager(Passkey passkey, OpenModels openModels, Intervals intervals);
  WatchlistManager(const WatchlistManager&) = delete;
  WatchlistManager& operator=(const WatchlistManager&) = delete;

  void refreshWatchlist();
  /// Refreshes everything at once, as the user asked for. The timers start anew, and a refresh of
  /// the portfolios that is under way is not joined by another.
  void refreshNow();
  [[nodiscard]] Status status() const;

  /// Refreshes what the portfolios need for a valuation and the watchlists do not bring anyway. A
  /// timer that is pending stays.
  void refreshPortfolios();

  /// Refreshes the equities of a workspace that has just been opened, and then the exchange rates
  /// that they turn out to need: only a refresh tells in which currency an equity is traded.
  void refreshModel(const std::shared_ptr<WorkspaceModel>& model);

 private:
  using Ended = std::function<void(bool succeeded)>;

  /// Asks each provider for its part of `equities`. `begins` is called before each request, and
  /// `ended` after it on whatever thread.
  void refreshEquitySet(EquitySet equities, const std::function<void()>& begins,
                        const Ended& ended);
  /// Refreshes what the portfolios of `model` need for a valuation beside `known`.
  void refreshRates(const WorkspaceModel& model, const EquitySet& known);
  void requestDidEnd(const ErrorPointer& error, std::optional<Date> nextRequestDate);
  void postStatus() const;
  /// Posts for as long as this manager lives; callable on any thread.
  template <typename Payload>
  [[nodiscard]] std::function<void()> poster(const Topic<Payload>& topic, Payload payload);

  const OpenModels openModels_;
  const Intervals intervals_;
  std::shared_ptr<Timer> watchlistRefreshTimer_;
  /// Those of all passes that have not fired: a pass that somebody else started leaves one more.
  std::vector<std::shared_ptr<Timer>> portfolioRefreshTimers_;
  std::optional<Date> nextWatchlistRefresh_;  ///< none where nothing is watched
  std::optional<Date> nextPortfolioRefresh_;
  std::optional<Date> pauseEnd_;  ///< of the provider that was asked last
  int requestsUnderWay_ = 0;
  int portfolioPassesUnderWay_ = 0;
  Status outcome_;  ///< without what the members above tell
  EquitySet recentlyRefreshedWatchlistEquities_;
  std::minstd_rand random_{std::random_device{}()};
  Subscription dataSourceObservation_;
};

}  // namespace corvane
