// The columns of the transactions table, and what they say of a row.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
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

/// A number of a row, with the digits behind the point that its column shows.
struct TransactionFigure {
  Decimal value;
  int minimumDigits = 0;
  std::optional<int> maximumDigits = 0;  ///< none for all that the number has
};

/// The columns: first what tells a row from others, which stays in view.
[[nodiscard]] std::vector<TableColumn> transactionColumns();

/// What the column at this place of transactionColumns() says of `row`, whose portfolio counts in
/// `primary` and whose dates are those of `calendar`. Empty where the row has nothing to say there.
[[nodiscard]] AttributedText transactionText(const PortfolioTransaction& row, std::size_t column,
                                             const Currency& primary, const Calendar& calendar);

/// What the column of descriptions says of a row, such as "Split (3-for-1)".
[[nodiscard]] std::string transactionDescription(const BasicTransaction& transaction);

/// What the column of names says of it: the equity, or the currency of what has none.
[[nodiscard]] AttributedText transactionName(const BasicTransaction& transaction);

/// What the columns of dates say, in the user's locale.
[[nodiscard]] std::string transactionDateText(Date date, const Calendar& calendar);

/// Adds the numbers of all columns to `figures`, that of cash on hand only if `showsCash`; what
/// has no number in a row is left out.
void appendFigures(const PortfolioTransaction& row, const Currency& primary, bool showsCash,
                   std::vector<TransactionFigure>& figures);

}  // namespace corvane
