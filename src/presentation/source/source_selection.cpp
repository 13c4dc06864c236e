#include "presentation/source/source_selection.h"

#include <algorithm>
#include <utility>

namespace corvane {
namespace {

void sortRows(std::vector<std::size_t>& rows) {
  std::ranges::sort(rows);
  const auto repeated = std::ranges::unique(rows);
  rows.erase(repeated.begin(), repeated.end());
}

template <typename Value>
std::optional<std::size_t> placeOf(const Value& value, const std::vector<Value>& values) {
  const auto found = std::ranges::find(values, value);
  return found == values.end() ? std::nullopt
                               : std::optional(static_cast<std::size_t>(found - values.begin()));
}

}  // namespace

void SourceSelection::clear() {
  watchlistRows_.clear();
  portfolioRow_.reset();
}

bool SourceSelection::selectWatchlistRows(std::vector<std::size_t> rows) {
  sortRows(rows);
  if (rows == watchlistRows_) {
    return false;
  }
  watchlistRows_ = std::move(rows);
  if (!watchlistRows_.empty()) {
    portfolioRow_.reset();
  }
  return true;
}

void SourceSelection::selectPortfolioRow(std::size_t row) {
  watchlistRows_.clear();
  portfolioRow_ = row;
}

void SourceSelection::select(const SourceObject& object,
                             const std::vector<EquityPointer>& watchlist,
                             const std::vector<PortfolioPointer>& portfolios) {
  clear();
  if (const auto* equity = std::get_if<EquityPointer>(&object)) {
    if (const auto row = placeOf(*equity, watchlist)) {
      watchlistRows_ = {*row};
    }
  } else if (const auto* portfolio = std::get_if<PortfolioPointer>(&object)) {
    portfolioRow_ = placeOf(*portfolio, portfolios);
  }
}

void SourceSelection::follow(const std::vector<EquityPointer>& former,
                             const std::vector<EquityPointer>& now) {
  std::vector<std::size_t> rows;
  for (const std::size_t row : watchlistRows_) {
    if (const auto place = placeOf(former.at(row), now)) {
      rows.push_back(*place);
    }
  }
  sortRows(rows);
  watchlistRows_ = std::move(rows);
}

}  // namespace corvane
