// What the list at the side of the window says of the age of its prices.
#pragma once

#include <string>
#include <vector>

#include "core/market/equity_info.h"
#include "storage/application/watchlist_manager.h"

namespace corvane {

/// How old the prices of `equities` are, what the latest refresh did not bring and why, and when
/// the next one comes, in sentences for one line. Times of another day than that of `now` have
/// their date. Empty where there is nothing to refresh.
[[nodiscard]] std::string priceStatusText(const WatchlistManager::Status& status,
                                          const EquitySet& equities, Date now);

}  // namespace corvane
