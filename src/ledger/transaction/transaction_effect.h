// What a transaction does to cash, deposits, shares and cost.
#pragma once

#include <optional>

#include "ledger/transaction/basic_transaction.h"

namespace corvane {

/// What happened, as one word. Databases keep these numbers.
enum class TransactionType {
  transfer = 1,
  trade = 2,
  split = 3,
  dividend = 4,
  capitalGainsDividend = 5,
  reinvestedDistribution = 6,
  returnOfCapital = 7,
  cashAdjustment = 8,
  journaledShares = 9,
};

/// A transaction taken apart: the one place that knows what each kind moves. The ledger's walk,
/// its reports, files and screens all read it here; only the replay, which checks the walk, has the
/// rules a second time.
///
/// Points into the transaction, which must outlive it. What a kind does not have is 0 or none.
struct TransactionEffect {
  TransactionType type = TransactionType::transfer;
  const EquityPointer* equity = nullptr;  ///< null for what has no equity
  const Currency* currency = nullptr;     ///< null for what has no cash

  /// The money that it tells of, positive where it is received, whether or not it reaches the cash
  /// on hand.
  Decimal amount = {};
  /// The same in the primary currency, for what tells it.
  std::optional<Decimal> equivalentAmount = {};

  /// The change of the holding. Of a split the difference, which may have too many digits to be
  /// kept; sharesAfter() needs no difference.
  Decimal sharesAdded = {};
  /// The holding that it says it applies to.
  std::optional<Decimal> declaredShares = {};
  /// What a split makes of the holding.
  std::optional<Decimal> splitInto = {};
  /// What it adds to the cost base, in the primary currency, as long as no shares leave.
  Decimal costAdded = {};

  /// Whether shares are bought, sold or moved: whether sharesAdded is the transaction's own figure.
  [[nodiscard]] bool movesShares() const {
    return type == TransactionType::trade || type == TransactionType::journaledShares;
  }
  /// Whether it is a trade that gives up shares. It realizes a gain or a loss, also where it is
  /// paid for.
  [[nodiscard]] bool isSale() const { return type == TransactionType::trade && sharesAdded < 0; }
  [[nodiscard]] bool isYield() const {
    return type >= TransactionType::dividend && type <= TransactionType::returnOfCapital;
  }

  /// The change of the cash on hand. Without cash accounts a trade takes none.
  [[nodiscard]] Decimal cashAdded(bool usesCashAccounts) const;
  /// The change of the net deposits. Without cash accounts the money of a trade counts as brought
  /// in or taken out for it.
  [[nodiscard]] Decimal deposited(bool usesCashAccounts) const;
  /// The holding that becomes of `held` shares; NaN where it has more digits than can be kept.
  [[nodiscard]] Decimal sharesAfter(const Decimal& held) const;
};

[[nodiscard]] TransactionEffect transactionEffect(const BasicTransaction::Kind& kind);
/// Not of a temporary: the effect points into the transaction.
TransactionEffect transactionEffect(BasicTransaction::Kind&& kind) = delete;

/// The word for `yield` among the words for all transactions.
[[nodiscard]] TransactionType transactionType(BasicTransaction::YieldType yield);

}  // namespace corvane
