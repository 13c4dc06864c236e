// One simulated trader on its way through the quotes.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "scenario/scenario_analyzer.h"
#include "scenario/scenario_single_portfolio_manager.h"

namespace corvane {

/// The state of a run between two quotes. Targets change only with a row of the ledger, so they are
/// worked out after each row and not for each quote.
///
/// Rows go to the ledger together, at the end: what it derives for each of them does not depend on
/// when it is asked, and walking all at once takes a third of the time. Until then the balances are
/// kept here, and the ledger has to come to the same ones. A row that would leave too little of
/// something is handed over at once, so that the ledger refuses it before the trader goes on.
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
  void setReference(const Decimal& reference);
  /// Hands over what the ledger has not seen. Throws what it throws.
  void settle();

  const InvestmentStrategy& strategy_;
  const Decimal& initialInvestment_;
  std::shared_ptr<ScenarioSinglePortfolioManager> manager_;
  ScenarioAnalyzer::Analysis analysis_;

  /// Rows that the ledger has not seen.
  std::vector<ScenarioSinglePortfolioManager::Event> pending_;
  // After the latest row.
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
