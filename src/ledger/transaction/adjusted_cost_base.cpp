#include "ledger/transaction/adjusted_cost_base.h"

#include "ledger/transaction/exact_sum.h"

#include "platform/overloaded.h"

namespace corvane {
namespace {

/// How a transaction moves a holding and its cost.
struct HoldingChange {
  Decimal shares;
  Decimal cost;
};

/// None where neither the cost base nor its rounding is the transaction's business.
std::optional<HoldingChange> holdingChange(const BasicTransaction::Kind& kind) {
  using Change = std::optional<HoldingChange>;
  return std::visit(
      Overloaded{[](const BasicTransaction::Trade& trade) {
                   return Change({trade.sharesAdded, trade.equivalentCashDisposed});
                 },
                 [](const BasicTransaction::JournaledShares& journaled) {
                   return Change({journaled.sharesAdded, journaled.costBaseAdded.value_or(0)});
                 },
                 [](const BasicTransaction::Yield& yield) {
                   switch (yield.type) {
                     case BasicTransaction::YieldType::reinvestedDistribution:
                       return Change({0, yield.equivalentNetAmount});
                     case BasicTransaction::YieldType::returnOfCapital:
                       return Change({0, -yield.equivalentNetAmount});
                     case BasicTransaction::YieldType::dividend:
                     case BasicTransaction::YieldType::capitalGainsDividend:
                       return Change();
                   }
                   __builtin_unreachable();
                 },
                 [](const auto&) { return Change(); }},
      kind);
}

}  // namespace

std::optional<Decimal> costBaseNet(const BasicTransaction::Kind& kind, const Decimal& sharesNet,
                                   const Decimal& costBasePrior, const Currency& primaryCurrency) {
  if (std::holds_alternative<BasicTransaction::Transfer>(kind) ||
      std::holds_alternative<BasicTransaction::CashAdjustment>(kind)) {
    return std::nullopt;
  }
  const auto change = holdingChange(kind);
  if (!change) {
    return costBasePrior;
  }
  if (change->shares >= 0) {
    return roundedToMinorUnits(exactSum(costBasePrior, change->cost), primaryCurrency);
  }
  const Decimal sharesPrior = sharesNet - change->shares;
  if (sharesPrior <= 0) {
    return Decimal(0);
  }
  return roundedToMinorUnits(costBasePrior * sharesNet / sharesPrior, primaryCurrency);
}

std::optional<Decimal> capitalGain(const BasicTransaction::Kind& kind, const Decimal& sharesNet,
                                   const Decimal& costBasePrior, const Currency& primaryCurrency) {
  const auto* trade = std::get_if<BasicTransaction::Trade>(&kind);
  if (trade == nullptr || trade->sharesAdded >= 0 || trade->equivalentCashDisposed > 0) {
    return std::nullopt;
  }
  const Decimal sharesSold = -trade->sharesAdded;
  const Decimal proceeds = -trade->equivalentCashDisposed;
  const Decimal sharesPrior = sharesNet + sharesSold;
  const Decimal gain =
      sharesPrior > 0 ? proceeds - costBasePrior * sharesSold / sharesPrior : proceeds;
  return roundedToMinorUnits(gain, primaryCurrency);
}

}  // namespace corvane
