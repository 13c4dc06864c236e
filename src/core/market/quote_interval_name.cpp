#include "core/market/quote_interval_name.h"

#include <algorithm>
#include <array>

namespace corvane {
namespace {

/// In the order of the intervals.
constexpr std::array<std::string_view, allQuoteIntervals.size()> shortNames = {
    "1m", "2m", "5m", "15m", "30m", "90m", "1h", "1d", "5d", "1wk", "1mo", "3mo"};

}  // namespace

std::string_view shortName(QuoteInterval interval) {
  return shortNames.at(static_cast<std::size_t>(interval));
}

std::optional<QuoteInterval> intervalNamed(std::string_view shortName) {
  const auto* found = std::ranges::find(shortNames, shortName);
  return found == shortNames.end()
             ? std::nullopt
             : std::optional(static_cast<QuoteInterval>(found - shortNames.begin()));
}

}  // namespace corvane
