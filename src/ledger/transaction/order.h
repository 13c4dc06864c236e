// What a view asks of a portfolio manager.
#pragma once

#include <optional>
#include <string>
#include <variant>

#include "core/market/equity_info.h"
#include "core/money/currency_amount.h"
#include "ledger/transaction/basic_transaction.h"

namespace corvane {

/// A request to trade, to move cash, or to record what has happened. Equities are never null.
struct Order {
  struct Buy {
    EquityPointer equity;
    Decimal numberOfShares;
    friend bool operator==(const Buy& left, const Buy& right) {
      return *left.equity == *right.equity && left.numberOfShares == right.numberOfShares;
    }
  };
  struct Sell {
    EquityPointer equity;
    Decimal numberOfShares;
    friend bool operator==(const Sell& left, const Sell& right) {
      return *left.equity == *right.equity && left.numberOfShares == right.numberOfShares;
    }
  };
  struct Deposit {
    CurrencyAmount amount;
    friend bool operator==(const Deposit&, const Deposit&) = default;
  };
  struct Withdraw {
    CurrencyAmount amount;
    friend bool operator==(const Withdraw&, const Withdraw&) = default;
  };
  struct Record {
    BasicTransaction transaction;
    friend bool operator==(const Record&, const Record&) = default;
  };

  std::variant<Buy, Sell, Deposit, Withdraw, Record> kind;

  friend bool operator==(const Order&, const Order&) = default;
};

/// What orders a manager takes; a view offers no others.
enum class OrderFeature {
  allowsTrade,
  allowsTransfer,
  allowsFractionalShares,
  allowsRecordTransaction
};

/// Changes to make to many transactions at once; an absent field changes nothing.
struct BulkRevision {
  std::optional<Date> tradeDate = {};
  std::optional<Date> settlementDate = {};
  EquityPointer equity = nullptr;  ///< null for no change
  std::optional<std::string> note = {};

  /// `transaction` with the changes made. A new equity leaves a transfer and a cash adjustment as
  /// they are.
  [[nodiscard]] BasicTransaction applied(BasicTransaction transaction) const;
};

}  // namespace corvane
