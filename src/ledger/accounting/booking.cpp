#include "ledger/accounting/booking.h"

#include <cassert>
#include <cmath>

#include "ledger/portfolio/portfolio_manager_error.h"
#include "ledger/transaction/adjusted_cost_base.h"
#include "ledger/transaction/exact_sum.h"
#include "ledger/transaction/transaction_effect.h"

namespace corvane {
namespace {

using Failure = PortfolioManagerError;
using CurrencySnapshot = PortfolioSnapshot::CurrencySnapshot;
using EquitySnapshot = PortfolioSnapshot::EquitySnapshot;

void requireDates(const BasicTransaction& basic) {
  const bool areFinite = std::isfinite(basic.tradeDate.timeIntervalSinceReferenceDate()) &&
                         std::isfinite(basic.settlementDate.timeIntervalSinceReferenceDate());
  if (!areFinite || basic.settlementDate < basic.tradeDate) {
    throw Failure(Failure::InvalidSettlementDate{basic.settlementDate, basic.tradeDate});
  }
}

void requireDenomination(const Decimal& amount, const Currency& currency) {
  if (!fitsMinorUnits(amount, currency)) {
    throw Failure(Failure::InvalidCashDenomination{amount, currency});
  }
}

Decimal smallestUnit(const Currency& currency) {
  return Decimal::fromMantissa(Sign::plus, 1, -currency.minorUnits);
}

class Booking {
 public:
  Booking(const BasicTransaction& basic, const TransactionPointer& row, const Portfolio& portfolio)
      : basic_(basic), row_(row), portfolio_(portfolio), effect_(transactionEffect(basic.kind)) {}

  BookedFigures on(PortfolioSnapshot& state, BookedParts parts) {
    if (effect_.equity == nullptr || !parts.holding) {
      bookCash(state, parts);
      return figures_;
    }
    state.equitySnapshots.update(*effect_.equity, [&](EquitySnapshot& holding) {
      requireHolding(holding.sharesHeld);
      bookCash(state, parts);
      bookHolding(holding);
    });
    return figures_;
  }

 private:
  /// That the transaction fits the `held` shares, and that its figures can be taken.
  void requireHolding(const Decimal& held) {
    if (effect_.movesShares()) {
      requireNumber(effect_.sharesAdded);
      const Decimal need = -effect_.sharesAdded;
      if (held < need && !portfolio_.allowsNegativeBalances) {
        throw Failure(Failure::InsufficientShares{row_, need, held, *effect_.equity});
      }
      requireNumber(effect_.costAdded);
      requireDenomination(effect_.costAdded, portfolio_.primaryCurrency());
      return;
    }
    if (effect_.declaredShares && *effect_.declaredShares != held) {
      failIncomplete(held);
    }
    requireNumber(effect_.splitInto.value_or(0));
    requireNumber(effect_.equivalentAmount.value_or(0));
    if (effect_.isYield() && !effect_.declaredShares) {
      figures_.sharesOfYield = held;
    }
  }

  [[noreturn]] void failIncomplete(const Decimal& held) const {
    if (const auto* yield = std::get_if<BasicTransaction::Yield>(&basic_.kind)) {
      throw Failure(Failure::IncompleteYield{row_, *yield, held});
    }
    throw Failure(Failure::IncompleteSplit{row_, *effect_.declaredShares, held, *effect_.equity});
  }

  void bookCash(PortfolioSnapshot& state, BookedParts parts) {
    if (effect_.currency == nullptr || !parts.cash) {
      return;
    }
    if (effect_.type == TransactionType::transfer) {
      requireCashAccounts(portfolio_, basic_);
    }
    requireNumber(effect_.amount);
    const Decimal disposed = -effect_.cashAdded(portfolio_.usesCashAccounts);
    requireDenomination(disposed, *effect_.currency);
    state.currencySnapshots.update(*effect_.currency, [&](CurrencySnapshot& cash) {
      if (cash.cashOnHand < disposed && !portfolio_.allowsNegativeBalances) {
        throw Failure(
            Failure::InsufficientCash{row_, disposed, cash.cashOnHand, *effect_.currency});
      }
      cash.cashOnHand = exactSum(cash.cashOnHand, -disposed);
      cash.netCashDeposited =
          exactSum(cash.netCashDeposited, effect_.deposited(portfolio_.usesCashAccounts));
      requireBalance(cash.cashOnHand);
      requireBalance(cash.netCashDeposited);
      assert(portfolio_.allowsNegativeBalances || disposed <= 0 || cash.cashOnHand >= 0);
      figures_.cashNet = cash.cashOnHand;
    });
  }

  void bookHolding(EquitySnapshot& holding) {
    const Currency& primary = portfolio_.primaryCurrency();
    const Decimal shares = effect_.sharesAfter(holding.sharesHeld);
    const auto costBase = costBaseNet(effect_, shares, holding.costBase, primary);
    assert(costBase && "an equity has a cost base");
    const auto gain = capitalGain(effect_, shares, holding.costBase, primary);
    const Decimal gains = exactSum(holding.cumulativeCapitalGain, gain.value_or(0));
    requireBalance(shares);
    requireBalance(*costBase);
    requireBalance(gains);
    assert(portfolio_.allowsNegativeBalances || !effect_.movesShares() ||
           effect_.sharesAdded >= 0 || shares >= 0);
    assert(effect_.sharesAdded >= 0 || !effect_.movesShares() || shares < 0 ||
           abs(*costBase) <= abs(holding.costBase) + smallestUnit(primary));
    assert(!effect_.isYield() || shares == holding.sharesHeld);
    figures_.sharesNet = shares;
    figures_.costBasePrior = holding.costBase;
    figures_.capitalGain = gain;
    holding.sharesHeld = shares;
    holding.costBase = *costBase;
    holding.cumulativeCapitalGain = gains;
  }

  /// A figure that the transaction brings along.
  void requireNumber(const Decimal& figure) const {
    if (figure.isNaN()) {
      throw Failure(Failure::LedgerInconsistency{
          "The transaction has a figure that is not a number: " + basic_.description()});
    }
  }

  /// A balance that came out of a computation.
  void requireBalance(const Decimal& balance) const {
    if (balance.isNaN()) {
      throw Failure(Failure::LedgerInconsistency{
          "The balance after the transaction has more digits than can be kept: " +
          basic_.description()});
    }
  }

  const BasicTransaction& basic_;
  const TransactionPointer& row_;
  const Portfolio& portfolio_;
  const TransactionEffect effect_;
  BookedFigures figures_;
};

}  // namespace

void requireCashAccounts(const Portfolio& portfolio, const BasicTransaction& transfer) {
  if (!portfolio.usesCashAccounts) {
    throw Failure(Failure::LedgerInconsistency{
        "Found a transfer but cash accounting is disabled: " + transfer.description()});
  }
}

BookedFigures book(const BasicTransaction& basic, const TransactionPointer& row,
                   const Portfolio& portfolio, PortfolioSnapshot& state, BookedParts parts) {
  requireDates(basic);
  return Booking(basic, row, portfolio).on(state, parts);
}

}  // namespace corvane
