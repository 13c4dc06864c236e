// What is selected in the list at the side of the window.
#pragma once

#include <cstddef>
#include <optional>
#include <variant>
#include <vector>

#include "core/market/equity_info.h"
#include "ledger/portfolio/portfolio.h"

namespace corvane {

/// What a row of the list stands for; nothing for none.
using SourceObject = std::variant<std::monostate, EquityPointer, PortfolioPointer>;

/// Rows of the watchlist, or one of the portfolios: of the two tables one at most has a selection.
/// A plain value.
class SourceSelection {
 public:
  /// Ascending.
  [[nodiscard]] const std::vector<std::size_t>& watchlistRows() const { return watchlistRows_; }
  [[nodiscard]] std::optional<std::size_t> portfolioRow() const { return portfolioRow_; }

  void clear();
  /// Whether that is another selection than before.
  bool selectWatchlistRows(std::vector<std::size_t> rows);
  void selectPortfolioRow(std::size_t row);
  /// Selects the row of `object`, where one of the tables has it.
  void select(const SourceObject& object, const std::vector<EquityPointer>& watchlist,
              const std::vector<PortfolioPointer>& portfolios);
  /// The watchlist is `now`: what was selected stays selected where it stays.
  void follow(const std::vector<EquityPointer>& former, const std::vector<EquityPointer>& now);

 private:
  std::vector<std::size_t> watchlistRows_;
  std::optional<std::size_t> portfolioRow_;
};

}  // namespace corvane
