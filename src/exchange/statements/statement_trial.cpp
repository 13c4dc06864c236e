#include "exchange/statements/statement_trial.h"

#include <algorithm>
#include <numeric>
#include <optional>
#include <string>
#include <utility>

#include "exchange/statements/held_splits.h"
#include "ledger/accounting/booking.h"
#include "ledger/accounting/ledger_states.h"
#include "ledger/edits/blame.h"
#include "ledger/edits/ledger_rows_edit.h"
#include "ledger/manager/portfolio_manager.h"
#include "ledger/portfolio/portfolio_manager_error.h"

namespace corvane {
namespace {

/// More refusals than this are not looked for: the file is not this ledger's.
constexpr int mostRefusals = 100;
constexpr std::size_t rowsOfTrialUpdate = 4096;

using TrialOrder = std::vector<std::uint32_t>;
using TrialProgress = std::function<void(double fraction)>;

struct TrialRefusal {
  std::size_t place;  ///< in the order
  std::string reason;
};

TrialOrder asTheyStand(const StatementRows& rows) {
  TrialOrder order(rows.size());
  std::iota(order.begin(), order.end(), 0U);
  return order;
}

/// The rows with those of each day of trade the other way round.
TrialOrder turnedWithinDays(const StatementRows& rows) {
  TrialOrder order = asTheyStand(rows);
  const auto dayOf = [&](std::uint32_t row) {
    return rows.transactionCount(row) == 0 ? StatementRows::unknownDay : rows.tradeDay(row);
  };
  for (auto begin = order.begin(); begin != order.end();) {
    const auto end = std::find_if(begin, order.end(),
                                  [&](std::uint32_t row) { return dayOf(row) != dayOf(*begin); });
    std::reverse(begin, end);
    begin = end;
  }
  return order;
}

/// Books rows on the balances at the end of a ledger. Where one is refused the others go on.
class TrialBooking {
 public:
  TrialBooking(Portfolio& portfolio, PortfolioPointer owner, PortfolioSnapshot end)
      : portfolio_(portfolio), owner_(std::move(owner)), kept_(end), state_(std::move(end)) {}

  /// Goes on from `place` of `order`, which is behind those that were booked; where it is refused.
  std::optional<TrialRefusal> goOn(const StatementRows& rows, const TrialOrder& order,
                                   const TrialProgress& progress) {
    for (; place_ < order.size(); ++place_) {
      if (place_ % rowsOfTrialUpdate == 0) {
        kept_ = state_;
        keptPlace_ = place_;
        if (progress) {
          progress(static_cast<double>(place_) / static_cast<double>(order.size()));
        }
      }
      if (auto reason = bookRow(rows, order[place_])) {
        return TrialRefusal{place_, std::move(*reason)};
      }
    }
    return std::nullopt;
  }

  /// Goes back to the last balances that were kept, since those at a refusal are good for nothing;
  /// the row at `place` has been taken out of `order`.
  void leaveOut(const StatementRows& rows, const TrialOrder& order, std::size_t place) {
    state_ = kept_;
    for (place_ = keptPlace_; place_ < place; ++place_) {
      (void)bookRow(rows, order[place_]);
    }
  }

 private:
  /// Why the ledger refuses the row.
  std::optional<std::string> bookRow(const StatementRows& rows, std::uint32_t row) {
    for (const BasicTransaction& transaction : rows.transactions(row)) {
      const auto entry =
          std::make_shared<PortfolioTransaction>(transaction, owner_, /*dirty=*/true);
      try {
        (void)book(transaction, entry, portfolio_, state_);
      } catch (const PortfolioManagerError& error) {
        return ledgerRefusalText(blaming(&transaction, error));
      }
    }
    return std::nullopt;
  }

  Portfolio& portfolio_;
  PortfolioPointer owner_;
  PortfolioSnapshot kept_;
  PortfolioSnapshot state_;
  std::size_t keptPlace_ = 0;
  std::size_t place_ = 0;
};

/// Records rows in a copy of a ledger, each time from its start.
class TrialCopy {
 public:
  explicit TrialCopy(Portfolio& portfolio) : portfolio_(portfolio) {
    for (const TransactionPointer& row : portfolio.transactions()) {
      present_.push_back(row->basic);
    }
  }

  [[nodiscard]] std::optional<TrialRefusal> refusal(const StatementRows& rows,
                                                    const TrialOrder& order,
                                                    const TrialProgress& progress) const {
    const auto owner = portfolio_.manager.lock();
    const auto manager = std::make_shared<PortfolioManager>(owner->quoteProvider);
    manager->calendar = owner->calendar;
    const PortfolioPointer copy = manager->createPortfolio(portfolio_.primaryCurrency());
    copy->allowsNegativeBalances = portfolio_.allowsNegativeBalances;
    copy->usesCashAccounts = portfolio_.usesCashAccounts;
    manager->recordTransactions(present_, copy, nullptr);
    std::vector<BasicTransaction> made;
    std::vector<std::size_t> places;
    for (std::size_t place = 0; place < order.size(); ++place) {
      for (BasicTransaction& transaction : rows.transactions(order[place])) {
        made.push_back(std::move(transaction));
        places.push_back(place);
      }
    }
    std::size_t recorded = 0;
    try {
      manager->recordTransactions(made, copy, nullptr, [&](std::size_t count) {
        recorded = count;
        if (progress && count % rowsOfTrialUpdate == 0) {
          progress(static_cast<double>(count) / static_cast<double>(made.size()));
        }
      });
    } catch (const PortfolioManagerError& error) {
      return TrialRefusal{places[std::min(recorded, places.size() - 1)], ledgerRefusalText(error)};
    }
    return std::nullopt;
  }

