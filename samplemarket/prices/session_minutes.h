// The minutes of one session, which its day's prices are made of.
#pragma once

#include <cstdint>
#include <vector>

#include "samplemarket/prices/published_prices.h"

namespace corvane::samplemarket {

/// A session's bars of one minute, those included in which nobody traded, up to the one that runs
/// at `now` (seconds since 1970), which goes as far as `now`. Put together, the bars of a whole
/// session are its day's bar. There are none after `now`.
[[nodiscard]] std::vector<PublishedBar> sessionMinutes(const DailyHistory& history,
                                                       const PublishedPrices& published,
                                                       std::size_t session, std::int64_t now);

/// The bars of one minute before and after the session, with the few trades that there are then,
/// and no volume: the service tells none.
[[nodiscard]] std::vector<PublishedBar> preMarketMinutes(const DailyHistory& history,
                                                         const PublishedPrices& published,
                                                         std::size_t session, std::int64_t now);
[[nodiscard]] std::vector<PublishedBar> postMarketMinutes(const DailyHistory& history,
                                                          const PublishedPrices& published,
                                                          std::size_t session, std::int64_t now);

}  // namespace corvane::samplemarket
