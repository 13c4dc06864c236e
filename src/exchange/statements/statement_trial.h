// New rows of a statement, held against the ledger without recording them.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "exchange/reading/statement_rows.h"
#include "ledger/portfolio/portfolio.h"
#include "platform/error.h"

namespace corvane {

class HeldSplits;

/// Why a ledger refuses a row: what went wrong, and why or what helps. Any thread.
[[nodiscard]] std::string ledgerRefusalText(const Error& error);

/// The new rows of a statement in the order in which they are recorded: that of their settlement,
/// and of the rows within a day. So a ledger that they go to the end of grows row by row.
[[nodiscard]] std::vector<std::uint32_t> recordingOrder(const StatementRows& rows);

/// Gives the new rows that the ledger of `portfolio` would refuse their verdict. Rows without times
/// of a day are turned round where the ledger takes them that way alone. `splits` are settled by
/// the order in which the rows stand at the end.
///
/// Where all go to the end of the ledger, they are booked on its balances one by one, and nothing
/// but the balances is held; else they are recorded in a copy. `progress` is told what part is
/// done, from 0 to 1, and may be null; what it throws ends the trial. Main queue only.
void tryOnLedger(StatementRows& rows, Portfolio& portfolio, const HeldSplits& splits,
                 const std::function<void(double fraction)>& progress = nullptr);

}  // namespace corvane
