// The history of a price, as options ask for it.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "cli/console/command_line.h"
#include "cli/console/console.h"
#include "cli/console/price_source.h"
#include "core/market/quote.h"
#include "core/market/quote_provider.h"

namespace corvane::cli {

/// "--interval" with its choices.
[[nodiscard]] Option intervalOption();

/// The length that "--interval" names, a day where it is absent. Throws UsageError.
[[nodiscard]] QuoteInterval intervalOf(const CommandLine& line);

/// The bars of `query`, whose subject is QuoteQuery::Quotes; at least one. Nothing is asked for
/// that lies in the future. Throws UsageError where all of the range does, Failed, having said why,
/// where there are no bars or none of this length.
[[nodiscard]] std::vector<Quote> fetchBars(QuoteQuery query, const PriceSource& prices,
                                           const Console& console);

/// "2024-03-09 09:30"
[[nodiscard]] std::string timeText(Date date, const Calendar& calendar);

}  // namespace corvane::cli
