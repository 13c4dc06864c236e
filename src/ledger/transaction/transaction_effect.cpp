#include "ledger/transaction/transaction_effect.h"

#include "ledger/transaction/exact_sum.h"

namespace corvane {
namespace {

struct EffectOf {
  TransactionEffect operator()(const BasicTransaction::Trade& trade) const {
    return {.type = TransactionType::trade,
            .equity = &trade.equity,
            .currency = &trade.cashDisposed.currency,
            .amount = -trade.cashDisposed.amount,
            .equivalentAmount = -trade.equivalentCashDisposed,
            .sharesAdded = trade.sharesAdded,
            .costAdded = trade.equivalentCashDisposed};
  }
  TransactionEffect operator()(const BasicTransaction::Split& split) const {
    return {.type = TransactionType::split,
            .equity = &split.equity,
            .sharesAdded = split.netShares - split.priorShares,
            .declaredShares = split.priorShares,
            .splitInto = split.netShares};
  }
  TransactionEffect operator()(const BasicTransaction::JournaledShares& journaled) const {
    return {.type = TransactionType::journaledShares,
            .equity = &journaled.equity,
            .sharesAdded = journaled.sharesAdded,
            .costAdded = journaled.costBaseAdded.value_or(0)};
  }
  TransactionEffect operator()(const BasicTransaction::Yield& yield) const {
    TransactionEffect effect{.type = transactionType(yield.type),
                             .equity = &yield.equity,
                             .currency = &yield.netAmount.currency,
                             .amount = yield.netAmount.amount,
                             .equivalentAmount = yield.equivalentNetAmount,
                             .declaredShares = yield.netShares};
    if (effect.type == TransactionType::reinvestedDistribution) {
      effect.costAdded = yield.equivalentNetAmount;
    } else if (effect.type == TransactionType::returnOfCapital) {
      effect.costAdded = -yield.equivalentNetAmount;
    }
    return effect;
  }
  TransactionEffect operator()(const BasicTransaction::Transfer& transfer) const {
    return {.type = TransactionType::transfer,
            .currency = &transfer.amount.currency,
            .amount = transfer.amount.amount};
  }
  TransactionEffect operator()(const BasicTransaction::CashAdjustment& adjustment) const {
    return {.type = TransactionType::cashAdjustment,
            .currency = &adjustment.amount.currency,
            .amount = adjustment.amount.amount};
  }
};

}  // namespace

Decimal TransactionEffect::cashAdded(bool usesCashAccounts) const {
  switch (type) {
    case TransactionType::trade:
      return usesCashAccounts ? amount : Decimal();
    case TransactionType::transfer:
    case TransactionType::cashAdjustment:
    case TransactionType::dividend:
      return amount;
    case TransactionType::split:
    case TransactionType::journaledShares:
    case TransactionType::capitalGainsDividend:
    case TransactionType::reinvestedDistribution:
    case TransactionType::returnOfCapital:
      return {};
  }
  __builtin_unreachable();
}

Decimal TransactionEffect::deposited(bool usesCashAccounts) const {
  if (type == TransactionType::transfer) {
    return amount;
  }
  return type == TransactionType::trade && !usesCashAccounts ? -amount : Decimal();
}

Decimal TransactionEffect::sharesAfter(const Decimal& held) const {
  if (splitInto && declaredShares == held) {
    return *splitInto;
  }
  return exactSum(held, sharesAdded);
}

TransactionEffect transactionEffect(const BasicTransaction::Kind& kind) {
  return std::visit(EffectOf(), kind);
}

TransactionType transactionType(BasicTransaction::YieldType yield) {
  switch (yield) {
    case BasicTransaction::YieldType::dividend:
      return TransactionType::dividend;
    case BasicTransaction::YieldType::capitalGainsDividend:
      return TransactionType::capitalGainsDividend;
    case BasicTransaction::YieldType::reinvestedDistribution:
      return TransactionType::reinvestedDistribution;
    case BasicTransaction::YieldType::returnOfCapital:
      return TransactionType::returnOfCapital;
  }
  __builtin_unreachable();
}

}  // namespace corvane
