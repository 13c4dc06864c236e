// A row of a ledger: what happened, and the balances after it.
#pragma once

#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <unordered_set>

#include "ledger/transaction/basic_transaction.h"

namespace corvane {

class Portfolio;

/// One ledger row, shared by reference and compared by identity: two rows with the same transaction
/// are two rows. The ledger's engine derives the balances; a row that it has not walked has none.
///
/// Not to be changed from two threads at once.
class PortfolioTransaction {
 public:
  PortfolioTransaction(BasicTransaction transaction, std::weak_ptr<Portfolio> owner, bool dirty)
      : portfolio(std::move(owner)), basic(std::move(transaction)), isDirty(dirty) {}
  PortfolioTransaction(const PortfolioTransaction&) = delete;
  PortfolioTransaction& operator=(const PortfolioTransaction&) = delete;
  virtual ~PortfolioTransaction() = default;

  std::weak_ptr<Portfolio> portfolio;
  BasicTransaction basic;

  /// Cash on hand in the transaction's currency after it; none for splits and journaled shares.
  OptionalDecimal cashNet;
  /// Shares of the equity held after it; none for transfers and cash adjustments.
  OptionalDecimal sharesNet;
  /// Cost base of the equity before it, in the primary currency; none where sharesNet is none.
  OptionalDecimal costBasePrior;

  /// The balances differ from what the manager was last told to keep.
  bool isDirty;

  [[nodiscard]] Date tradeDate() const { return basic.tradeDate; }
  [[nodiscard]] Date settlementDate() const { return basic.settlementDate; }

  /// Cost base of the equity after this row, in the primary currency.
  [[nodiscard]] std::optional<Decimal> costBaseNet() const;
  /// What a sale gained, in the primary currency; none for every other row.
  [[nodiscard]] std::optional<Decimal> capitalGain() const;

  /// The transaction's description.
  [[nodiscard]] std::string description() const { return basic.description(); }

  friend std::ostream& operator<<(std::ostream& out, const PortfolioTransaction& row) {
    return out << row.description();
  }
};

using TransactionPointer = std::shared_ptr<PortfolioTransaction>;
using TransactionSet = std::unordered_set<TransactionPointer>;

}  // namespace corvane
