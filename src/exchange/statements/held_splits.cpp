#include "exchange/statements/held_splits.h"

#include <algorithm>
#include <optional>

#include "exchange/statements/statement_trial.h"
#include "ledger/portfolio/portfolio_transaction.h"

namespace corvane {
namespace {

/// What a row of the file that is no split does to the shares held.
Decimal sharesAddedBy(const RowFigures& figures) {
  switch (figures.kind) {
    case StatementKind::buy:
    case StatementKind::journal:
      return figures.shares;
    case StatementKind::sell:
      return -figures.shares;
    case StatementKind::split:
      return figures.sharesAfter.value_or(figures.shares) - figures.shares;
    default:
      return 0;
  }
}

RowFigures settled(RowFigures split, const Decimal& before, const Decimal& after) {
  split.shares = before;
  split.sharesAfter = after;
  return split;
}

/// The shares after a split of `before` shares.
Decimal sharesAfter(const RowFigures& told, const Decimal& before) {
  return before + told.shares;
}

}  // namespace

HeldSplits::HeldSplits(StatementRows& rows, Portfolio& portfolio, const Calendar& calendar)
    : calendar_(calendar) {
  for (std::size_t row = 0; row < rows.size(); ++row) {
    if (rows.verdict(row) != RowVerdict::isNew || rows.transactionCount(row) > 0) {
      continue;
    }
    if (RowFigures figures = rows.figures(row); figures.kind == StatementKind::splitAdded) {
      held_.try_emplace(figures.equity->id());
      told_.emplace(rows.line(row), std::move(figures));
    }
  }
  if (!told_.empty()) {
    noteLedger(portfolio);
    findInLedger(rows, portfolio);
  }
}

void HeldSplits::noteLedger(Portfolio& portfolio) {
  for (const TransactionPointer& row : portfolio.transactions()) {
    if (const EquityPointer* equity = row->basic.equity()) {
      if (const auto held = held_.find((*equity)->id()); held != held_.end()) {
        held->second.emplace_back(row->settlementDate(), row->sharesNet.value_or(0));
      }
    }
  }
}

void HeldSplits::findInLedger(StatementRows& rows, Portfolio& portfolio) const {
  std::unordered_map<std::string, std::vector<const BasicTransaction*>> splits;
  for (const TransactionPointer& row : portfolio.transactions()) {
    if (const auto* split = std::get_if<BasicTransaction::Split>(&row->basic.kind)) {
      splits[split->equity->id()].push_back(&row->basic);
    }
  }
  for (std::size_t row = 0; row < rows.size(); ++row) {
    const auto told = told_.find(rows.line(row));
    const auto own = told == told_.end() ? splits.end() : splits.find(told->second.equity->id());
    if (own == splits.end()) {
      continue;
    }
    const RowFigures& figures = told->second;
    for (const BasicTransaction* transaction : own->second) {
      const auto& split = std::get<BasicTransaction::Split>(transaction->kind);
      if (YearMonthDay::of(transaction->tradeDate, calendar_) == figures.trade &&
          YearMonthDay::of(transaction->settlementDate, calendar_) == figures.settlement &&
          sharesAfter(figures, split.priorShares) == split.netShares) {
        rows.finish(row, settled(figures, split.priorShares, split.netShares), {});
        break;
      }
    }
  }
}

void HeldSplits::settle(StatementRows& rows) const {
  if (told_.empty()) {
    return;
  }
  for (std::size_t row = 0; row < rows.size(); ++row) {
    if (const auto told = told_.find(rows.line(row));
        told != told_.end() && rows.verdict(row) == RowVerdict::isNew) {
      rows.finish(row, told->second, {});  // it takes part in the order
    }
  }
  std::unordered_map<std::string, Decimal> added;
  for (const std::uint32_t row : recordingOrder(rows)) {
    const RowFigures figures = rows.figures(row);
    if (figures.equity == nullptr || !held_.contains(figures.equity->id())) {
      continue;
    }
    Decimal& sum = added[figures.equity->id()];
    const auto told = told_.find(rows.line(row));
    if (told == told_.end()) {
      sum += sharesAddedBy(figures);
      continue;
    }
    const Decimal before = heldAfter(told->second) + sum;
    const Decimal after = sharesAfter(told->second, before);
    rows.finish(row, settled(told->second, before, after), {});
    sum += after - before;
  }
}

/// What the ledger has where a new row of that day of settlement is recorded.
Decimal HeldSplits::heldAfter(const RowFigures& split) const {
  const HeldByDay& held = held_.at(split.equity->id());
  const auto behind = std::ranges::upper_bound(held, split.settlement.startIn(calendar_), {},
                                               &HeldByDay::value_type::first);
  return behind == held.begin() ? Decimal(0) : std::prev(behind)->second;
}

}  // namespace corvane
