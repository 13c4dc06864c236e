#include "ledger/reports/portfolio_valuation.h"

#include "ledger/manager/portfolio_manager.h"

namespace corvane {
namespace {

using Failure = PortfolioManagerError;

const PortfolioSnapshot& newestSnapshot(const Portfolio& portfolio,
                                        const PortfolioManager& manager) {
  if (portfolio.manager.lock().get() != &manager) {
    throw Failure(Failure::InvalidPortfolio{"Portfolio is unmanaged or has the wrong manager!"});
  }
  static const PortfolioSnapshot empty;
  const auto& years = portfolio.snapshotsByYear;
  return years.empty() ? empty : years.rbegin()->second;
}

}  // namespace

PortfolioValuation PortfolioManager::valuation(const PortfolioPointer& portfolio) const {
  requireReadable();
  const PortfolioSnapshot& snapshot = newestSnapshot(*portfolio, *this);
  const Currency& primary = portfolio->primaryCurrency();
  const auto rateOf = [&](const Currency& currency) {
    if (currency == primary) {
      return Decimal(1);
    }
    const auto rate = quoteProvider->exchangeRateEquity(currency, primary)->recentPrice;
    if (!rate) {
      throw Failure(Failure::ForeignExchangeRateMissing{currency});
    }
    return *rate;
  };

  PortfolioValuation valuation{primary, 0, 0};
  for (const auto& [currency, cash] : snapshot.currencySnapshots) {
    const Decimal rate = rateOf(currency);
    valuation.netDeposited += cash.netCashDeposited * rate;
    valuation.currentValue += cash.cashOnHand * rate;
  }
  for (const auto& [equity, holding] : snapshot.equitySnapshots) {
    if (!equity->recentPrice) {
      throw Failure(
          Failure::LedgerInconsistency{"No recent share price for " + equity->symbol + "."});
    }
    valuation.currentValue += holding.sharesHeld * *equity->recentPrice * rateOf(equity->currency);
  }
  return valuation;
}

EquitySet PortfolioManager::valuationEquities(const PortfolioPointer& portfolio) const {
  requireReadable();
  const PortfolioSnapshot& snapshot = newestSnapshot(*portfolio, *this);
  CurrencySet currencies;
  EquitySet equities;
  for (const auto& [equity, holding] : snapshot.equitySnapshots) {
    equities.insert(equity);
    currencies.insert(equity->currency);
  }
  for (const auto& [currency, cash] : snapshot.currencySnapshots) {
    if (cash.cashOnHand > 0) {
      currencies.insert(currency);
    }
  }
  currencies.erase(portfolio->primaryCurrency());
  for (const Currency& currency : currencies) {
    equities.insert(quoteProvider->exchangeRateEquity(currency, portfolio->primaryCurrency()));
  }
  return equities;
}

}  // namespace corvane
