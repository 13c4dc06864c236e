// What a sale would mean to taxes if it were made today.
#pragma once

#include <optional>
#include <span>
#include <string>

#include "reports/tax/tax_ledger.h"

namespace corvane {

/// A sale that has not been made.
struct SaleEstimate {
  TaxRowPlace place;    ///< the portfolio from which it would be; no row
  Decimal held;         ///< by the person in all of his portfolios of that currency
  TaxDisposal tax;      ///< provisional: purchases of the next 30 days may change it
  std::string addedTo;  ///< to whose cost base the denied part would be added

  /// "selling 20 now would deny 75.00", or that it would deny nothing.
  [[nodiscard]] std::string text() const;
};

/// What selling `shares` of `equity` today for `proceeds`, in `currency`, would gain and have
/// denied. The sale would be from the person's portfolio of that primary currency which holds most;
/// none where he holds nothing there. Purchases that are recorded for later days count. On the main
/// queue, or on any thread for frozen ledgers.
[[nodiscard]] std::optional<SaleEstimate> estimatedSale(
    std::span<const TaxedPortfolio> portfolios, TaxYearQuestion question,
    const EquityPointer& equity, const Currency& currency, const Decimal& shares,
    const Decimal& proceeds, const Calendar& calendar);

/// Who gets what of a denied loss: "own cost base 60, RRSP 15 (lost)".
[[nodiscard]] std::string additionsText(const SuperficialLoss& loss,
                                        std::span<const TaxHolder> holders);

}  // namespace corvane
