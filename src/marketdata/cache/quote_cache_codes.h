// The numbers that stand for intervals and price bases in the cache file. They never change: files
// that were written years ago are read by them.
#pragma once

#include <cstdint>
#include <optional>

#include "core/market/quote_interval.h"
#include "core/market/quote_query.h"

namespace corvane {

/// What stands in the place of an interval where events are meant; no interval has this code.
inline constexpr std::int64_t eventsIntervalCode = 0;

[[nodiscard]] std::int64_t intervalCode(QuoteInterval interval);

[[nodiscard]] std::int64_t priceCode(PriceAdjustment prices);

/// The basis with this code; none where no basis has it.
[[nodiscard]] std::optional<PriceAdjustment> pricesWithCode(std::int64_t code);

}  // namespace corvane
