// Which days of what is held have prices in the cache, and what the others lack.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "marketdata/cache/cache_quote_provider.h"
#include "reports/coverage/held_days.h"

namespace corvane {

/// What is kept of the daily prices of one equity or exchange rate, as traded, for the days on
/// which it was held. A plain value.
struct PriceCoverage {
  enum class State {
    covered,         ///< the cache has what the market has finally told
    carriedForward,  ///< covered, but nothing was traded: the last price before counts on
    withoutPrice,    ///< covered, but no price is there yet, as before the first trade
    running,         ///< from the latest session on, whose price is known but not final
    missing          ///< not in the cache
  };
  struct Stretch {
    DaySpan days;
    State state;
    friend bool operator==(const Stretch&, const Stretch&) = default;
  };

  EquityPointer equity;
  bool isExchangeRate = false;
  /// All days on which it was held, in ascending order, by the exchange's calendar. Of two that
  /// follow on the state differs.
  std::vector<Stretch> stretches;
  /// Why the market has told no prices, in words for the user; none where it has not refused.
  std::optional<std::string> problem;

  [[nodiscard]] bool hasMissingDays() const;
};

/// The word for `state` in files and listings, which never changes: "covered", "carried", "none",
/// "running" or "missing". Any thread.
[[nodiscard]] std::string_view rawValue(PriceCoverage::State state);

/// What a price has to be like to be told as carried forward: a gap of this many weekdays between
/// two closes, which no weekend and hardly a holiday makes. A bar that the market told without a
/// close counts as well.
inline constexpr int weekdaysOfAGap = 3;

/// What the coverage of prices is read from.
struct CoverageSources {
  const CacheQuoteProvider& cache;
  QuoteProvider& quotes;     ///< names the exchange rates
  const Calendar& calendar;  ///< of the ledgers' days
  YearMonthDay today;
  /// Whether recent prices have just been refreshed: days after the latest trade of an equity are
  /// then known to be without trading. Else they count as such for a long weekend only.
  bool isRefreshed = false;
};

/// The coverage of all that `portfolios` have held: the equities by symbol, then the rates. The
/// rows of the portfolios have been read. Main queue only; throws what reading the cache throws.
[[nodiscard]] std::vector<PriceCoverage> priceCoverage(
    const std::vector<PortfolioPointer>& portfolios, const CoverageSources& sources);

/// The coverage of `equity` on the days of `held`: a line of priceCoverage() by itself, for whoever
/// has other things to do between two lines. Main queue only; throws as it does.
[[nodiscard]] PriceCoverage coverageOf(const EquityPointer& equity,
                                       const std::vector<DaySpan>& held,
                                       const CoverageSources& sources);

/// Asks `provider` for all missing days of `coverages`, which a chain then keeps.
///
/// Main queue only, where `progress` is called with the part that is done, from 0 to 1, and at last
/// `completion`, once, with what was refused, in words for the user.
void fetchMissingPrices(const std::shared_ptr<QuoteProvider>& provider,
                        const std::vector<PriceCoverage>& coverages,
                        std::function<void(double fraction)> progress,
                        std::move_only_function<void(EquityMap<std::string>)> completion);

}  // namespace corvane
