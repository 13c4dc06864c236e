// What the commands about income ask the market for.
#pragma once

#include <vector>

#include "cli/commands/report_output.h"
#include "reports/income/expected_income.h"

namespace corvane::cli {

/// What each holding is expected to pay, after the market's dividends, or after the portfolio's own
/// rows where it knows none. Waits for the market; what it does not tell is warned of.
[[nodiscard]] std::vector<ExpectedIncome> askForExpected(
    const std::vector<PortfolioPointer>& portfolios, const PortfolioManager& manager,
    const YearMonthDay& today, const Console& console);

}  // namespace corvane::cli
