#include "ledger/accounting/ledger_replay.h"

#include <algorithm>
#include <cassert>
#include <optional>
#include <string>
#include <string_view>

#include "ledger/accounting/booking.h"
#include "ledger/accounting/ledger_walk.h"
#include "ledger/portfolio/portfolio.h"
#include "ledger/portfolio/portfolio_manager_error.h"
#include "ledger/transaction/adjusted_cost_base.h"
#include "ledger/transaction/exact_sum.h"
#include "platform/overloaded.h"

namespace corvane {
namespace {

using CurrencySnapshot = PortfolioSnapshot::CurrencySnapshot;
using EquitySnapshot = PortfolioSnapshot::EquitySnapshot;

[[noreturn]] void fail(std::string reason) {
  throw PortfolioManagerError(PortfolioManagerError::LedgerInconsistency{std::move(reason)});
}

class Replay {
 public:
  Replay(Portfolio& portfolio, PortfolioSnapshot start)
      : portfolio_(portfolio), state_(std::move(start)) {}

  void verify(const PortfolioTransaction& row) {
    if (row.portfolio.lock().get() != &portfolio_) {
      fail("Transactions do not belong to the same portfolio!");
    }
    if (previous_ != nullptr) {
      requireLedgerOrder(*previous_, row);
    }
    if (const EquityPointer* equity = row.basic.equity()) {
      state_.equitySnapshots.update(
          *equity, [&](EquitySnapshot& holding) { verifyHolding(row, **equity, holding); });
    }
    if (const Currency* currency = row.basic.currency()) {
      state_.currencySnapshots.update(
          *currency, [&](CurrencySnapshot& cash) { verifyCash(row, *currency, cash); });
    }
    previous_ = &row;
  }

  PortfolioSnapshot takeState() { return std::move(state_); }

 private:
  void verifyHolding(const PortfolioTransaction& row, const EquityInfo& equity,
                     EquitySnapshot& holding) const {
    const auto& kind = row.basic.kind;
    const TransactionEffect effect = transactionEffect(kind);
    const auto& primary = portfolio_.primaryCurrency();
    const Decimal shares = expectedShares(kind, holding.sharesHeld);
    requireEqual("share count", shares, row.sharesNet, equity.symbol, row);
    const Decimal costBase = costBaseNet(effect, shares, holding.costBase, primary).value_or(0);
    const auto expectedGain = capitalGain(effect, shares, holding.costBase, primary);
    // Cost base and gain of a row follow from its shares, of which the count is right, and its
    // prior cost base: where that is right too they are, and need no second computation.
    if (row.costBasePrior != holding.costBase) {
      requireEqual("net cost base", costBase, row.costBaseNet(), equity.symbol, row);
      verifyGain(expectedGain, row, equity);
    }

    assert(row.sharesNet == shares && "the rows agree with what is summed up");
    assert(expectedGain.has_value() == effect.isSale());
    holding.sharesHeld = shares;
    holding.costBase = costBase;
    holding.cumulativeCapitalGain =
        exactSum(holding.cumulativeCapitalGain, expectedGain.value_or(0));
  }

  void verifyGain(const std::optional<Decimal>& expected, const PortfolioTransaction& row,
                  const EquityInfo& equity) const {
    const auto reported = row.capitalGain();
    if (expected) {
      requireEqual("capital gain", *expected, reported, equity.symbol, row);
    } else if (reported) {
      fail("Expected no capital gain but " + reported->description() + " reported for " +
           equity.symbol + at(row));
    }
  }

  /// Where a split applies to the whole holding, the holding becomes what the split says, without
  /// the detour of a difference that may not be kept exactly.
  static Decimal expectedShares(const BasicTransaction::Kind& kind, const Decimal& held) {
    return std::visit(Overloaded{[&](const BasicTransaction::Split& split) {
                                   return split.priorShares == held
                                              ? split.netShares
                                              : exactSum(held, split.netShares - split.priorShares);
                                 },
                                 [&](const auto& payload) {
                                   if constexpr (requires { payload.sharesAdded; }) {
                                     return exactSum(held, payload.sharesAdded);
                                   } else {
                                     return held;
                                   }
                                 }},
                      kind);
  }

  void verifyCash(const PortfolioTransaction& row, const Currency& currency,
                  CurrencySnapshot& cash) const {
    const auto add = [&](const Decimal& amount) {
      cash.cashOnHand = exactSum(cash.cashOnHand, amount);
      requireEqual("cash amount", cash.cashOnHand, row.cashNet, currency.code, row);
    };
    const auto deposit = [&](const Decimal& amount) {
      cash.netCashDeposited = exactSum(cash.netCashDeposited, amount);
    };
    std::visit(Overloaded{[&](const BasicTransaction::Trade& trade) {
                            if (portfolio_.usesCashAccounts) {
                              add(-trade.cashDisposed.amount);
                            } else {
                              deposit(trade.cashDisposed.amount);
                              add(0);
                            }
                          },
                          [&](const BasicTransaction::Yield& yield) {
                            if (yield.type == BasicTransaction::YieldType::dividend) {
                              add(yield.netAmount.amount);
                            }
                          },
                          [&](const BasicTransaction::Transfer& transfer) {
                            requireCashAccounts(portfolio_, row.basic);
                            deposit(transfer.amount.amount);
                            add(transfer.amount.amount);
                          },
                          [&](const BasicTransaction::CashAdjustment& adjustment) {
                            add(adjustment.amount.amount);
                          },
                          [](const auto&) {}},
               row.basic.kind);
  }

  void requireEqual(std::string_view what, const Decimal& expected,
                    const std::optional<Decimal>& reported, std::string_view subject,
                    const PortfolioTransaction& row) const {
    if (reported == expected) {
      return;
    }
    const std::string start =
        "Expected " + std::string(what) + " of " + expected.description() + " but ";
    const std::string end = " for " + std::string(subject) + at(row);
    fail(reported ? start + "reported " + reported->description() + end
                  : start + "none reported" + end);
  }

  /// " at transaction 12!", where 12 is the row's position in the ledger.
  [[nodiscard]] std::string at(const PortfolioTransaction& row) const {
    const auto& ledger = portfolio_.transactions();
    const auto found = std::ranges::find(ledger, &row, &TransactionPointer::get);
    return " at transaction " + std::to_string(found - ledger.begin()) + "!";
  }

  Portfolio& portfolio_;
  PortfolioSnapshot state_;
  const PortfolioTransaction* previous_ = nullptr;
};

}  // namespace

PortfolioSnapshot replayLedger(std::span<const TransactionPointer> rows, PortfolioSnapshot start) {
  if (rows.empty()) {
    return start;
  }
  const auto portfolio = rows.front()->portfolio.lock();
  if (portfolio == nullptr) {
    fail("Transactions lack a portfolio.");
  }
  Replay replay(*portfolio, std::move(start));
  for (const auto& row : rows) {
    replay.verify(*row);
  }
  return replay.takeState();
}

}  // namespace corvane
