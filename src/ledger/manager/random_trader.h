// Fills a portfolio with a plausible ledger, to try the program out.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "core/market/equity_info.h"
#include "ledger/portfolio/portfolio.h"
#include "platform/time/date.h"

namespace corvane {

/// Records random deposits, withdrawals, purchases and sales through the ordinary ledger edits,
/// without undo. What has been recorded stays when a later step fails. Main queue only.
class RandomTrader {
 public:
  /// A uniform random integer from 0 to n - 1; n is at least 1.
  using RandomNumber = std::function<std::uint64_t(std::uint64_t n)>;

  /// Draws from the system's generator: no run can be repeated.
  RandomTrader();
  explicit RandomTrader(RandomNumber randomNumber) : randomNumber_(std::move(randomNumber)) {}

  /// Trades up to five equities of `watchlist`, of those that the portfolio's own provider answers
  /// for, over the last three years. Without such equities nothing happens. Throws what the ledger
  /// throws.
  void populateRandomly(const PortfolioPointer& portfolio,
                        const std::vector<EquityPointer>& watchlist) const;

  /// Opens with a deposit in each currency of `equities` and goes on with `count` steps spread over
  /// `dateRange`, each a transfer or a trade. `equities` is not empty and `count` at least 1.
  ///
  /// A step that has nothing to choose from records nothing: when cash has fallen so far below 0
  /// that no transfer of the usual size makes it good, or when a price is so low that it rounds to
  /// 0. Throws what the ledger throws.
  void populate(const std::vector<EquityPointer>& equities, const PortfolioPointer& portfolio,
                int count, const DateRange& dateRange) const;

 private:
  class Run;

  RandomNumber randomNumber_;
};

}  // namespace corvane
