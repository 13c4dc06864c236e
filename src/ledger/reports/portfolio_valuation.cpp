#include "ledger/reports/portfolio_valuation.h"

#include "ledger/portfolio/portfolio_manager_error.h"

namespace corvane {
namespace {

using Failure = PortfolioManagerError;

Decimal recentRate(const Currency& currency, const Currency& primary, QuoteProvider& quotes) {
  if (currency == primary) {
    return 1;
  }
  const auto rate = quotes.exchangeRateEquity(currency, primary)->recentPrice;
  if (!rate) {
    throw Failure(Failure::ForeignExchangeRateMissing{currency});
  }
  return *rate;
}

}  // namespace

PortfolioValuation valuationOf(const PortfolioSnapshot& snapshot, const Currency& primary,
                               QuoteProvider& quotes) {
  PortfolioValuation valuation{primary, 0, 0};
  for (const auto& [currency, cash] : snapshot.currencySnapshots) {
    const Decimal rate = recentRate(currency, primary, quotes);
    valuation.netDeposited += cash.netCashDeposited * rate;
    valuation.currentValue += cash.cashOnHand * rate;
  }
  for (const auto& [equity, holding] : snapshot.equitySnapshots) {
    if (holding.sharesHeld.isZero()) {
      continue;
    }
    if (!equity->recentPrice) {
      throw Failure(
          Failure::LedgerInconsistency{"No recent share price for " + equity->symbol + "."});
    }
    valuation.currentValue +=
        holding.sharesHeld * *equity->recentPrice * recentRate(equity->currency, primary, quotes);
  }
  return valuation;
}

EquitySet equitiesOfValuation(const PortfolioSnapshot& snapshot, const Currency& primary,
                              QuoteProvider& quotes) {
  EquitySet equities;
  const auto addRate = [&](const Currency& currency) {
    // Of an equity that has never been refreshed the currency is not known yet.
    if (currency != primary && currency != Currency::noCurrency()) {
      equities.insert(quotes.exchangeRateEquity(currency, primary));
    }
  };
  for (const auto& [currency, cash] : snapshot.currencySnapshots) {
    addRate(currency);
  }
  for (const auto& [equity, holding] : snapshot.equitySnapshots) {
    if (!holding.sharesHeld.isZero()) {
      equities.insert(equity);
      addRate(equity->currency);
    }
  }
  return equities;
}

}  // namespace corvane
