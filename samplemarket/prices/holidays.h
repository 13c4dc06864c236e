// The days on which exchanges are closed or close early.
#pragma once

#include <cstdint>
#include <set>

#include "samplemarket/prices/exchange.h"

namespace corvane::samplemarket {

/// Days since 1970-01-01, as dayCount counts them.
struct Holidays {
  std::set<std::int64_t> closed;   ///< weekends are not among them
  std::set<std::int64_t> halfDay;  ///< the session ends at the exchange's halfDayClose
};

/// The holidays of `id` in one year, by the rules that the exchange follows today.
[[nodiscard]] Holidays holidays(ExchangeID id, std::int64_t year);

}  // namespace corvane::samplemarket
