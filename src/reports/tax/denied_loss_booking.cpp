#include "reports/tax/denied_loss_booking.h"

#include <algorithm>
#include <map>
#include <optional>

#include "ledger/manager/portfolio_manager.h"
#include "reports/series/report_days.h"

namespace corvane {
namespace {

/// By which a booking is known again, whatever rows are recorded or moved around it.
std::string noteOfBooking(const TaxYear::Disposal& disposal) {
  return std::string(deniedLossNote) + " of the sale of " + disposal.shares.description() + " " +
         disposal.place.equity->symbol + " for " + disposal.equivalent.description() + " on " +
         isoText(disposal.place.settlement);
}

bool hasBooking(Portfolio& portfolio, const EquityPointer& equity, const std::string& note) {
  return std::ranges::any_of(portfolio.transactions(), [&](const TransactionPointer& row) {
    const EquityPointer* other = row->basic.equity();
    return other != nullptr && **other == *equity && row->basic.note == note;
  });
}

/// Where `holder` bought most in the window, with the row after which the loss is his.
std::optional<std::size_t> mostBought(const TaxedEquity& line, const SuperficialLoss& loss,
                                      std::size_t holder) {
  std::map<std::size_t, Decimal> bought;  // by portfolio
  for (const SuperficialLoss::Purchase& purchase : loss.purchases) {
    if (line.rows[purchase.row].holder == holder) {
      bought[line.rows[purchase.row].portfolio] += purchase.shares;
    }
  }
  const auto most = std::ranges::max_element(
      bought, {}, [](const auto& entry) -> const Decimal& { return entry.second; });
  if (most == bought.end()) {
    return std::nullopt;
  }
  const auto first = std::ranges::find_if(loss.purchases, [&](const auto& purchase) {
    return line.rows[purchase.row].portfolio == most->first;
  });
  return first->row;
}

}  // namespace

std::vector<DeniedLossBooking> deniedLossBookings(const TaxYear::Disposal& disposal,
                                                  std::span<const TaxedPortfolio> portfolios,
                                                  const TaxYearQuestion& question,
                                                  const Calendar& calendar) {
  std::vector<DeniedLossBooking> bookings;
  const TaxRowPlace& sale = disposal.place;
  const TaxLedger ledger = taxLedger(portfolios, question, calendar, sale.equity);
  const TaxedEquity* line = ledger.find(sale.equity, sale.portfolio->primaryCurrency());
  if (line == nullptr) {
    return bookings;
  }
  const std::string note = noteOfBooking(disposal);
  const SuperficialLoss& loss = disposal.tax.superficial;
  for (const auto& [holder, amount] : loss.additions) {
    const auto row = mostBought(*line, loss, holder);
    if (!ledger.holders[holder].isTaxable || amount.isZero() || !row) {
      continue;
    }
    const TaxRowPlace& bought = line->places[*row];
    if (hasBooking(*bought.portfolio, sale.equity, note)) {
      continue;
    }
    const Date day = std::max(sale.row().settlementDate(), bought.row().settlementDate());
    bookings.push_back(
        {bought.portfolio,
         {BasicTransaction::JournaledShares{sale.equity, 0, amount}, day, day, note}});
  }
  return bookings;
}

void recordBookings(std::span<const DeniedLossBooking> bookings,
                    const std::shared_ptr<UndoManager>& undoManager) {
  // What is taken back must be taken back also where nobody undoes.
  const auto steps = undoManager != nullptr ? undoManager : std::make_shared<UndoManager>();
  std::size_t recorded = 0;
  steps->beginUndoGrouping();
  steps->setActionName("Record Adjustment");
  try {
    for (const auto& [portfolio, transaction] : bookings) {
      if (const auto manager = portfolio->manager.lock()) {
        manager->recordTransactions({transaction}, portfolio, steps);
        ++recorded;
      }
    }
  } catch (...) {
    steps->endUndoGrouping();
    if (recorded > 0) {
      steps->undo();
    }
    throw;
  }
  steps->endUndoGrouping();
}

}  // namespace corvane
