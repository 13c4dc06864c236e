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
  return recordEvents({tradeEvent(shares, price, date, eventType)}).front();
}

ScenarioTransactionPointer ScenarioSinglePortfolioManager::recordEvent(BasicTransaction::Kind kind,
                                                                       Date date,
                                                                       EventType eventType) {
  return recordEvents({{std::move(kind), date, eventType}}).front();
}

ScenarioSinglePortfolioManager::Event ScenarioSinglePortfolioManager::tradeEvent(
    const Decimal& shares, const Decimal& price, Date date, EventType eventType) {
  assert(!shares.isZero() && "a trade of nothing has no price");
  const Currency& currency = singlePortfolio()->primaryCurrency();
  const Decimal amount = roundedToMinorUnits(price * shares, currency);
  return {BasicTransaction::Trade{equity, {currency, amount}, amount, shares}, date, eventType};
}

std::vector<ScenarioTransactionPointer> ScenarioSinglePortfolioManager::recordEvents(
    std::vector<Event> events) {
  const auto& portfolio = singlePortfolio();
  const ScenarioPortfolio::Transaction* previous = portfolio->lastTransaction();
  std::vector<BasicTransaction> basics;
  basics.reserve(events.size());
  for (Event& event : events) {
    basics.push_back({std::move(event.kind), event.date, event.date, std::nullopt});
  }
  const auto rows = recordTransactions(basics, portfolio, /*undoManager=*/nullptr);
  std::vector<ScenarioTransactionPointer> recorded;
  recorded.reserve(rows.size());
  for (std::size_t i = 0; i < rows.size(); ++i) {
    auto row = std::static_pointer_cast<ScenarioPortfolio::Transaction>(rows[i]);
    if (const auto* trade = std::get_if<BasicTransaction::Trade>(&row->basic.kind)) {
      row->runningNetShares = row->sharesNet.value_or(0);
      row->mostRecentSharePrice = trade->cashDisposed.amount / trade->sharesAdded;
    } else if (previous != nullptr) {
      row->runningNetShares = previous->runningNetShares;
      row->mostRecentSharePrice = previous->mostRecentSharePrice;
    }
    row->mostRecentSharePrice = events[i].referencePrice.value_or(row->mostRecentSharePrice);
    row->eventType = events[i].eventType;
    previous = row.get();
    recorded.push_back(std::move(row));
  }
  return recorded;
}

void ScenarioSinglePortfolioManager::postPortfolioChange(
    std::optional<TransactionChanges> /*changes*/, const PortfolioPointer& /*portfolio*/) {
  // A run may be on any thread and has thousands of rows, which no view shows while it goes on.
}

}  // namespace corvane
