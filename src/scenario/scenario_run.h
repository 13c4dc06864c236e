// One simulated trader on its way through the quotes.
#pragma once

#include <memory>
#include <optional>

#include "scenario/scenario_analyzer.h"
#include "scenario/scenario_single_portfolio_manager.h"

namespace corvane {

/// The state of a run between two quotes. Balances and targets change only with a row of the
/// ledger, so they are read anew after each row and not for each quote.
class ScenarioRun {
 public:
  /// Throws ScenarioSinglePortfolioManager::EquityMissingQuoteProviderError.
  ScenarioRun(const EquityPointer& equity, const InvestmentStrategy& strategy,
              const Decimal& initialInvestment, std::size_t quoteCount);

  /// Lets the trader see the next quote. Throws what the ledger throws.
  void take(const Quote& quote, int tradingDayNumber, int sessionNumber);

  /// Closes the books. To be called once, last.
  [[nodiscard]] ScenarioAnalyzer::Analysis finish();

 private:
  using EventType = ScenarioPortfolio::Transaction::EventType;

  void open(const Quote& quote);
  /// Makes the trade that the strategy wants at prices from `low` to `high`, if any; whether it
  /// made one.
  bool trade(const Decimal& low, const Decimal& high, Date date);
  bool buyForUpTo(const Decimal& most, const Decimal& price, Date date, EventType eventType);
  bool sellSlice(const Decimal& slice, const Decimal& price, Date date, EventType eventType);
  bool place(const Decimal& shares, const Decimal& price, Date date, EventType eventType);
  void countDay(int tradingDayNumber, bool hasTraded);
  void readPortfolio();

  const InvestmentStrategy& strategy_;
  const Decimal& initialInvestment_;
  std::shared_ptr<ScenarioSinglePortfolioManager> manager_;
  ScenarioAnalyzer::Analysis analysis_;

  // Read from the portfolio after its latest row.
  Decimal shares_;
  Decimal cash_;
  Decimal targetBuyPrice_;
  Decimal targetSellPrice_;
  Decimal stopLossSellPrice_;
  Decimal stopLossBuyPrice_;

  Decimal previousValue_;
  Date lastDate_ = Date::distantPast();
  std::optional<int> lastTradedDay_;
  std::optional<int> lastSeenDay_;
  std::optional<int> lastSeenSession_;
};

}  // namespace corvane
