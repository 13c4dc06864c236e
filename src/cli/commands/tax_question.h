// What the commands about taxes ask for.
#pragma once

#include <vector>

#include "cli/commands/report_output.h"
#include "core/tax/tax_settings.h"
#include "reports/tax/tax_ledger.h"

namespace corvane::cli {

/// The year that --year, --year-start, --country, --no-superficial, --trade-dates and --person ask
/// for; where they are silent, as `settings` say. Throws UsageError.
[[nodiscard]] TaxYearQuestion taxQuestion(const CommandLine& line, TaxSettings settings,
                                          const Calendar& calendar);

/// The portfolios of the workspace with the roles that --registered, --not-mine and --affiliated
/// give them; else those of the workspace. Their rows are read. Throws UsageError.
[[nodiscard]] std::vector<TaxedPortfolio> portfoliosWithRoles(const CommandLine& line,
                                                              const WorkspaceFile& workspace);

/// The whole number in `text` of so many digits. Throws UsageError, which says what was `wanted`.
[[nodiscard]] int wholeNumberOf(const std::string& text, std::size_t digits,
                                const std::string& wanted);

}  // namespace corvane::cli
