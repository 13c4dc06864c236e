// What happened in a portfolio: the record that the user enters, without any balance.
#pragma once

#include <ostream>
#include <string>
#include <string_view>
#include <variant>

#include "core/decimal/decimal.h"
#include "core/decimal/optional_decimal.h"
#include "core/market/equity_info.h"
#include "core/money/currency_amount.h"
#include "ledger/transaction/transaction_note.h"
#include "platform/time/date.h"

namespace corvane {

/// One thing that happened, as a plain value. Equities are never null.
///
/// "Equivalent" amounts are the same value told in the portfolio's primary currency; they come with
/// the transaction, and the ledger asks for no exchange rate.
struct BasicTransaction {
  /// A purchase, or a sale where the shares and the cash are negative.
  struct Trade {
    EquityPointer equity;
    CurrencyAmount cashDisposed;     ///< cash given up; negative for the proceeds of a sale
    Decimal equivalentCashDisposed;  ///< same sign as cashDisposed
    Decimal sharesAdded;             ///< may be fractional
    friend bool operator==(const Trade& left, const Trade& right);
  };

  /// A split or consolidation of the whole holding.
  struct Split {
    EquityPointer equity;
    Decimal priorShares;  ///< the holding that it declares it applies to
    Decimal netShares;    ///< the holding after it
    friend bool operator==(const Split& left, const Split& right);
  };

  /// Shares moved in, or out where negative, without cash.
  struct JournaledShares {
    EquityPointer equity;
    Decimal sharesAdded;
    OptionalDecimal costBaseAdded;  ///< in the primary currency; absent means 0
    friend bool operator==(const JournaledShares& left, const JournaledShares& right);
  };

  enum class YieldType { dividend, capitalGainsDividend, reinvestedDistribution, returnOfCapital };

  /// Income of a holding. Only a dividend moves cash; a reinvested distribution and a return of
  /// capital change the cost base; a capital-gains dividend is for reporting alone.
  struct Yield {
    YieldType type;
    EquityPointer equity;
    OptionalDecimal netShares;  ///< the holding it was paid on; the ledger fills in an absent one
    CurrencyAmount netAmount;   ///< the total paid, positive
    Decimal equivalentNetAmount;
    friend bool operator==(const Yield& left, const Yield& right);
  };

  /// A deposit, or a withdrawal where the amount is negative.
  struct Transfer {
    CurrencyAmount amount;
    friend bool operator==(const Transfer&, const Transfer&) = default;
  };

  /// A change of the cash on hand that is no deposit: interest, a fee, a correction.
  struct CashAdjustment {
    CurrencyAmount amount;
    friend bool operator==(const CashAdjustment&, const CashAdjustment&) = default;
  };

  using Kind = std::variant<Trade, Split, JournaledShares, Yield, Transfer, CashAdjustment>;

  Kind kind;
  Date tradeDate;
  Date settlementDate;  ///< the ledger is ordered by this alone; never before tradeDate
  TransactionNote note;

  /// The equity that the transaction names; null for transfers and cash adjustments.
  [[nodiscard]] const EquityPointer* equity() const;
  /// The currency whose cash it touches; null for splits and journaled shares.
  [[nodiscard]] const Currency* currency() const;

  /// One line for messages and logs: the trade date, the settlement date in parentheses, what
  /// happened. The dates are those of UTC, so that the text says which instant is meant. Equities
  /// go by their ids, which never change, so that any thread may ask.
  [[nodiscard]] std::string description() const;

  friend bool operator==(const BasicTransaction&, const BasicTransaction&) = default;
  friend std::ostream& operator<<(std::ostream& out, const BasicTransaction& transaction);
};

/// "dividend", "capital gains dividend", "reinvested distribution", "return of capital"
[[nodiscard]] std::string_view displayName(BasicTransaction::YieldType type);

}  // namespace corvane
