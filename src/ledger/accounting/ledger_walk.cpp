#include "ledger/accounting/ledger_walk.h"

#include <cassert>

#include "ledger/accounting/booking.h"
#include "ledger/portfolio/portfolio_manager_error.h"

namespace corvane {
namespace {

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

  Before before = {row, row->isDirty, row->cashNet, row->sharesNet, row->costBasePrior};
  // A revision may have turned a trade into a transfer, whose other figures are none.
  assignDerived(row->cashNet, booked.cashNet, *row);
  assignDerived(row->sharesNet, booked.sharesNet, *row);
  assignDerived(row->costBasePrior, booked.costBasePrior, *row);
  if (booked.sharesOfYield) {
    std::get<BasicTransaction::Yield>(row->basic.kind).netShares = booked.sharesOfYield;
    row->isDirty = true;
    before.filledNetShares = true;
  }
  if (row->isDirty) {
    dirtyRows_.push_back(std::move(before));
  }
  previous_ = row.get();
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
}

}  // namespace corvane
