// What a portfolio was worth on the chosen days, as the market tells it.
#pragma once

#include <functional>
#include <memory>

#include "core/money/year_month_day.h"
#include "ledger/manager/portfolio_manager.h"
#include "platform/range.h"
#include "presentation/performance/performance_warning.h"

namespace corvane {

/// Asks for the daily balance sheets of one portfolio at a time and keeps the account of what the
/// answers lacked. Answers about a portfolio that is not followed any more are dropped; of several
/// for the one that is, the last to arrive stays, and one for other days than those asked for last
/// is not left standing. Held by shared pointer only; a fetch does not keep it alive. Main queue
/// only.
class PortfolioHistory : public std::enable_shared_from_this<PortfolioHistory> {
 public:
  /// Takes what has come, or why nothing has.
  std::function<void(Result<PortfolioSnapshotGroup>)> answerHandler =
      [](const Result<PortfolioSnapshotGroup>&) {};
  /// Called behind every answer, also one that is dropped.
  std::function<void()> changeHandler = [] {};

  /// From now on only answers about `portfolio` count, which is null for none. Nothing is known to
  /// be missing.
  void follow(PortfolioPointer portfolio);
  /// Asks for `days` of the portfolio that is followed, in a moment: what an edit has done to its
  /// rows is shown before all of them are gone through for their prices. Of several questions of
  /// one moment the last one is asked. Does nothing without a manager.
  void fetch(const ClosedRange<YearMonthDay>& days);

  [[nodiscard]] bool isFetching() const { return fetchesUnderWay_ > 0; }
  /// What the last answer lacked.
  [[nodiscard]] const MissingPrices& missing() const { return missing_; }

 private:
  using FetchResult = PortfolioManager::FetchDailySnapshotsResult;

  void ask(int question);
  void take(Result<FetchResult> result, EquityMap<Date> endsOfStoredPrices);
  void keepAccount(const FetchResult& result);

  PortfolioPointer portfolio_;
  ClosedRange<YearMonthDay> days_{{}, {}};  ///< asked for last
  MissingPrices missing_;
  int fetchesUnderWay_ = 0;
  int latestQuestion_ = 0;
};

}  // namespace corvane
