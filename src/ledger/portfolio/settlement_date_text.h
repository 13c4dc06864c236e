// The day on which a row settled, as messages name it.
#pragma once

#include <string>

#include "ledger/portfolio/portfolio_transaction.h"

namespace corvane {

/// The settlement date in the medium date style of the user's locale, on the day that it was in the
/// calendar of the row's manager; in the user's own zone where the row has lost its manager.
[[nodiscard]] std::string settlementDateText(const PortfolioTransaction& row);

}  // namespace corvane
