// Who is to blame when a walk refuses an edit: the entry itself, or a row that was there before.
#pragma once

#include "ledger/portfolio/portfolio_manager_error.h"

namespace corvane {

/// `error` as it is where the user's own entry `subject` is at fault, and as the violation of an
/// existing transaction where another row is. Null where an edit has no entry of its own.
[[nodiscard]] PortfolioManagerError blaming(const BasicTransaction* subject,
                                            const PortfolioManagerError& error);

}  // namespace corvane
