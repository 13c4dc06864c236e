// Which rows of a statement a ledger holds already.
#pragma once

#include <string>
#include <vector>

#include "core/money/year_month_day.h"
#include "exchange/reading/statement_options.h"
#include "exchange/reading/statement_rows.h"
#include "exchange/statements/recorded_import.h"
#include "ledger/portfolio/portfolio.h"
#include "ledger/portfolio/portfolio_transaction.h"

namespace corvane {

/// What makes two transactions the same: kind, days, equity, shares, amount and currency. The
/// shares of a yield are not told by statements, and what the ledger works out is no part of it.
[[nodiscard]] std::string fingerprint(const BasicTransaction& transaction,
                                      const Calendar& calendar);

/// "2025-01-31", of the day in which `date` lies.
[[nodiscard]] std::string isoDay(Date date, const Calendar& calendar);
[[nodiscard]] std::string isoDay(const YearMonthDay& day);

/// The file that rows come from.
struct MatchedFile {
  std::string sha256;
  std::string profile;  ///< the layout's name
  std::string firstDay;
  std::string lastDay;
};

/// The days of the trades in `rows`.
void findDays(MatchedFile& file, const StatementRows& rows);

/// Gives the rows that `portfolio` has already their verdict. Of n equal rows and m equal
/// transactions in the ledger, m are there already.
///
/// A row whose number `earlier` knows is there as long as the ledger holds what was recorded, and
/// what it accounts for is no other row's. A row without a number, on the one day on which this
/// file and an earlier one meet, may be another one that is equal to what that file has brought: it
/// is perhaps there, unless `options` say that such rows are recorded. A new row that resembles a
/// transaction of the ledger, of the same equity and shares within three days, says so.
void matchWithLedger(StatementRows& rows, Portfolio& portfolio, const Calendar& calendar,
                     const MatchedFile& file, const std::vector<RecordedImport>& earlier,
                     const StatementOptions& options);

/// The transactions of `portfolio` that `import` has recorded and that are as they were; of equal
/// ones the last, in the order of the ledger.
[[nodiscard]] std::vector<TransactionPointer> rowsLeftOf(const RecordedImport& import,
                                                         Portfolio& portfolio,
                                                         const Calendar& calendar);

}  // namespace corvane
