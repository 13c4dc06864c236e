// What the cache knows of the latest session before its bar is final.
#pragma once

#include "core/market/quote_fetch_result.h"
#include "core/market/quote_query.h"

namespace corvane {

/// `stored`, which the cache has for `query`, with one bar more where the equity's recent price was
/// paid in a later session than all bars that are stored: Friday's close on a weekend without a
/// network.
///
/// The bar of a day is final with the next opening and is not kept before. But each refresh keeps
/// the price last paid, which after the close is that of the day. The further bar has this price as
/// its close and nothing else, ends when that was paid, and is partial. None is added to bars of
/// other lengths than a day, for a range that the session does not begin in, or where nothing at
/// all is stored. Main queue only.
[[nodiscard]] QuoteFetchResult withRecentPrice(QuoteFetchResult stored, const QuoteQuery& query);

}  // namespace corvane
