// The private ledger of one simulated run.
#pragma once

#include "ledger/manager/portfolio_manager.h"
#include "scenario/scenario_portfolio.h"

namespace corvane {

/// Keeps exactly one portfolio, in memory, through the ordinary ledger, so that simulated trades
/// obey the accounting of real ones.
///
/// Nothing outside sees it: its changes are not posted. One thread at a time, which need not be the
/// main one. Held by shared pointer only.
class ScenarioSinglePortfolioManager : public PortfolioManager {
 public:
  using EventType = ScenarioPortfolio::Transaction::EventType;

  /// The equity's provider has gone.
  class EquityMissingQuoteProviderError : public ErrorValue<EquityMissingQuoteProviderError> {
   public:
    [[nodiscard]] std::optional<std::string> description() const override;
    [[nodiscard]] bool hasSameValues(const EquityMissingQuoteProviderError&) const { return true; }
  };

  /// Throws EquityMissingQuoteProviderError.
  explicit ScenarioSinglePortfolioManager(EquityPointer tradedEquity);

  const EquityPointer equity;

  /// Made on first use.
  [[nodiscard]] const std::shared_ptr<ScenarioPortfolio>& singlePortfolio();

  /// The single portfolio, whatever the currency.
  PortfolioPointer createPortfolio(const Currency& primaryCurrency) override;

  /// Buys `shares` of the equity at `price`, or sells them where negative; never 0 shares. Throws
  /// what the ledger throws.
  ScenarioTransactionPointer placeTrade(const Decimal& shares, const Decimal& price, Date date,
                                        EventType eventType);

  /// Records what happened at `date`, which is not before the date of the last row. The row goes on
  /// with the reference price and the shares of the row before, unless it is a trade. Throws what
  /// the ledger throws.
  ScenarioTransactionPointer recordEvent(BasicTransaction::Kind kind, Date date,
                                         EventType eventType);

  /// A row to come.
  struct Event {
    BasicTransaction::Kind kind;
    Date date;
    EventType eventType;
    /// The reference price after it, in place of the one that follows from the row.
    std::optional<Decimal> referencePrice = std::nullopt;
  };
  /// As recordEvent() with one after the other, but all or none, and the ledger is walked once.
  std::vector<ScenarioTransactionPointer> recordEvents(std::vector<Event> events);
  /// What placeTrade() records.
  [[nodiscard]] Event tradeEvent(const Decimal& shares, const Decimal& price, Date date,
                                 EventType eventType);

  void postPortfolioChange(std::optional<TransactionChanges> changes,
                           const PortfolioPointer& portfolio) override;

 private:
  std::shared_ptr<ScenarioPortfolio> singlePortfolio_;
};

}  // namespace corvane
