#include "ledger/transaction/basic_transaction.h"

#include "platform/overloaded.h"

namespace corvane {
namespace {

std::string text(const CurrencyAmount& amount) {
  return amount.amount.description() + " " + std::string(amount.currency.code);
}

struct DescribeKind {
  std::string operator()(const BasicTransaction::Trade& trade) const {
    return "trade of " + trade.sharesAdded.description() + " " + trade.equity->id() + " for " +
           text(trade.cashDisposed);
  }
  std::string operator()(const BasicTransaction::Split& split) const {
    return "split of " + split.priorShares.description() + " " + split.equity->id() + " into " +
           split.netShares.description();
  }
  std::string operator()(const BasicTransaction::JournaledShares& journaled) const {
    return "journaled " + journaled.sharesAdded.description() + " " + journaled.equity->id();
  }
  std::string operator()(const BasicTransaction::Yield& yield) const {
    return std::string(displayName(yield.type)) + " of " + text(yield.netAmount) + " from " +
           yield.equity->id();
  }
  std::string operator()(const BasicTransaction::Transfer& transfer) const {
    return "transfer of " + text(transfer.amount);
  }
  std::string operator()(const BasicTransaction::CashAdjustment& adjustment) const {
    return "cash adjustment of " + text(adjustment.amount);
  }
};

}  // namespace

bool operator==(const BasicTransaction::Trade& left, const BasicTransaction::Trade& right) {
  return *left.equity == *right.equity && left.cashDisposed == right.cashDisposed &&
         left.equivalentCashDisposed == right.equivalentCashDisposed &&
         left.sharesAdded == right.sharesAdded;
}

bool operator==(const BasicTransaction::Split& left, const BasicTransaction::Split& right) {
  return *left.equity == *right.equity && left.priorShares == right.priorShares &&
         left.netShares == right.netShares;
}

bool operator==(const BasicTransaction::JournaledShares& left,
                const BasicTransaction::JournaledShares& right) {
  return *left.equity == *right.equity && left.sharesAdded == right.sharesAdded &&
         left.costBaseAdded == right.costBaseAdded;
}

bool operator==(const BasicTransaction::Yield& left, const BasicTransaction::Yield& right) {
  return left.type == right.type && *left.equity == *right.equity &&
         left.netShares == right.netShares && left.netAmount == right.netAmount &&
         left.equivalentNetAmount == right.equivalentNetAmount;
}

const EquityPointer* BasicTransaction::equity() const {
  return std::visit(
      [](const auto& payload) -> const EquityPointer* {
        if constexpr (requires { payload.equity; }) {
          return &payload.equity;
        } else {
          return nullptr;
        }
      },
      kind);
}

const Currency* BasicTransaction::currency() const {
  return std::visit(
      Overloaded{[](const Trade& trade) { return &trade.cashDisposed.currency; },
                 [](const Yield& yield) { return &yield.netAmount.currency; },
                 [](const Transfer& transfer) { return &transfer.amount.currency; },
                 [](const CashAdjustment& adjustment) { return &adjustment.amount.currency; },
                 [](const Split&) -> const Currency* { return nullptr; },
                 [](const JournaledShares&) -> const Currency* { return nullptr; }},
      kind);
}

std::string BasicTransaction::description() const {
  std::string line = tradeDate.description() + " (" + settlementDate.description() + ") " +
                     std::visit(DescribeKind(), kind);
  if (note) {
    line += ", “" + *note + "”";
  }
  return line;
}

std::ostream& operator<<(std::ostream& out, const BasicTransaction& transaction) {
  return out << transaction.description();
}

std::string_view displayName(BasicTransaction::YieldType type) {
  switch (type) {
    case BasicTransaction::YieldType::dividend:
      return "dividend";
    case BasicTransaction::YieldType::capitalGainsDividend:
      return "capital gains dividend";
    case BasicTransaction::YieldType::reinvestedDistribution:
      return "reinvested distribution";
    case BasicTransaction::YieldType::returnOfCapital:
      return "return of capital";
  }
  __builtin_unreachable();
}

}  // namespace corvane
