// The arithmetic of restating prices for splits and dividends.
#pragma once

#include <span>

#include "core/market/quote_fetch_result.h"

namespace corvane {

/// Whether prices of this basis are as they were on their day, untouched by what came later.
[[nodiscard]] constexpr bool isNominal(PriceAdjustment prices) {
  return prices == PriceAdjustment::marketNominal ||
         prices == PriceAdjustment::marketNominalSnapshot;
}

/// `result` restated in the basis `target`, given all events that the equity ever had, in any
/// order. A quote is touched by the events strictly after its `fromDate`; of a split and a dividend
/// at one time the split is the later one. The events of the result come back as the history has
/// them, from the first to the last date that the result had, restated too.
///
/// A split scales the earlier prices by its ratio and the earlier volumes by the inverse, cut to
/// whole shares. A dividend lowers the earlier prices by its amount per share of today. Both are
/// undone by the conversion the other way, exactly where no division leaves more digits than a
/// Decimal has. A split whose ratio is not positive and a dividend that is no number change
/// nothing.
///
/// Takes time in proportion to quotes and events. Any thread.
[[nodiscard]] QuoteFetchResult converted(QuoteFetchResult result, PriceAdjustment target,
                                         std::span<const EquityEvent> history);

}  // namespace corvane
