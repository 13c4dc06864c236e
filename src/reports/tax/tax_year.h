// What a tax year holds: disposals, income, deemed gains, and what wants a human eye.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "ledger/portfolio/portfolio.h"
#include "ledger/transaction/transaction_effect.h"
#include "reports/tax/tax_ledger.h"
#include "reports/tax/tax_walk.h"

namespace corvane {

struct TaxYear {
  struct Disposal {
    TaxRowPlace place;
    Decimal shares;
    CurrencyAmount proceeds;  ///< as entered
    Decimal rate;             ///< implied: equivalent by amount
    Decimal equivalent;       ///< proceeds in the primary currency
    TaxDisposal tax;
    std::optional<Decimal> ledgerGain;
    std::string addedTo;  ///< whose cost base has been raised by what is denied
    std::string note;     ///< why ledger and tax differ, and what is provisional
  };
  struct Totals {
    EquityPointer equity;  ///< null for the sum of a currency
    Currency currency;
    Decimal proceeds, costBase, gains, losses, denied;
    [[nodiscard]] Decimal net() const { return gains - losses + denied; }
  };
  struct Income {
    EquityPointer equity;
    TransactionType kind;
    CurrencyAmount amount;
    CurrencyAmount equivalent;
    std::vector<TaxRowPlace> rows = {};  ///< of which these are the sums
  };
  struct DeemedGain {
    TaxRowPlace place;
    Decimal amount;
  };
  struct ToCheck {
    TaxRowPlace place;
    std::string reason;
  };
  struct CostAtEnd {
    EquityPointer equity;
    Currency currency;
    TaxWalk::Pool pool;
  };
  std::vector<Disposal> disposals;          ///< by day
  std::vector<Totals> totals;               ///< by symbol, then the sum of each primary currency
  std::vector<Income> income;               ///< by symbol, currency and kind
  std::vector<CurrencyAmount> adjustments;  ///< interest and fees, by currency
  std::vector<TaxRowPlace> adjustmentRows;  ///< of which these are the sums
  std::vector<DeemedGain> deemedGains;
  std::vector<ToCheck> toCheck;
  std::vector<CostAtEnd> costs;  ///< at the end of the year, by symbol
};

/// The year of one person. Pools are those of portfolios with one primary currency; all history up
/// to 30 days after the year counts. On the main queue, or on any thread for frozen ledgers. Where
/// the question is cancelled, the year is of no use.
[[nodiscard]] TaxYear taxYear(std::span<const TaxedPortfolio> portfolios,
                              const TaxYearQuestion& question, const Calendar& calendar);

}  // namespace corvane
