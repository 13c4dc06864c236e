#include "ledger/accounting/ledger_walk.h"

#include <cmath>

#include "ledger/portfolio/portfolio_manager_error.h"
#include "ledger/transaction/adjusted_cost_base.h"
#include "ledger/transaction/exact_sum.h"
#include "platform/overloaded.h"

namespace corvane {
namespace {

using Failure = PortfolioManagerError;

void requireDates(const BasicTransaction& basic) {
  const bool areFinite = std::isfinite(basic.tradeDate.timeIntervalSinceReferenceDate()) &&
                         std::isfinite(basic.settlementDate.timeIntervalSinceReferenceDate());
  if (!areFinite || basic.settlementDate < basic.tradeDate) {
    throw Failure(Failure::InvalidSettlementDate{basic.settlementDate, basic.tradeDate});
  }
}

/// A figure that the transaction brings along.
void requireNumber(const Decimal& figure, const PortfolioTransaction& row) {
  if (figure.isNaN()) {
    throw Failure(Failure::LedgerInconsistency{
        "The transaction has a figure that is not a number: " + row.description()});
  }
}

/// A balance that came out of a computation.
void requireBalance(const Decimal& balance, const PortfolioTransaction& row) {
  if (balance.isNaN()) {
    throw Failure(Failure::LedgerInconsistency{
        "The balance after the transaction has more digits than can be kept: " +
        row.description()});
  }
}

void requireDenomination(const Decimal& amount, const Currency& currency) {
  if (!fitsMinorUnits(amount, currency)) {
    throw Failure(Failure::InvalidCashDenomination{amount, currency});
  }
}

void assignDerived(std::optional<Decimal>& field, const std::optional<Decimal>& value,
                   PortfolioTransaction& row) {
  if (field != value) {
    field = value;
    row.isDirty = true;
  }
}

}  // namespace

void requireLedgerOrder(const PortfolioTransaction& previous, const PortfolioTransaction& row) {
  if (row.settlementDate() < previous.settlementDate()) {
    throw Failure(Failure::LedgerInconsistency{
        "Transactions not ordered by date (" + row.settlementDate().description() +
        " found after " + previous.settlementDate().description() + ")!"});
  }
}

void requireCashAccounts(const Portfolio& portfolio, const PortfolioTransaction& transfer) {
  if (!portfolio.usesCashAccounts) {
    throw Failure(Failure::LedgerInconsistency{
        "Found a transfer but cash accounting is disabled: " + transfer.description()});
  }
}

void LedgerWalk::derive(const TransactionPointer& row) {
  if (previous_ != nullptr) {
    requireLedgerOrder(*previous_, *row);
  }
  requireDates(row->basic);
  current_ = {row, row->isDirty, row->cashNet, row->sharesNet, row->costBasePrior};

  if (const EquityPointer* equity = row->basic.equity()) {
    state_.equitySnapshots.update(*equity, [&](EquitySnapshot& holding) {
      const Decimal newShares = sharesAfter(row, holding.sharesHeld);
      deriveCash(row);
      deriveHolding(*row, newShares, holding);
    });
  } else {
    // A revision may have turned a trade into a transfer.
    assignDerived(row->sharesNet, std::nullopt, *row);
    assignDerived(row->costBasePrior, std::nullopt, *row);
    deriveCash(row);
  }

  if (row->isDirty) {
    dirtyRows_.push_back(std::move(current_));
  }
  current_ = {};
  previous_ = row.get();
}

Decimal LedgerWalk::sharesAfter(const TransactionPointer& row, const Decimal& held) {
  const auto& primary = portfolio_.primaryCurrency();
  return std::visit(
      Overloaded{
          [&](const BasicTransaction::Trade& trade) {
            requireShares(row, held, trade.sharesAdded);
            requireNumber(trade.equivalentCashDisposed, *row);
            requireDenomination(trade.equivalentCashDisposed, primary);
            return exactSum(held, trade.sharesAdded);
          },
          [&](const BasicTransaction::Split& split) {
            if (split.priorShares != held) {
              throw Failure(Failure::IncompleteSplit{row, split.priorShares, held, split.equity});
            }
            requireNumber(split.netShares, *row);
            return split.netShares;
          },
          [&](const BasicTransaction::JournaledShares& journaled) {
            requireShares(row, held, journaled.sharesAdded);
            if (journaled.costBaseAdded) {
              requireNumber(*journaled.costBaseAdded, *row);
              requireDenomination(*journaled.costBaseAdded, primary);
            }
            return exactSum(held, journaled.sharesAdded);
          },
          [&](BasicTransaction::Yield& yield) {
            if (yield.netShares && *yield.netShares != held) {
              throw Failure(Failure::IncompleteYield{row, yield, held});
            }
            requireNumber(yield.equivalentNetAmount, *row);
            if (!yield.netShares) {
              yield.netShares = held;
              row->isDirty = true;
              current_.filledNetShares = true;
            }
            return held;
          },
          [](const auto&) { return Decimal(); }},
      row->basic.kind);
}

LedgerWalk::CashChange LedgerWalk::cashChange(const PortfolioTransaction& row) const {
  return std::visit(Overloaded{[&](const BasicTransaction::Trade& trade) {
                                 return portfolio_.usesCashAccounts
                                            ? CashChange{trade.cashDisposed.amount, {}}
                                            : CashChange{{}, trade.cashDisposed.amount};
                               },
                               [&](const BasicTransaction::Yield& yield) {
                                 requireNumber(yield.netAmount.amount, row);
                                 return yield.type == BasicTransaction::YieldType::dividend
                                            ? CashChange{-yield.netAmount.amount, {}}
                                            : CashChange();
                               },
                               [&](const BasicTransaction::Transfer& transfer) {
                                 requireCashAccounts(portfolio_, row);
                                 return CashChange{-transfer.amount.amount, transfer.amount.amount};
                               },
                               [](const BasicTransaction::CashAdjustment& adjustment) {
                                 return CashChange{-adjustment.amount.amount, {}};
                               },
                               [](const auto&) { return CashChange(); }},
                    row.basic.kind);
}

void LedgerWalk::deriveCash(const TransactionPointer& row) {
  const Currency* currency = row->basic.currency();
  if (currency == nullptr) {
    assignDerived(row->cashNet, std::nullopt, *row);
    return;
  }
  const CashChange change = cashChange(*row);
  requireNumber(change.disposed, *row);
  requireNumber(change.netDeposited, *row);
  requireDenomination(change.disposed, *currency);

  state_.currencySnapshots.update(*currency, [&](CurrencySnapshot& cash) {
    if (cash.cashOnHand < change.disposed && !portfolio_.allowsNegativeBalances) {
      throw Failure(Failure::InsufficientCash{row, change.disposed, cash.cashOnHand, *currency});
    }
    cash.cashOnHand = exactSum(cash.cashOnHand, -change.disposed);
    cash.netCashDeposited = exactSum(cash.netCashDeposited, change.netDeposited);
    requireBalance(cash.cashOnHand, *row);
    requireBalance(cash.netCashDeposited, *row);
    assignDerived(row->cashNet, cash.cashOnHand, *row);
  });
}

void LedgerWalk::deriveHolding(PortfolioTransaction& row, const Decimal& newShares,
                               EquitySnapshot& holding) {
  const auto& primary = portfolio_.primaryCurrency();
  const auto& kind = row.basic.kind;
  const Decimal costBase = costBaseNet(kind, newShares, holding.costBase, primary).value_or(0);
  const Decimal gain = capitalGain(kind, newShares, holding.costBase, primary).value_or(0);
  const Decimal gains = exactSum(holding.cumulativeCapitalGain, gain);
  requireBalance(newShares, row);
  requireBalance(costBase, row);
  requireBalance(gains, row);

  assignDerived(row.sharesNet, newShares, row);
  assignDerived(row.costBasePrior, holding.costBase, row);
  holding.sharesHeld = newShares;
  holding.costBase = costBase;
  holding.cumulativeCapitalGain = gains;
}

void LedgerWalk::requireShares(const TransactionPointer& row, const Decimal& held,
                               const Decimal& sharesAdded) const {
  requireNumber(sharesAdded, *row);
  const Decimal need = -sharesAdded;
  if (held < need && !portfolio_.allowsNegativeBalances) {
    throw Failure(Failure::InsufficientShares{row, need, held, *row->basic.equity()});
  }
}

void LedgerWalk::Before::restore() {
  row->isDirty = wasDirty;
  row->cashNet = cashNet;
  row->sharesNet = sharesNet;
  row->costBasePrior = costBasePrior;
  if (filledNetShares) {
    std::get<BasicTransaction::Yield>(row->basic.kind).netShares.reset();
  }
}

void LedgerWalk::restoreRows() {
  for (Before& before : dirtyRows_) {
    before.restore();
  }
  if (current_.row != nullptr) {
    current_.restore();
  }
}

}  // namespace corvane
