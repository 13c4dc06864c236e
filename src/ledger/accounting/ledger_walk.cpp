#include "ledger/accounting/ledger_walk.h"

#include <cassert>

#include "ledger/accounting/booking.h"
#include "ledger/portfolio/portfolio_manager_error.h"

namespace corvane {
namespace {

void assignDerived(OptionalDecimal& field, OptionalDecimal value, PortfolioTransaction& row) {
  if (field != value) {
    field = std::move(value);
    row.isDirty = true;
  }
}

}  // namespace

void requireLedgerOrder(const PortfolioTransaction& previous, const PortfolioTransaction& row) {
  if (row.settlementDate() < previous.settlementDate()) {
    throw PortfolioManagerError(PortfolioManagerError::LedgerInconsistency{
        "Transactions not ordered by date (" + row.settlementDate().description() +
        " found after " + previous.settlementDate().description() + ")!"});
  }
}

void LedgerWalk::derive(const TransactionPointer& row) {
  if (previous_ != nullptr) {
    requireLedgerOrder(*previous_, *row);
  }
  const BookedFigures booked = book(row->basic, row, portfolio_, state_);
  assert(booked.sharesNet.has_value() == (row->basic.equity() != nullptr));
  assert(booked.cashNet.has_value() == (row->basic.currency() != nullptr));

  Before::Figures former = {row->cashNet, row->sharesNet, row->costBasePrior};
  const bool wasDirty = row->isDirty;
  // A revision may have turned a trade into a transfer, whose other figures are none.
  assignDerived(row->cashNet, booked.cashNet, *row);
  assignDerived(row->sharesNet, booked.sharesNet, *row);
  assignDerived(row->costBasePrior, booked.costBasePrior, *row);
  if (booked.sharesOfYield) {
    std::get<BasicTransaction::Yield>(row->basic.kind).netShares = booked.sharesOfYield;
    row->isDirty = true;
  }
  if (row->isDirty) {
    const bool hadFigures = former.cashNet || former.sharesNet;
    dirtyRows_.push_back(
        {row, hadFigures ? std::make_unique<const Before::Figures>(std::move(former)) : nullptr,
         wasDirty, booked.sharesOfYield.has_value()});
  }
  previous_ = row.get();
}

void LedgerWalk::Before::restore() {
  const Figures former = figures == nullptr ? Figures() : *figures;
  row->isDirty = wasDirty;
  row->cashNet = former.cashNet;
  row->sharesNet = former.sharesNet;
  row->costBasePrior = former.costBasePrior;
  if (filledNetShares) {
    std::get<BasicTransaction::Yield>(row->basic.kind).netShares.reset();
  }
}

void LedgerWalk::restoreRows() {
  for (Before& before : dirtyRows_) {
    before.restore();
  }
}

}  // namespace corvane
