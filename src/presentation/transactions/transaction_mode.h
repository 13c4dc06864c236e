// The kinds of entry that the form for a transaction offers, and what it shows for each.
#pragma once

#include <optional>
#include <span>
#include <string_view>

#include "ledger/transaction/basic_transaction.h"

namespace corvane {

enum class TransactionMode {
  buy,
  sell,
  deposit,
  withdraw,
  dividend,
  capitalGainsDividend,
  reinvestedDistribution,
  returnOfCapital,
  split,
  cashExpense,
  cashCredit,
  journaledShares
};

/// An item of the mode menu; one without a title is a separator.
struct TransactionModeEntry {
  std::string_view title = {};
  TransactionMode mode = TransactionMode::buy;
  char shortcut = 0;  ///< the letter that chooses the mode
};

/// The mode menu, in its order.
[[nodiscard]] std::span<const TransactionModeEntry> transactionModeEntries();

/// What the menu calls `mode`.
[[nodiscard]] std::string_view titleOf(TransactionMode mode);

/// Where the form for a mode takes its equity from.
enum class EquityRow {
  hidden,
  search,  ///< any equity
  held     ///< those that the portfolio holds
};

/// The rows and words of a mode. A row is shown where its label is not empty.
struct TransactionModeLayout {
  std::string_view detailSection;
  EquityRow equity = EquityRow::hidden;
  std::string_view priorSharesLabel = {};
  std::string_view sharesLabel = {};
  std::string_view priceLabel = {};
  std::string_view totalLabel = {};       ///< shown together with the currency
  std::string_view equivalentLabel = {};  ///< shown only for a foreign currency, or a cost base
  std::string_view buttonTitle = {};
  /// Whether cash of any currency may come in, so that all currencies are offered, and not only
  /// those that the portfolio has.
  bool offersAllCurrencies = false;
};

[[nodiscard]] const TransactionModeLayout& layoutOf(TransactionMode mode);

/// The type of the yield that a mode records; none for the modes that record something else.
[[nodiscard]] std::optional<BasicTransaction::YieldType> yieldTypeOf(TransactionMode mode);
[[nodiscard]] TransactionMode transactionModeOf(BasicTransaction::YieldType type);

/// The mode in which the form enters such a transaction.
[[nodiscard]] TransactionMode transactionModeOf(const BasicTransaction::Kind& kind);

}  // namespace corvane
