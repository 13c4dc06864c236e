// The short names of the lengths of price bars.
#pragma once

#include <optional>
#include <string_view>

#include "core/market/quote_interval.h"

namespace corvane {

/// "1m", "1h", "1d", "1wk", "3mo" and so on: as the price service has them, and as a user types
/// them.
[[nodiscard]] std::string_view shortName(QuoteInterval interval);

/// The interval with that short name; none where no interval has it.
[[nodiscard]] std::optional<QuoteInterval> intervalNamed(std::string_view shortName);

}  // namespace corvane
