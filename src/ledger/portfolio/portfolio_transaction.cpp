#include "ledger/portfolio/portfolio_transaction.h"

#include "ledger/portfolio/portfolio.h"
#include "ledger/transaction/adjusted_cost_base.h"

namespace corvane {

std::optional<Decimal> PortfolioTransaction::costBaseNet() const {
  const auto owner = portfolio.lock();
  if (owner == nullptr || !sharesNet || !costBasePrior) {
    return std::nullopt;
  }
  return corvane::costBaseNet(transactionEffect(basic.kind), *sharesNet, *costBasePrior,
                              owner->primaryCurrency());
}

std::optional<Decimal> PortfolioTransaction::capitalGain() const {
  const auto owner = portfolio.lock();
  if (owner == nullptr || !sharesNet || !costBasePrior) {
    return std::nullopt;
  }
  return corvane::capitalGain(transactionEffect(basic.kind), *sharesNet, *costBasePrior,
                              owner->primaryCurrency());
}

}  // namespace corvane
