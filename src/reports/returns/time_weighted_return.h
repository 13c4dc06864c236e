// The return of what was invested, whatever the owner brought in or took out meanwhile.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "reports/series/valuation_series.h"

namespace corvane {

/// `growth` of a whole span, as a return a year of 365 days: 0.3 over 730 days is 0.1402.
[[nodiscard]] double annualised(double periodReturn, int days);

/// Shorter spans are not stated as a return a year: an accident of a month would be made a yearly
/// figure.
inline constexpr int longestSpanWithoutAnnualFigure = 366;

/// The daily linked time-weighted return.
///
/// Of each day: F = inflow - outflow, base = value before + F where it is positive, top = value
/// after - F where it is negative, return = top / base - 1. So money comes in at the start of a day
/// and goes out at its end, after the flows of the day have been netted; a switch of all holdings
/// on one day then leaves their move undiluted. Where netting leaves nothing to measure against, as
/// of what is bought and sold on one day, the flows count in full.
struct TimeWeightedReturn {
  struct Day {
    YearMonthDay day;
    double dailyReturn = 0;
    double index = 1;  ///< linked returns since the first of these days, which has 1
    bool isHeldThrough =
        false;  ///< something was held at the end of the day before and of this one
    bool isAtTradePrice = false;
  };
  /// The chain of returns had to begin anew, since nothing can be linked to a debt.
  struct Restart {
    YearMonthDay since;
    YearMonthDay worthOn;  ///< the day before
    Decimal worth;
  };

  /// From the last day before there was capital to the last with capital. Empty where there was
  /// none in the range.
  std::vector<Day> days;
  std::optional<double> total;
  std::optional<Restart> restart;
  /// Something was gained while nothing was invested; no return can say so.
  bool hasGainWithoutCapital = false;

  [[nodiscard]] int daysMeasured() const;
  /// None for spans of 366 days and less.
  [[nodiscard]] std::optional<double> annual() const;
};

/// The fraction whose value less 1 is the return of a day.
struct DayFraction {
  Decimal base;
  Decimal top;

  [[nodiscard]] bool hasCapital() const { return base > 0; }
  [[nodiscard]] double growth() const { return top.doubleValue() / base.doubleValue(); }
};

/// The fraction of each of `days`; that of the base day is 0 by 0.
[[nodiscard]] std::vector<DayFraction> dayFractions(std::span<const ValuationDay> days);

/// `days` as a ValuationSeries has them: the first is the base day, whose flows play no part.
///
/// Income after the last share was sold counts on the last day with capital.
[[nodiscard]] TimeWeightedReturn timeWeightedReturn(std::span<const ValuationDay> days);

}  // namespace corvane
