#include "ledger/transaction/adjusted_cost_base.h"

#include <cassert>

#include "ledger/transaction/exact_sum.h"

namespace corvane {
namespace {

/// Whether the cost base of the holding, and its rounding, are the transaction's business.
bool concernsCostBase(TransactionType type) {
  switch (type) {
    case TransactionType::trade:
    case TransactionType::journaledShares:
    case TransactionType::reinvestedDistribution:
    case TransactionType::returnOfCapital:
      return true;
    case TransactionType::transfer:
    case TransactionType::split:
    case TransactionType::dividend:
    case TransactionType::capitalGainsDividend:
    case TransactionType::cashAdjustment:
      return false;
  }
  __builtin_unreachable();
}

}  // namespace

std::optional<Decimal> costBaseNet(const TransactionEffect& effect, const Decimal& sharesNet,
                                   const Decimal& costBasePrior, const Currency& primaryCurrency) {
  if (effect.equity == nullptr) {
    return std::nullopt;
  }
  if (!concernsCostBase(effect.type)) {
    return costBasePrior;
  }
  if (effect.sharesAdded >= 0) {
    return roundedToMinorUnits(exactSum(costBasePrior, effect.costAdded), primaryCurrency);
  }
  assert(effect.movesShares() && "only what moves shares takes some away");
  const Decimal sharesPrior = sharesNet - effect.sharesAdded;
  if (sharesPrior <= 0) {
    return Decimal(0);
  }
  return roundedToMinorUnits(costBasePrior * sharesNet / sharesPrior, primaryCurrency);
}

std::optional<Decimal> capitalGain(const TransactionEffect& effect, const Decimal& sharesNet,
                                   const Decimal& costBasePrior, const Currency& primaryCurrency) {
  if (!effect.isSale()) {
    return std::nullopt;
  }
  assert(effect.equivalentAmount && "a sale tells what it has brought");
  const Decimal& proceeds = *effect.equivalentAmount;
  const Decimal sharesSold = -effect.sharesAdded;
  const Decimal sharesPrior = sharesNet + sharesSold;
  const Decimal gain =
      sharesPrior > 0 ? proceeds - costBasePrior * sharesSold / sharesPrior : proceeds;
  return roundedToMinorUnits(gain, primaryCurrency);
}

}  // namespace corvane
