// Which rows of a statement a ledger holds already.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "exchange/statements/statement_rows.h"
#include "ledger/portfolio/portfolio.h"

namespace corvane {

/// What makes two transactions the same: kind, days, equity, shares, amount and currency. The
/// shares of a yield are not told by statements, and what the ledger works out is no part of it.
[[nodiscard]] std::string fingerprint(const BasicTransaction& transaction,
                                      const Calendar& calendar);

/// Gives the rows that `portfolio` has already their verdict. Of n equal rows and m equal
/// transactions in the ledger, m are there already. A new row that resembles a transaction of the
/// ledger, of the same equity and shares within three days, says so.
///
/// `fingerprintsById` are those of rows that were recorded before, by the broker's number of the
/// row: such a row is there as long as the ledger holds what was recorded, and what it accounts for
/// is no other row's.
void matchWithLedger(std::vector<StatementRow>& rows, Portfolio& portfolio,
                     const Calendar& calendar,
                     const std::map<std::string, std::string, std::less<>>& fingerprintsById);

}  // namespace corvane
