// Replays a strategy over the past prices of an equity.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "core/market/quote.h"
#include "core/strategy/investment_strategy.h"
#include "platform/range.h"
#include "scenario/scenario_portfolio.h"

namespace corvane {

/// For each quote the number of whole days from 1970-01-01 00:00:00 UTC to its start, counted in
/// the calendar of `equity`. Quotes with one number are of one trading day, as long as the equity's
/// session does not cross the hour at which its place saw that moment.
[[nodiscard]] std::vector<int> tradingDayNumbers(const std::vector<Quote>& quotes,
                                                 const EquityInfo& equity);

/// Lets simulated traders loose on one stretch of quotes. Immutable: many runs may share it, on
/// many threads at once.
///
/// A quote is taken for the range of prices of its time. Purchases are filled at its top and sales
/// at its bottom. The regular rules trade only where the whole range is at or past their target,
/// the stop-loss rules where it touches theirs. At most one trade is made on a quote. A target that
/// lies beyond the decimal's range is out of reach of every price.
class ScenarioAnalyzer {
 public:
  /// The outcome of one run.
  struct Analysis {
    /// The trader's portfolio with all its rows; it and its manager live as long as somebody holds
    /// this.
    std::shared_ptr<ScenarioPortfolio> portfolio;
    /// What the portfolio was worth at each quote of the range: at its close, after its trade. A
    /// quote without low, high or close repeats the value before it, at the start 0.
    std::vector<Decimal> portfolioValues;
    Decimal lastClosePrice;  ///< of the last usable quote; 0 where there is none
    int totalTradesMade = 0;
    int totalDaysTradedOn = 0;  ///< days with at least one trade
    int totalTradingDays = 0;   ///< days with at least one usable quote
    /// Days of the exchange's own calendar with at least one usable quote. Trading days turn at
    /// another hour, in New York at 19:00, and are more where there are prices at night.
    int totalSessions = 0;

    /// What the trader started with: the amount of the first row, 0 where there is none.
    [[nodiscard]] Decimal initialInvestment() const;
    [[nodiscard]] Decimal netGain() const;
    /// The gain for each unit invested: 0.05 for 5%. NaN where nothing was.
    [[nodiscard]] Decimal rateOfReturn() const;
    /// rateOfReturn() scaled from totalSessions to a year of 252, without compounding. NaN for a
    /// run without sessions.
    [[nodiscard]] Decimal annualizedReturn() const;
  };

  using IndexRange = Range<std::size_t>;

  /// `dayNumbers` has one number for each of `history`, which is in time order.
  ScenarioAnalyzer(EquityPointer testedEquity, std::vector<Quote> history,
                   std::vector<int> dayNumbers);

  const EquityPointer equity;
  const std::vector<Quote> quotes;
  const std::vector<int> tradingDayNumbers;  ///< equal for quotes of one trading day
  const std::vector<int> sessionNumbers;     ///< equal for quotes of one day of the exchange

  /// Runs `strategy` over the quotes of `range`, or over all, with `initialInvestment` to start
  /// with. Throws ScenarioSinglePortfolioManager::EquityMissingQuoteProviderError, and what the
  /// ledger throws, such as PortfolioManagerError::InsufficientShares for a slice above 1.
  ///
  /// A sale whose slice rounds down to no share at all is not made: the rule that asked for it has
  /// had its turn on this quote, and there is neither a row nor a count of it.
  [[nodiscard]] Analysis analyze(const std::optional<IndexRange>& range,
                                 const InvestmentStrategy& strategy,
                                 const Decimal& initialInvestment) const;
};

}  // namespace corvane
