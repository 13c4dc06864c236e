// Fetches the prices that the balance sheets of a range of days need.
#pragma once

#include <functional>
#include <memory>
#include <unordered_map>

#include "core/market/quote_provider.h"
#include "ledger/portfolio/portfolio.h"
#include "ledger/portfolio/portfolio_snapshot_group.h"
#include "platform/error.h"
#include "platform/time/calendar.h"

namespace corvane {

/// The balance sheets of a range of days, and what could not be priced.
struct FetchDailySnapshotsResult {
  PortfolioSnapshotGroup snapshotGroup;
  EquityMap<ErrorPointer> fetchErrorsByEquity;
  /// Of the exchange rates of currencies to the primary one.
  std::unordered_map<Currency, ErrorPointer> fetchErrorsByCurrency;
};
using FetchDailySnapshotsCompletion =
    std::move_only_function<void(Result<FetchDailySnapshotsResult>)>;

/// Puts the balances of `portfolio` from the day `from` to the day `to` of `calendar`, both
/// included, together with the daily prices and exchange rates that `prices` has for them. `from`
/// is not after `to`.
///
/// Main queue only. The ledger is read before this returns, and later edits do not show. One series
/// is asked for each asset. One that cannot be had is reported in the result and leaves its asset
/// without prices. The completion runs once, on the main queue: with an error before this returns
/// where the ledger is inconsistent, otherwise always later.
void fetchDailySnapshots(Portfolio& portfolio, YearMonthDay from, YearMonthDay to,
                         const Calendar& calendar, const std::shared_ptr<QuoteProvider>& prices,
                         FetchDailySnapshotsCompletion completion);

}  // namespace corvane
