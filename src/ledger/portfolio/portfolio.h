// A portfolio: its settings, its ledger, and the state at the end of each year.
#pragma once

#include <concepts>
#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "core/money/currency.h"
#include "ledger/portfolio/portfolio_keeper.h"
#include "ledger/portfolio/portfolio_snapshot.h"
#include "ledger/portfolio/portfolio_transaction.h"

namespace corvane {

class PortfolioManager;

/// A portfolio and its rows. Only its manager changes the ledger; not safe on two threads at once.
class Portfolio {
 public:
  /// `Manager` is the manager's class or one derived from it.
  template <std::derived_from<PortfolioKeeper> Manager>
  Portfolio(std::weak_ptr<Manager> owner, Currency primaryCurrency)
      : keeper(owner), manager(std::move(owner)), primaryCurrency_(primaryCurrency) {}
  Portfolio(const Portfolio&) = delete;
  Portfolio& operator=(const Portfolio&) = delete;
  virtual ~Portfolio() = default;

  /// The manager, as far as it is known down here.
  const std::weak_ptr<const PortfolioKeeper> keeper;
  const std::weak_ptr<PortfolioManager> manager;
  std::string name = "Untitled Portfolio";

  /// Whether cash and shares may go below 0.
  bool allowsNegativeBalances = false;
  /// Whether trades take their cash from an account. Without accounts the cash of a trade counts as
  /// deposited for it, and transfers are not allowed.
  bool usesCashAccounts = true;

  /// The currency of every cost base and capital gain.
  [[nodiscard]] const Currency& primaryCurrency() const { return primaryCurrency_; }

  /// The ledger, ascending by settlement date. The order of rows of one date is the user's. A
  /// subclass may load the rows on first use.
  [[nodiscard]] virtual std::vector<TransactionPointer>& transactions() { return transactions_; }

  /// The state after the last row of each year that has a row, without prices. A cache of the walk
  /// over the ledger: it can always be built again.
  std::map<int, PortfolioSnapshot> snapshotsByYear;

  /// The state before the row at `index`.
  struct WalkStart {
    std::size_t index;
    PortfolioSnapshot state;
  };
  /// Where the last walk started, and where most likely the next one does: at the end. A cache of
  /// the walks alone; good as long as the rows before it stay.
  std::optional<WalkStart> lastWalkStart;

 private:
  Currency primaryCurrency_;
  std::vector<TransactionPointer> transactions_;
};

using PortfolioPointer = std::shared_ptr<Portfolio>;

}  // namespace corvane
