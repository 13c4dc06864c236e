// What the user does with a watchlist.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "core/market/equity_info.h"

namespace corvane {

/// A watchlist after an edit, and what the edit is called in the menu that undoes it.
struct WatchlistEdit {
  std::vector<EquityPointer> equities;
  std::string actionName;
};

/// Whether `watchlist` has an equity with the symbol of `equity`.
[[nodiscard]] bool watches(const std::vector<EquityPointer>& watchlist, const EquityInfo& equity);

// Each yields none where it would change nothing. Rows are places in `watchlist`, in any order.

[[nodiscard]] std::optional<WatchlistEdit> watch(std::vector<EquityPointer> watchlist,
                                                 const EquityPointer& equity);
[[nodiscard]] std::optional<WatchlistEdit> unwatch(const std::vector<EquityPointer>& watchlist,
                                                   const std::vector<std::size_t>& rows);
/// Moves the rows as one block in front of `row`, or behind the last one where it is their number.
[[nodiscard]] std::optional<WatchlistEdit> moveWatched(const std::vector<EquityPointer>& watchlist,
                                                       const std::vector<std::size_t>& rows,
                                                       std::size_t row);

}  // namespace corvane
