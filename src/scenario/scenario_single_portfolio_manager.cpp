#include "scenario/scenario_single_portfolio_manager.h"

#include <cassert>
#include <utility>

namespace corvane {
namespace {

std::shared_ptr<QuoteProvider> requireProvider(const EquityInfo& equity) {
  auto provider = equity.quoteProvider.lock();
  if (provider == nullptr) {
    throw ScenarioSinglePortfolioManager::EquityMissingQuoteProviderError();
  }
  return provider;
}

}  // namespace

std::optional<std::string>
ScenarioSinglePortfolioManager::EquityMissingQuoteProviderError::description() const {
  return "The equity has no quote provider any more.";
}

ScenarioSinglePortfolioManager::ScenarioSinglePortfolioManager(EquityPointer tradedEquity)
    : PortfolioManager(
          requireProvider(*tradedEquity), &makeTransaction<ScenarioPortfolio::Transaction>,
          {OrderFeature::allowsFractionalShares, OrderFeature::allowsRecordTransaction}),
      equity(std::move(tradedEquity)) {}

const std::shared_ptr<ScenarioPortfolio>& ScenarioSinglePortfolioManager::singlePortfolio() {
  if (singlePortfolio_ == nullptr) {
    singlePortfolio_ = std::make_shared<ScenarioPortfolio>(weak_from_this(), equity);
    portfolios_.push_back(singlePortfolio_);
  }
  return singlePortfolio_;
}

PortfolioPointer ScenarioSinglePortfolioManager::createPortfolio(
    const Currency& /*primaryCurrency*/) {
  return singlePortfolio();
}

ScenarioTransactionPointer ScenarioSinglePortfolioManager::placeTrade(const Decimal& shares,
                                                                      const Decimal& price,
                                                                      Date date,
                                                                      EventType eventType) {
  assert(!shares.isZero() && "a trade of nothing has no price");
  const Currency& currency = singlePortfolio()->primaryCurrency();
  const Decimal amount = roundedToMinorUnits(price * shares, currency);
  return recordEvent(BasicTransaction::Trade{equity, {currency, amount}, amount, shares}, date,
                     eventType);
}

ScenarioTransactionPointer ScenarioSinglePortfolioManager::recordEvent(BasicTransaction::Kind kind,
                                                                       Date date,
                                                                       EventType eventType) {
  const auto& portfolio = singlePortfolio();
  const ScenarioPortfolio::Transaction* previous = portfolio->lastTransaction();
  const auto rows = recordTransactions({{std::move(kind), date, date, std::nullopt}}, portfolio,
                                       /*undoManager=*/nullptr);
  const auto row = std::static_pointer_cast<ScenarioPortfolio::Transaction>(rows.front());
  if (const auto* trade = std::get_if<BasicTransaction::Trade>(&row->basic.kind)) {
    row->runningNetShares = row->sharesNet.value_or(0);
    row->mostRecentSharePrice = trade->cashDisposed.amount / trade->sharesAdded;
  } else if (previous != nullptr) {
    row->runningNetShares = previous->runningNetShares;
    row->mostRecentSharePrice = previous->mostRecentSharePrice;
  }
  row->eventType = eventType;
  return row;
}

void ScenarioSinglePortfolioManager::postPortfolioChange(
    std::optional<TransactionChanges> /*changes*/, const PortfolioPointer& /*portfolio*/) {
  // A run may be on any thread and has thousands of rows, which no view shows while it goes on.
}

}  // namespace corvane
