// What the cache alone can tell while the market cannot be reached.
#pragma once

#include <memory>

#include "core/market/quote_provider.h"
#include "marketdata/cache/cache_quote_provider.h"

namespace corvane {

/// Answers `query` with what `cache` has of it, however little that is. Prices that are kept on
/// another basis are converted where the cache has all events of the equity in their days; of
/// those that are not, nothing is told. The price last paid is the last bar of a day, as in
/// withRecentPrice(). Nothing is written: what has been converted today may have to be converted
/// otherwise once the market can be asked for events.
///
/// Main queue only; `completion` runs once, later, on a background queue.
void fetchStoredPrices(const std::shared_ptr<CacheQuoteProvider>& cache, const QuoteQuery& query,
                       QuoteProvider::QuoteCompletion completion);

}  // namespace corvane
