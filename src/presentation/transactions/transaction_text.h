// The columns of the transactions table, and what they say of a row.
#pragma once

#include <vector>

#include "core/money/currency.h"
#include "ledger/portfolio/portfolio_transaction.h"
#include "platform/text/styled/attributed_text.h"
#include "platform/time/calendar.h"
#include "presentation/controls/table_model.h"

namespace corvane {

enum class TransactionColumn {
  tradeDate,
  name,
  description,
  settlementDate,
  sharesAdded,
  sharePrice,
  totalValue,
  netCash,
  sharesHeld,
  costBaseAdded,
  costBaseNet,
  capitalGain,
  note
};

/// A column for each TransactionColumn, in its order: first what tells a row from others, which
/// stays in view.
[[nodiscard]] std::vector<TableColumn> transactionColumns();

/// What `column` says of `row`, whose portfolio counts in `primary` and whose dates are those of
/// `calendar`. Empty where the row has nothing to say there.
[[nodiscard]] AttributedText transactionText(const PortfolioTransaction& row,
                                             TransactionColumn column, const Currency& primary,
                                             const Calendar& calendar);

}  // namespace corvane
