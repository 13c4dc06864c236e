// One row of the table `transactions`, and how transactions become rows and rows transactions.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "core/decimal/decimal.h"
#include "core/money/currency.h"
#include "ledger/portfolio/portfolio_transaction.h"
#include "ledger/transaction/transaction_effect.h"
#include "platform/data/sqlite.h"

namespace corvane {

/// Throws PortfolioManagerError::LedgerInconsistency.
[[noreturn]] void failInconsistent(std::string reason);

/// The figures of a transaction under the names of their columns, before they are scaled: money in
/// whole units of its currency, shares in shares.
struct StoredFigures {
  /// Of the kinds that have an equity.
  struct Holding {
    EquityPointer equity;
    Decimal sharesAdded;
    Decimal sharesNet;
    Decimal equivalentCashAdded;  ///< in the primary currency
    Decimal costBasePrior;        ///< in the primary currency
  };

  TransactionType type;  ///< the column `type` has its number
  Currency currency;     ///< of the cash; the primary one where there is no cash
  Decimal cashAdded;
  Decimal cashNet;
  std::optional<Holding> holding;
};

/// The figures of `row`. Throws PortfolioManagerError::LedgerInconsistency where its balances have
/// not been derived.
[[nodiscard]] StoredFigures storedFigures(const PortfolioTransaction& row,
                                          const Currency& primaryCurrency);

/// What happened, from the figures. Throws PortfolioManagerError::LedgerInconsistency where a type
/// that needs a holding has none.
[[nodiscard]] BasicTransaction::Kind transactionKind(const StoredFigures& figures);

/// `amount` as its column keeps it: a count of minor units of `currency`. It is a whole number of
/// 64 bits for every amount in the currency's own denomination. An amount with more digits, which
/// the ledger takes where no balance depends on it, and a larger one are kept as doubles where a
/// double gives back every digit. Throws PortfolioManagerError::InvalidCashDenomination or
/// LedgerInconsistency where not: nothing is kept that could not be read back as it was.
[[nodiscard]] SQLiteValue storedAmount(const Decimal& amount, const Currency& currency);

/// The amount that `stored` minor units of `currency` are.
[[nodiscard]] Decimal amountOf(const Decimal& stored, const Currency& currency);

/// `shares` in units of 10^-`decimals` share. Throws PortfolioManagerError::LedgerInconsistency
/// where that is not whole or exceeds 64 bits.
[[nodiscard]] std::int64_t storedShares(const Decimal& shares, int decimals);

/// The shares that `stored` units of 10^-`decimals` share are.
[[nodiscard]] Decimal sharesOf(const Decimal& stored, int decimals);

}  // namespace corvane
