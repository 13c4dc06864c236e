// What a portfolio, or one equity of it, was worth day by day, and what its owner brought in and
// took out meanwhile: the base of all figures about returns.
#pragma once

#include <functional>
#include <span>
#include <string>
#include <unordered_set>
#include <vector>

#include "ledger/portfolio/portfolio.h"
#include "reports/inquiry/cancellation.h"
#include "reports/series/market_history.h"

namespace corvane {

/// The end of a day. Money is in the currency of the series.
struct ValuationDay {
  YearMonthDay day;
  Decimal value = {};
  Decimal inflow = {};   ///< brought in by the owner, not negative
  Decimal outflow = {};  ///< taken out by him, not negative
  /// What of inflow less outflow was shares that were journaled.
  Decimal journaled = {};
  /// Something was valued at the price of its last trade, at its cost or at the rate that a row
  /// implies, since the market had told nothing up to that day.
  bool isAtTradePrice = false;
  friend bool operator==(const ValuationDay&, const ValuationDay&) = default;
};

/// What happened to one equity in the range. Money is in the primary currency.
struct EquityFigures {
  EquityPointer equity;
  Decimal opening = {};
  Decimal bought = {};
  Decimal sold = {};
  Decimal dividends = {};
  Decimal journaled = {};  ///< moved in less moved out, at the prices of their days
  Decimal closing = {};
  Decimal realised = {};  ///< the ledger's capital gains
  bool isAtTradePrice = false;

  /// By what it rose, without its dividends.
  [[nodiscard]] Decimal gain() const { return closing - opening - bought + sold - journaled; }
};

/// What made of the opening value the closing value. Money is in the currency of the series.
struct ValueBridge {
  Decimal opening = {};
  Decimal deposits = {};
  Decimal withdrawals = {};
  Decimal journaled = {};
  Decimal equityGain = {};
  Decimal realised = {};  ///< the part of equityGain that the ledger has realized
  Decimal dividends = {};
  Decimal adjustments = {};  ///< interest, fees, corrections
  Decimal closing = {};
  Decimal dividendsKeptAsCash = {};  ///< of a portfolio without cash accounts; beside the sum

  /// What is left: foreign cash that has changed its worth, and equivalents that were not at the
  /// rates of their days.
  [[nodiscard]] Decimal currency() const {
    return closing - opening - deposits + withdrawals - journaled - equityGain - dividends -
           adjustments;
  }
  /// What the investments have made of the money.
  [[nodiscard]] Decimal gain() const {
    return closing - opening - deposits + withdrawals - journaled;
  }
};

struct ValuationSeries {
  Currency currency;
  /// The base day, which is the day before the range, then each day with a row, a close or a rate,
  /// and the last day of the range. Ascending; empty where `missing` is not.
  std::vector<ValuationDay> days = {};
  /// Equities and currencies in the scope without which there are no figures, by symbol and code:
  /// their series could not be had, or no rate of a currency is known at all.
  std::vector<std::string> missing = {};
  ValueBridge bridge = {};
};

/// What is to be valued. The range has at least a day.
struct ValuationScope {
  YearMonthDay from;
  YearMonthDay to;
  /// One equity alone, or null for the whole portfolio.
  EquityPointer equity = nullptr;
  /// Their holdings, trades and income count as things outside of the portfolio.
  EquitySet leftOut = {};
  std::unordered_set<Currency> leftOutCurrencies = {};
  /// Where it is cancelled, the series ends up empty.
  Cancellation cancellation = {};
};

/// Told of each equity of the scope that was held or traded: its figures, and those of its own days
/// that its returns need: the first and the last, each with a flow and the one before it, and those
/// on which nothing is left. The days are gone when it returns.
using EquityVisitor =
    std::function<void(const EquityFigures& figures, std::span<const ValuationDay> days)>;

/// Values `portfolio` on the days of `scope`.
///
/// With cash accounts the value is holdings and cash of all currencies, and the owner's doing is
/// transfers; without, the value is holdings alone, and purchases come in, sales and dividends go
/// out. Of one equity, purchases come in and sales and dividends go out, at their equivalents.
/// Shares journaled in or out count at the price of the day in every scope. Amounts in other
/// currencies are taken at the rates of their own days.
///
/// An asset without a bar on a day has the last close before it, never a later one; only what is
/// held from before the range has the open of its first bar where that follows within the lead-in's
/// length. Where the market knows nothing the last trade prices it, else its cost base.
///
/// On the main queue, as it reads the rows, or on any thread for a FrozenPortfolio.
/// O(rows + days × equities).
[[nodiscard]] ValuationSeries valuationSeries(Portfolio& portfolio, const ValuationScope& scope,
                                              const MarketHistory& history,
                                              const Calendar& calendar,
                                              const EquityVisitor& visitor = nullptr);

/// The sum of `series` in `currency`: the union of their days, each carried forward, at the rates
/// of the day. Missing where one is, and where a rate to `currency` is.
[[nodiscard]] ValuationSeries combinedSeries(std::span<const ValuationSeries> series,
                                             const Currency& currency,
                                             const MarketHistory& history);

/// What each of `series` contributes to the value of each day of `sum`, which is their combined
/// series: a list for each, as long as the days of `sum`, whose figures add up to its values.
[[nodiscard]] std::vector<std::vector<Decimal>> valuesInSum(std::span<const ValuationSeries> series,
                                                            const ValuationSeries& sum,
                                                            const MarketHistory& history);

}  // namespace corvane
