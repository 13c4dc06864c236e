// What the commands about returns ask for, and what the market answers.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/commands/report_output.h"
#include "reports/returns/returns_report.h"
#include "reports/returns/total_return_index.h"
#include "reports/series/market_history.h"

namespace corvane::cli {

/// What a command line asks for, with what the market has told.
struct ReturnsQuestion {
  std::vector<PortfolioPointer> portfolios;
  Currency currency;
  EquityPointer equity;
  YearMonthDay from;
  YearMonthDay to;
  std::shared_ptr<MarketHistory> market = nullptr;
};

/// What --portfolio, --all, --symbol, --currency, --from and --to ask for. Throws UsageError.
[[nodiscard]] ReturnsQuestion returnsQuestion(const CommandLine& line,
                                              const WorkspaceFile& workspace);

/// Fetches what the question needs, and waits for it.
void askMarket(ReturnsQuestion& question, PortfolioManager& manager, const Console& console);

/// The report of `portfolio`, without what the market did not tell, which is warned of; then
/// `isComplete` becomes false.
[[nodiscard]] ReturnsReport reportWithoutMissing(const ReturnsQuestion& question,
                                                 Portfolio& portfolio, const Calendar& calendar,
                                                 const Console& console, bool& isComplete);

/// The report of all portfolios of the question, as one. Throws Failed where there are no figures.
[[nodiscard]] ReturnsReport reportOf(const ReturnsQuestion& question, const Calendar& calendar,
                                     const Console& console, bool& isComplete);

/// The return of --benchmark in `currency`, in the days of the question; none where it is not asked
/// for, or cannot be had, which is warned of. Throws the error of the market.
[[nodiscard]] std::optional<BenchmarkReturn> benchmarkOf(const CommandLine& line,
                                                         const ReturnsQuestion& question,
                                                         const Currency& currency,
                                                         QuoteProvider& provider,
                                                         const Console& console);

/// What to call the scope of the question.
[[nodiscard]] std::string scopeTitle(const ReturnsQuestion& question);

}  // namespace corvane::cli
