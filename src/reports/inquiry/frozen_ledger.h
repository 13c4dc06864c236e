// Ledgers as they were at one moment, for reports that are computed on another thread.
#pragma once

#include <cstddef>
#include <deque>
#include <memory>
#include <unordered_map>
#include <vector>

#include "core/market/equity_info.h"
#include "ledger/portfolio/portfolio.h"

namespace corvane {

/// A copy of a portfolio, its rows and their balances. It has no manager, no yearly snapshots and,
/// but for shares that were journaled, no notes. May be read on any thread, by one at a time.
class FrozenPortfolio final : public Portfolio {
 public:
  explicit FrozenPortfolio(const PortfolioPointer& original);

  /// Of which this is a copy. Main queue only.
  const std::weak_ptr<Portfolio> original;

  [[nodiscard]] std::vector<TransactionPointer>& transactions() override { return pointers_; }

 private:
  friend class LedgerFreezer;

  std::shared_ptr<std::deque<PortfolioTransaction>> rows_ =
      std::make_shared<std::deque<PortfolioTransaction>>();
  std::vector<TransactionPointer> pointers_;
};

/// The portfolio of which `portfolio` is a copy, or itself; null where that is gone. Main queue
/// only.
[[nodiscard]] PortfolioPointer originalOf(const PortfolioPointer& portfolio);

/// The same, whether it is still there or not. Any thread.
[[nodiscard]] std::weak_ptr<Portfolio> ledgerOf(const PortfolioPointer& portfolio);

/// Copies portfolios a few rows at a time, so that the main queue can do other things in between.
///
/// Main queue only. The ledgers must not change from the first call to the last; who lets others
/// run in between begins again when they have changed. Each equity is frozen once for all rows and
/// portfolios; the copies equal the originals.
class LedgerFreezer {
 public:
  explicit LedgerFreezer(std::vector<PortfolioPointer> portfolios);

  /// Copies up to `rowCount` further rows; whether all are there now.
  bool advance(std::size_t rowCount);
  /// The copies in the order of the originals. To be called once, when all rows are there.
  [[nodiscard]] std::vector<PortfolioPointer> take();

 private:
  void copyRow(const PortfolioTransaction& row, const std::shared_ptr<FrozenPortfolio>& into);
  [[nodiscard]] const EquityPointer& frozenOf(const EquityPointer& equity);

  std::vector<PortfolioPointer> originals_;
  std::vector<std::shared_ptr<FrozenPortfolio>> copies_;
  std::unordered_map<const EquityInfo*, EquityPointer> equities_;
  std::size_t current_ = 0;
};

}  // namespace corvane
