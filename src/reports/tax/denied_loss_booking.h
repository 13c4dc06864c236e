// Books losses that were denied into the ledgers of those who bought.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "platform/async/undo_manager.h"
#include "reports/tax/tax_year.h"

namespace corvane {

/// A row that raises a cost base by a part of a denied loss: shares journaled, none of them, with a
/// cost.
struct DeniedLossBooking {
  PortfolioPointer portfolio;
  BasicTransaction transaction;
};

/// The rows that book what of `disposal` was denied: one for each taxable buyer, in his portfolio
/// that held most of what he bought, on the day of the sale, or of his first purchase after it.
/// What registered accounts get is lost. Without those that the ledgers have already, which are
/// known by their notes. `portfolios` and `question` are those of the year. Main queue only.
[[nodiscard]] std::vector<DeniedLossBooking> deniedLossBookings(
    const TaxYear::Disposal& disposal, std::span<const TaxedPortfolio> portfolios,
    const TaxYearQuestion& question, const Calendar& calendar);

/// Records `bookings` as one step that can be undone. The tax year stays what it is, since it knows
/// these rows; the ledgers' own gains follow. Throws what recordTransactions() throws; then nothing
/// is recorded. Main queue only.
void recordBookings(std::span<const DeniedLossBooking> bookings,
                    const std::shared_ptr<UndoManager>& undoManager);

}  // namespace corvane
