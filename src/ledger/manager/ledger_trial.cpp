#include "ledger/manager/ledger_trial.h"

#include <algorithm>
#include <cassert>
#include <utility>

#include "ledger/accounting/booking.h"
#include "ledger/accounting/ledger_states.h"
#include "ledger/edits/blame.h"
#include "ledger/edits/ledger_rows_edit.h"
#include "ledger/manager/portfolio_manager.h"

namespace corvane {
namespace {

using Failure = PortfolioManagerError;
using Rows = std::vector<TransactionPointer>;

/// The balances of one transaction's currency and equity that an entry has made different from what
/// they are in the ledger.
struct Different {
  std::vector<Currency> currencies;
  std::vector<EquityPointer> equities;

  void add(const BasicTransaction& basic) {
    if (const Currency* currency = basic.currency(); currency != nullptr && !has(*currency)) {
      currencies.push_back(*currency);
    }
    if (const EquityPointer* equity = basic.equity(); equity != nullptr && !has(*equity)) {
      equities.push_back(*equity);
    }
  }
  [[nodiscard]] bool has(const Currency& currency) const {
    return std::ranges::find(currencies, currency) != currencies.end();
  }
  [[nodiscard]] bool has(const EquityPointer& equity) const {
    return std::ranges::any_of(
        equities, [&](const EquityPointer& other) { return EquityIdentity()(other, equity); });
  }
  [[nodiscard]] BookedParts partsOf(const BasicTransaction& basic) const {
    const Currency* currency = basic.currency();
    const EquityPointer* equity = basic.equity();
    return {.cash = currency != nullptr && has(*currency),
            .holding = equity != nullptr && has(*equity)};
  }
  [[nodiscard]] bool isNothing() const { return currencies.empty() && equities.empty(); }

  /// Drops the balances that `booked` has found to be what `row` has in the ledger: from there on
  /// they are the same.
  void dropEqual(const PortfolioTransaction& row, const BookedFigures& booked, BookedParts parts) {
    if (parts.cash && booked.cashNet == row.cashNet) {
      std::erase(currencies, *row.basic.currency());
    }
    if (parts.holding && booked.sharesNet == row.sharesNet &&
        booked.costBasePrior == row.costBasePrior) {
      std::erase_if(equities, [&](const EquityPointer& other) {
        return EquityIdentity()(other, *row.basic.equity());
      });
    }
  }
};

/// Walks from the entry to the end of the ledger and keeps its balances beside those of the rows.
class TrialWalk {
 public:
  TrialWalk(const BasicTransaction& entry, const Portfolio& portfolio, PortfolioSnapshot start)
      : entry_(entry), portfolio_(portfolio), state_(std::move(start)) {
    different_.add(entry);
  }

  /// `revised` is left out of `rows`, and the entry goes in front of the row at `target`.
  void run(const Rows& rows, std::optional<std::size_t> revised, std::size_t target,
           const TransactionPointer& entryRow) {
    if (revised) {
      different_.add(rows[*revised]->basic);
    }
    const std::size_t settled = std::max(target, revised.value_or(0));
    for (std::size_t i = std::min(target, revised.value_or(target)); i <= rows.size(); ++i) {
      if (i == target) {
        enter(entryRow);
      }
      if (i == rows.size() || (i > settled && different_.isNothing())) {
        return;
      }
      if (i == revised) {
        continue;
      }
      const BookedParts parts = different_.partsOf(rows[i]->basic);
      if (parts.cash || parts.holding) {
        const BookedFigures booked = book(rows[i]->basic, rows[i], portfolio_, state_, parts);
        if (i >= settled) {
          different_.dropEqual(*rows[i], booked, parts);
        }
      }
    }
  }

  /// The trial, where `now` is the state at the end of the ledger as it stands.
  [[nodiscard]] LedgerTrial trial(const PortfolioSnapshot& now) {
    trial_.atEndNow = balancesIn(now);
    trial_.atEnd = trial_.atEndNow;
    const LedgerTrial::Balances walked = balancesIn(state_);
    const BookedParts parts = different_.partsOf(entry_);
    if (parts.cash) {
      trial_.atEnd.cashOnHand = walked.cashOnHand;
    }
    if (parts.holding) {
      trial_.atEnd.sharesHeld = walked.sharesHeld;
      trial_.atEnd.costBase = walked.costBase;
    }
    return trial_;
  }

 private:
  void enter(const TransactionPointer& entryRow) {
    trial_.before = balancesIn(state_);
    trial_.capitalGain = book(entry_, entryRow, portfolio_, state_).capitalGain;
    trial_.after = balancesIn(state_);
  }

  [[nodiscard]] LedgerTrial::Balances balancesIn(const PortfolioSnapshot& snapshot) const {
    LedgerTrial::Balances balances;
    if (const Currency* currency = entry_.currency()) {
      balances.cashOnHand = snapshot.currencySnapshots.get(*currency).cashOnHand;
    }
    if (const EquityPointer* equity = entry_.equity()) {
      const auto holding = snapshot.equitySnapshots.get(*equity);
      balances.sharesHeld = holding.sharesHeld;
      balances.costBase = holding.costBase;
    }
    return balances;
  }

  const BasicTransaction& entry_;
  const Portfolio& portfolio_;
  PortfolioSnapshot state_;
  Different different_;
  LedgerTrial trial_;
};

}  // namespace

Result<LedgerTrial> PortfolioManager::trial(const BasicTransaction& transaction,
                                            const PortfolioPointer& portfolio,
                                            const TransactionPointer& revised) const {
  try {
    requireReadable();
    requireOwn(*portfolio);
    const Rows& rows = portfolio->transactions();
    std::optional<std::size_t> index;
    if (revised != nullptr) {
      index = positionOf(*revised, rows);
      if (!index) {
        throw Failure(
            Failure::InvalidPortfolio{"Cannot find existing transaction in the ledger to revise."});
      }
    }
    const bool staysInPlace = index && transaction.settlementDate == revised->settlementDate();
    const std::size_t target =
        staysInPlace ? *index : positionByDate(transaction.settlementDate, rows);

    TrialWalk walk(transaction, *portfolio,
                   walkStart(std::min(target, index.value_or(target)), *portfolio, calendar));
    walk.run(rows, index, target,
             std::make_shared<PortfolioTransaction>(transaction, portfolio, /*dirty=*/true));
    const auto& years = portfolio->snapshotsByYear;
    assert(years.empty() == rows.empty() && "each ledger has the totals of its last year");
    return walk.trial(years.empty() ? PortfolioSnapshot() : years.rbegin()->second);
  } catch (const PortfolioManagerError& error) {
    return failure(blaming(&transaction, error));
  }
}

}  // namespace corvane
