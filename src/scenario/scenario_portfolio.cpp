#include "scenario/scenario_portfolio.h"

#include "ledger/manager/portfolio_manager.h"

namespace corvane {

ScenarioPortfolio::ScenarioPortfolio(std::weak_ptr<PortfolioManager> owner,
                                     EquityPointer tradedEquity)
    : Portfolio(std::move(owner), tradedEquity->currency), equity(std::move(tradedEquity)) {
  name = equity->symbol + " Scenario";
  allowsNegativeBalances = false;
  usesCashAccounts = true;
}

Decimal ScenarioPortfolio::currentShares() const {
  const PortfolioSnapshot* latest = latestSnapshot();
  return latest == nullptr ? Decimal() : latest->equitySnapshots.get(equity).sharesHeld;
}

Decimal ScenarioPortfolio::currentCash() const {
  const PortfolioSnapshot* latest = latestSnapshot();
  return latest == nullptr ? Decimal()
                           : latest->currencySnapshots.get(primaryCurrency()).cashOnHand;
}

Decimal ScenarioPortfolio::currentValue() {
  const Transaction* last = lastTransaction();
  const Decimal price = last == nullptr ? Decimal() : last->mostRecentSharePrice;
  return price * currentShares() + currentCash();
}

const ScenarioPortfolio::Transaction* ScenarioPortfolio::lastTransaction() {
  return transactions().empty() ? nullptr
                                : dynamic_cast<const Transaction*>(transactions().back().get());
}

const PortfolioSnapshot* ScenarioPortfolio::latestSnapshot() const {
  return snapshotsByYear.empty() ? nullptr : &snapshotsByYear.rbegin()->second;
}

}  // namespace corvane
