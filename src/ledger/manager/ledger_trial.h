// What an entry would do to a ledger, before anybody has made it.
#pragma once

#include <optional>

#include "core/decimal/decimal.h"
#include "ledger/portfolio/portfolio.h"
#include "ledger/transaction/basic_transaction.h"
#include "platform/error.h"

namespace corvane {

/// The figures that a form shows while the user types. For one equity and one currency, those that
/// the entry names; none of what it does not name.
struct LedgerTrial {
  struct Balances {
    std::optional<Decimal> cashOnHand;  ///< in the entry's currency
    std::optional<Decimal> sharesHeld;
    std::optional<Decimal> costBase;  ///< in the primary currency
    friend bool operator==(const Balances&, const Balances&) = default;
  };

  Balances before;    ///< just before the entry
  Balances after;     ///< just after it
  Balances atEnd;     ///< at the end of the ledger with the entry
  Balances atEndNow;  ///< at the end of the ledger as it stands
  /// What a sale realizes, in the primary currency; none for all else.
  std::optional<Decimal> capitalGain;

  friend bool operator==(const LedgerTrial&, const LedgerTrial&) = default;
};

}  // namespace corvane
