// What an equity has returned with its dividends, to compare a portfolio with.
#pragma once

#include <memory>
#include <vector>

#include "core/market/quote_provider.h"
#include "reports/returns/time_weighted_return.h"
#include "reports/series/market_history.h"

namespace corvane {

/// A dividend of one share, on the day from which it is traded without it.
struct ShareDividend {
  YearMonthDay exDay;
  Decimal amount;
};

/// The index of `closes`, which are adjusted for splits alone, as are the `dividends`: it starts
/// with 1 and goes on by (price + dividend) / price before. A dividend of a day without a close
/// counts on the next one. Prices adjusted for dividends would not do: they are lowered by amounts,
/// so that their ratios are no returns.
[[nodiscard]] std::vector<double> totalReturnIndex(const std::vector<PriceLine::Close>& closes,
                                                   const std::vector<ShareDividend>& dividends);

/// Closes and dividends of an equity in a range of days and the lead-in before it.
struct DividendHistory {
  PriceLine prices;  ///< adjusted for splits alone
  std::vector<ShareDividend> dividends;
};

/// Fetches the closes and the dividends of `equity`, on the basis of today's shares. Main queue
/// only; the completion runs once, later, on the main queue.
void fetchDividendHistory(const std::shared_ptr<QuoteProvider>& provider,
                          const EquityPointer& equity, const YearMonthDay& from,
                          const YearMonthDay& to,
                          std::move_only_function<void(Result<DividendHistory>)> completion);

/// The return of the equity from the close before `from` to the last one up to `to`, in the
/// currency that `rates` leads to; null for its own. None where it has no close before `from`, or
/// no rate.
struct BenchmarkReturn {
  struct Point {
    YearMonthDay day;
    double index;
  };
  std::vector<Point> points;  ///< the first has index 1 and is of the base day

  [[nodiscard]] double total() const { return points.back().index - 1; }
  /// The index on `day`, carried forward.
  [[nodiscard]] double indexOn(const YearMonthDay& day) const;
  /// The same as daily returns, for the risk figures that a portfolio has.
  [[nodiscard]] TimeWeightedReturn asReturns() const;
};
[[nodiscard]] std::optional<BenchmarkReturn> benchmarkReturn(const DividendHistory& history,
                                                             const PriceLine* rates,
                                                             const YearMonthDay& from);

}  // namespace corvane
