// The columns of the transactions table, and what they say of a row.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "core/money/currency.h"
#include "ledger/portfolio/portfolio_transaction.h"
#include "platform/text/styled/attributed_text.h"
#include "platform/time/calendar.h"
#include "presentation/controls/table_model.h"

namespace corvane {

/// The column of cash balances, which only a portfolio with cash accounts shows.
inline constexpr std::string_view netCashColumn = "netCash";

/// The columns: first what tells a row from others, which stays in view.
[[nodiscard]] std::vector<TableColumn> transactionColumns();

/// What the column at this place of transactionColumns() says of `row`, whose portfolio counts in
/// `primary` and whose dates are those of `calendar`. Empty where the row has nothing to say there.
[[nodiscard]] AttributedText transactionText(const PortfolioTransaction& row, std::size_t column,
                                             const Currency& primary, const Calendar& calendar);

}  // namespace corvane
