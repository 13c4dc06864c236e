// The portfolio of one simulated trader.
#pragma once

#include <memory>
#include <optional>

#include "ledger/portfolio/portfolio.h"

namespace corvane {

/// A portfolio that trades one equity in its currency, with a cash account and without credit.
class ScenarioPortfolio : public Portfolio {
 public:
  /// A row that the simulator made.
  class Transaction : public PortfolioTransaction {
   public:
    /// Why there is this row: the run began or ended, or a rule of the strategy traded.
    enum class EventType { open, close, buy, sell, stopLossBuy, stopLossSell };

    using PortfolioTransaction::PortfolioTransaction;

    std::optional<EventType> eventType;
    /// The reference price after this row, which spreads are measured from.
    Decimal mostRecentSharePrice;
    Decimal runningNetShares;  ///< shares held after this row
  };

  ScenarioPortfolio(std::weak_ptr<PortfolioManager> owner, EquityPointer tradedEquity);

  const EquityPointer equity;

  /// Shares held and cash on hand after the last row.
  [[nodiscard]] Decimal currentShares() const;
  [[nodiscard]] Decimal currentCash() const;

  /// The cash, and the shares at the reference price of the last row.
  [[nodiscard]] Decimal currentValue();

  /// The last row, or null.
  [[nodiscard]] const Transaction* lastTransaction();

 private:
  /// The state after the last row, or null.
  [[nodiscard]] const PortfolioSnapshot* latestSnapshot() const;
};

using ScenarioTransactionPointer = std::shared_ptr<ScenarioPortfolio::Transaction>;

}  // namespace corvane
