// Why a ledger refused an edit.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>

#include "core/decimal/decimal.h"
#include "core/money/currency.h"
#include "ledger/portfolio/portfolio_transaction.h"
#include "ledger/transaction/order.h"
#include "platform/error.h"

namespace corvane {

/// The cases of PortfolioManagerError.
struct PortfolioManagerErrorCases {
  struct InsufficientCash {
    TransactionPointer transaction;
    Decimal need;
    Decimal have;
    Currency currency;
    friend bool operator==(const InsufficientCash&, const InsufficientCash&) = default;
  };
  struct InsufficientShares {
    TransactionPointer transaction;
    Decimal need;
    Decimal have;
    EquityPointer equity;
    friend bool operator==(const InsufficientShares&, const InsufficientShares&) = default;
  };
  struct IncompleteSplit {
    TransactionPointer transaction;
    Decimal need;
    Decimal have;
    EquityPointer equity;
    friend bool operator==(const IncompleteSplit&, const IncompleteSplit&) = default;
  };
  struct IncompleteYield {
    TransactionPointer transaction;
    BasicTransaction::Yield yield;
    Decimal have;
    friend bool operator==(const IncompleteYield&, const IncompleteYield&) = default;
  };
  struct InvalidSettlementDate {
    Date settlementDate;
    Date tradeDate;
    friend bool operator==(const InvalidSettlementDate&, const InvalidSettlementDate&) = default;
  };
  struct InvalidCashDenomination {
    Decimal amount;
    Currency currency;
    friend bool operator==(const InvalidCashDenomination&,
                           const InvalidCashDenomination&) = default;
  };
  struct LedgerInconsistency {
    std::string reason;
    friend bool operator==(const LedgerInconsistency&, const LedgerInconsistency&) = default;
  };
  struct InvalidPortfolio {
    std::string reason;
    friend bool operator==(const InvalidPortfolio&, const InvalidPortfolio&) = default;
  };
  struct InvalidOrderType {
    Order order;
    friend bool operator==(const InvalidOrderType&, const InvalidOrderType&) = default;
  };
  struct UnknownCurrency {
    std::int64_t number;  ///< as it was read
    friend bool operator==(const UnknownCurrency&, const UnknownCurrency&) = default;
  };
  /// An edit elsewhere in the ledger would break a row that is already there.
  struct ViolatesExistingTransaction {
    TransactionPointer existing;
    ErrorPointer because;
    friend bool operator==(const ViolatesExistingTransaction& left,
                           const ViolatesExistingTransaction& right) {
      return left.existing == right.existing && *left.because == *right.because;
    }
  };
  struct ForeignExchangeRateMissing {
    Currency currency;
    friend bool operator==(const ForeignExchangeRateMissing&,
                           const ForeignExchangeRateMissing&) = default;
  };

  using Case = std::variant<InsufficientCash, InsufficientShares, IncompleteSplit, IncompleteYield,
                            InvalidSettlementDate, InvalidCashDenomination, LedgerInconsistency,
                            InvalidPortfolio, InvalidOrderType, UnknownCurrency,
                            ViolatesExistingTransaction, ForeignExchangeRateMissing>;
};

/// The error of all ledger operations. Rows are compared by identity, other values by value.
///
/// An error keeps the currency or the equity that it speaks of, because a row whose revision was
/// refused has its former transaction back by the time that the user reads the text.
class PortfolioManagerError
    : public VariantError<PortfolioManagerError, PortfolioManagerErrorCases> {
 public:
  using VariantError::VariantError;

  [[nodiscard]] std::optional<std::string> description() const override;

  /// For ViolatesExistingTransaction, what would go wrong there.
  [[nodiscard]] std::optional<std::string> recoverySuggestion() const override;

  /// For IncompleteYield of a row that stands in the ledger. A yield counts the shares of its day
  /// once and for all, so that it has to make room for a purchase that is found later.
  [[nodiscard]] std::optional<std::string> advice() const override;
};

}  // namespace corvane
