// Which part of a source's answer may be recorded, and recorded as covered.
#pragma once

#include <optional>
#include <vector>

#include "core/market/quote_fetch_result.h"

namespace corvane {

/// The part of the durable range of `piece` that holds no unfinished bar, between whole seconds,
/// which is all that the cache takes.
///
/// The durable range of a source ends where its data ends, which may be in the middle of a bar. A
/// bar that is cut off cannot be kept; if its start were recorded as covered all the same, nobody
/// would ever ask for it again. So the range starts with the end of the last bar that is unfinished
/// at its start, and ends with the start of the first one that is unfinished at its end; where
/// nothing is left it is empty.
///
/// The start of a week or a month need not be a day of trading. So where no bar of such a length is
/// finished, the last stretch of that length is left out: a bar may begin in it that the source
/// will tell of as soon as there is trading.
///
/// `piece` answers for `asked`, its quotes in ascending order. Nothing can have happened before the
/// equity's first trade, where it is known: what of `asked` lies before it is final, and a bar that
/// begins in that part is whole. Main queue only.
[[nodiscard]] DateRange storableRange(const QuoteFetchResult& piece, const QuoteQuery& asked);

/// The events of `piece`, the answer to `asked`, whose days are known; of a kind that is told twice
/// for one moment the later. None where bars longer than a day were asked for: the service dates
/// what happens within such a bar to the bar's start (a dividend of 7 November to the first of the
/// month, seen in October 2024), and tells no more than one payment a bar. Recorded, that would
/// take the place of the true days.
[[nodiscard]] std::optional<std::vector<EquityEvent>> storableEvents(const QuoteFetchResult& piece,
                                                                     const QuoteQuery& asked);

}  // namespace corvane
