// Divides a query into what the cache holds as asked for, what it holds on another price basis, and
// what it does not hold.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "core/market/quote_query.h"

namespace corvane {

/// Queries for one equity whose ranges, taken together, fill the range of the query that was
/// planned, without overlap. Each list is in ascending order, and the plan is never without a
/// query.
struct CoveragePlan {
  std::vector<QuoteQuery> exactQueries;  ///< to be read from the cache as they are
  /// To be read from the cache and restated: they seek another price basis than was asked for.
  std::vector<QuoteQuery> convertibleQueries;
  std::vector<QuoteQuery> missingQueries;  ///< not in the cache; these seek what was asked for

  friend bool operator==(const CoveragePlan&, const CoveragePlan&) = default;
};

/// What a query looks for among the records of coverage.
struct CoverageTarget {
  std::int64_t intervalCode;  ///< eventsIntervalCode where events are sought
  PriceAdjustment prices;
  bool usingSnapshots;  ///< whether snapshots may stand in for bars

  [[nodiscard]] static CoverageTarget of(const QuoteQuery::Subject& subject);
};

/// A part of a query's range that the cache covers on one price basis.
struct CoveredRange {
  DateRange range;
  PriceAdjustment prices;
};

/// The plan for `query`, whose range is not empty, given what the cache covers within it.
///
/// `covered` is ordered by start; at one start the basis sought comes first, and of the others the
/// longest. Ranges of one basis do not overlap. The basis sought always wins. Another basis fills
/// what it leaves open: a range of a third one that ends within it is passed over, and one that
/// reaches further takes over from its own start, or from where the plan has got to if that is
/// later. Whoever asks for events without adjustment gets them on whatever basis they have.
///
/// Snapshots that were not asked for are not used, but a missing query ends and a new one begins
/// where they start.
[[nodiscard]] CoveragePlan coveragePlan(const QuoteQuery& query,
                                        std::span<const CoveredRange> covered);

}  // namespace corvane