 private:
  Portfolio& portfolio_;
  std::vector<BasicTransaction> present_;
};

/// Whether rows from `day` on go to the end of the ledger.
bool goToTheEndOf(Portfolio& portfolio, const StatementRows& rows, std::uint32_t firstRow) {
  const auto& ledger = portfolio.transactions();
  return ledger.empty() || positionByDate(rows.transactions(firstRow).front().settlementDate,
                                          ledger) == ledger.size();
}

void refuseRow(StatementRows& rows, std::uint32_t row, std::string reason) {
  rows.stop(row, {.verdict = RowVerdict::ledgerRefuses, .reason = std::move(reason)});
}

void refuseRest(StatementRows& rows, const TrialOrder& order) {
  for (const std::uint32_t row : order) {
    refuseRow(rows, row, "too many rows before it are refused");
  }
}

/// Tries `rows` and those turned within their days; `refusalOf` finds the first refusal of an
/// order, and `next` that behind a row that was taken out.
template <typename RefusalOf, typename Next>
void findRefusals(StatementRows& rows, const HeldSplits& splits, RefusalOf refusalOf, Next next) {
  TrialOrder order = recordingOrder(rows);
  auto refusal = refusalOf(order);
  bool haveTimes = true;
  for (std::size_t row = 0; row < rows.size(); ++row) {
    haveTimes = haveTimes && rows.time(row).has_value();
  }
  if (refusal && !haveTimes) {
    const TrialOrder turned = turnedWithinDays(rows);
    rows.reorder(turned);
    splits.settle(rows);
    if (!refusalOf(recordingOrder(rows))) {
      return;
    }
    rows.reorder(turned);  // and back
    splits.settle(rows);
    order = recordingOrder(rows);
    refusal = refusalOf(order);
  }
  for (int count = 0; refusal && count < mostRefusals; ++count) {
    refuseRow(rows, order[refusal->place], refusal->reason);
    order.erase(order.begin() + static_cast<std::ptrdiff_t>(refusal->place));
    refusal = order.empty() ? std::nullopt : next(order, refusal->place);
  }
  if (refusal) {
    refuseRest(rows, order);
  }
}

}  // namespace

std::string ledgerRefusalText(const Error& error) {
  const std::string further = error.furtherText();
  return error.description().value_or("The row was refused.") +
         (further.empty() ? "" : " " + further);
}

std::vector<std::uint32_t> recordingOrder(const StatementRows& rows) {
  TrialOrder chosen;
  std::ranges::copy_if(asTheyStand(rows), std::back_inserter(chosen), [&](std::uint32_t row) {
    return rows.verdict(row) == RowVerdict::isNew && rows.transactionCount(row) > 0;
  });
  const auto day = [&](std::uint32_t row) { return rows.settlementDay(row); };
  if (!std::ranges::is_sorted(chosen, {}, day)) {
    std::ranges::stable_sort(chosen, {}, day);
  }
  return chosen;
}

void tryOnLedger(StatementRows& rows, Portfolio& portfolio, const HeldSplits& splits,
                 const std::function<void(double fraction)>& progress) {
  splits.settle(rows);
  const TrialOrder order = recordingOrder(rows);
  if (order.empty()) {
    return;
  }
  const auto manager = portfolio.manager.lock();
  if (!goToTheEndOf(portfolio, rows, order.front())) {
    const TrialCopy copy(portfolio);
    findRefusals(
        rows, splits, [&](const TrialOrder& tried) { return copy.refusal(rows, tried, progress); },
        [&](const TrialOrder& tried, std::size_t) { return copy.refusal(rows, tried, progress); });
    return;
  }
  const auto own = std::ranges::find(manager->portfolios(), &portfolio, &PortfolioPointer::get);
  const PortfolioPointer owner = own == manager->portfolios().end() ? nullptr : *own;
  const PortfolioSnapshot end =
      walkStart(portfolio.transactions().size(), portfolio, manager->calendar);
  std::optional<TrialBooking> booking;
  findRefusals(
      rows, splits,
      [&](const TrialOrder& tried) {
        booking.emplace(portfolio, owner, end);
        return booking->goOn(rows, tried, progress);
      },
      [&](const TrialOrder& tried, std::size_t place) {
        booking->leaveOut(rows, tried, place);
        return booking->goOn(rows, tried, progress);
      });
}

}  // namespace corvane
