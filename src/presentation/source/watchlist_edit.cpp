#include "presentation/source/watchlist_edit.h"

#include <algorithm>
#include <utility>

namespace corvane {
namespace {

/// "Watch “ABC”"
std::string actionOn(const std::string& verb, const EquityInfo& equity) {
  return verb + " “" + equity.symbol + "”";
}

/// The same for one of `equities`, or their number.
std::string actionOn(const std::string& verb, const std::vector<EquityPointer>& equities) {
  return equities.size() == 1 ? actionOn(verb, *equities.front())
                              : verb + " " + std::to_string(equities.size()) + " Symbols";
}

bool isAmong(const std::vector<std::size_t>& rows, std::size_t row) {
  return std::ranges::find(rows, row) != rows.end();
}

}  // namespace

bool watches(const std::vector<EquityPointer>& watchlist, const EquityInfo& equity) {
  return std::ranges::any_of(
      watchlist, [&](const EquityPointer& watched) { return watched->symbol == equity.symbol; });
}

std::optional<WatchlistEdit> watch(std::vector<EquityPointer> watchlist,
                                   const EquityPointer& equity) {
  if (watches(watchlist, *equity)) {
    return std::nullopt;
  }
  watchlist.push_back(equity);
  return WatchlistEdit{std::move(watchlist), actionOn("Watch", *equity)};
}

std::optional<WatchlistEdit> unwatch(const std::vector<EquityPointer>& watchlist,
                                     const std::vector<std::size_t>& rows) {
  std::vector<EquityPointer> kept;
  std::vector<EquityPointer> removed;
  for (std::size_t i = 0; i < watchlist.size(); ++i) {
    (isAmong(rows, i) ? removed : kept).push_back(watchlist[i]);
  }
  if (removed.empty()) {
    return std::nullopt;
  }
  return WatchlistEdit{std::move(kept), actionOn("Unwatch", removed)};
}

std::optional<WatchlistEdit> moveWatched(const std::vector<EquityPointer>& watchlist,
                                         const std::vector<std::size_t>& rows, std::size_t row) {
  std::vector<EquityPointer> moved;
  std::vector<EquityPointer> ordered;
  std::vector<EquityPointer> behind;
  for (std::size_t i = 0; i < watchlist.size(); ++i) {
    (isAmong(rows, i) ? moved : i < row ? ordered : behind).push_back(watchlist[i]);
  }
  ordered.insert(ordered.end(), moved.begin(), moved.end());
  ordered.insert(ordered.end(), behind.begin(), behind.end());
  if (ordered == watchlist) {
    return std::nullopt;
  }
  return WatchlistEdit{std::move(ordered), actionOn("Move", moved)};
}

}  // namespace corvane
