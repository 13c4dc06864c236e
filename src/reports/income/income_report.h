// What equities have paid into portfolios, and how that compares with what they cost.
#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "ledger/portfolio/portfolio.h"
#include "ledger/transaction/transaction_effect.h"
#include "reports/income/income_projection.h"

namespace corvane {

/// A row that tells of income, net of what was withheld.
struct IncomeRow {
  EquityPointer equity;
  YearMonthDay day;  ///< of settlement
  TransactionType kind;
  std::optional<Decimal> shares;  ///< on which it was paid
  CurrencyAmount amount;
  /// In the primary currency, as entered: never at the rate of another day.
  CurrencyAmount equivalent;
};

/// The income of `portfolio` in ledger order. Return of capital is income only where that is asked
/// for: it pays back what was paid in. Main queue only.
[[nodiscard]] std::vector<IncomeRow> recordedIncome(Portfolio& portfolio, const Calendar& calendar,
                                                    bool includesReturnOfCapital = false);

/// What is held of an equity that pays.
struct EquityIncome {
  EquityPointer equity;
  Decimal shares;
  Decimal costBase;  ///< in the primary currency
  /// What today's shares would have been paid in the last twelve months, in the primary currency at
  /// the rates of the payments.
  Decimal lastYear;
  std::optional<double> yieldOnCost;   ///< none where the cost base is not above 0
  std::optional<double> yieldOnValue;  ///< none where price or rate is not known
  /// Held for less than twelve months: the yields are those so far.
  bool isSoFar = false;
  /// The payments as one share of today was paid, in the equity's currency where they were.
  std::vector<SharePayment> payments;
};

/// The equities that `portfolio` holds at `today`, by symbol. `recentRate` gives the units of the
/// primary currency for one of another, or none. Main queue only.
[[nodiscard]] std::vector<EquityIncome> equityIncomes(
    Portfolio& portfolio, const YearMonthDay& today, const Calendar& calendar,
    const std::function<std::optional<Decimal>(const Currency&)>& recentRate);

}  // namespace corvane
