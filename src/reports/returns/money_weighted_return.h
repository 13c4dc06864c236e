// The return of the owner's money: the one rate at which what he paid in has grown to what he has
// taken out and what is left.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "reports/series/valuation_series.h"

namespace corvane {

/// A payment as the owner sees it: negative where he pays in.
struct OwnersPayment {
  YearMonthDay day;
  Decimal amount;
};

/// The internal rate of return on actual days, a year having 365 of them.
struct MoneyWeightedReturn {
  enum class Outcome {
    rate,
    totalLoss,    ///< nothing came back: exactly -100 %
    nothingPaid,  ///< nothing was paid in, so nothing can have grown
    noRate,       ///< no rate explains these payments
  };
  Outcome outcome = Outcome::nothingPaid;
  int days = 0;  ///< from the first payment to the last
  /// For the whole span; none where there is none.
  std::optional<double> period;
  /// Further rates that explain the payments as well, for the whole span, ascending.
  std::vector<double> otherPeriods;

  /// None for spans of 366 days and less.
  [[nodiscard]] std::optional<double> annual() const;
};

/// What each payment in `series` is to the owner: the opening value is paid in on the base day, the
/// closing value comes back on the last day. Of each day one.
[[nodiscard]] std::vector<OwnersPayment> ownersPayments(std::span<const ValuationDay> days);

enum class RatesWanted {
  all,
  nearest,  ///< the others are not looked for
};

/// The rate of `payments`, which ascend by day; those of one day are added up. Where several rates
/// solve the equation, the one nearest to `expected` is told first: the time-weighted return of the
/// span, or 0.
[[nodiscard]] MoneyWeightedReturn moneyWeightedReturn(std::span<const OwnersPayment> payments,
                                                      double expected,
                                                      RatesWanted wanted = RatesWanted::all);

}  // namespace corvane
