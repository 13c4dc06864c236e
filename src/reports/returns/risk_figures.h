// How much a return has swung on its way, and how far it fell.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <vector>

#include "reports/returns/time_weighted_return.h"

namespace corvane {

/// The deviation of daily returns.
struct Volatility {
  std::size_t count = 0;  ///< of daily returns
  double daily = 0;       ///< sample deviation of ln(1 + r)
  int calendarDays = 0;   ///< in which they were measured
  bool hasTradePrices = false;

  [[nodiscard]] double period() const;  ///< daily · √count
  /// daily · √(count · 365 / calendarDays)
  [[nodiscard]] double annual() const;
};

/// Of these daily returns, whatever their number; there are at least two.
[[nodiscard]] Volatility volatilityOf(std::span<const double> dailyReturns, int calendarDays);

/// Of the weekdays with holdings before and after; the return of a weekend is linked into the next
/// weekday. None for fewer than 20 of them, which say nothing.
[[nodiscard]] std::optional<Volatility> volatilityOf(const TimeWeightedReturn& returns);

/// A fall of an index from a peak; the figures are positions in the index.
struct Drawdown {
  double size = 0;  ///< (peak - trough) / peak
  std::size_t peak = 0;
  std::size_t trough = 0;
  std::optional<std::size_t> recovered;  ///< none where the peak was not reached again
};

struct Drawdowns {
  Drawdown deepest;
  /// The one that kept below its peak for the longest time, in days of the index.
  Drawdown longest;
};

/// The falls of `index` on `days`, which are as many. None where it never fell.
[[nodiscard]] std::optional<Drawdowns> drawdownsOf(std::span<const double> index,
                                                   std::span<const YearMonthDay> days);
[[nodiscard]] std::optional<Drawdowns> drawdownsOf(const TimeWeightedReturn& returns);

/// The linked return of one month, or of a year.
struct PeriodReturn {
  YearMonthDay first;
  YearMonthDay last;
  double value = 0;
  bool isWhole = false;  ///< every day of the month, or of the year, was measured
};

/// The months, or years, of what was measured, ascending. They link to its total.
[[nodiscard]] std::vector<PeriodReturn> monthlyReturns(const TimeWeightedReturn& returns);
[[nodiscard]] std::vector<PeriodReturn> yearlyReturns(const TimeWeightedReturn& returns);

/// The best and the worst of the whole periods. None where no period is whole: a part of a month
/// says nothing about months.
struct BestAndWorst {
  PeriodReturn best;
  PeriodReturn worst;
};
[[nodiscard]] std::optional<BestAndWorst> bestAndWorst(std::span<const PeriodReturn> periods);

/// A line of the grid of years and months.
struct YearOfReturns {
  int year = 0;
  std::array<std::optional<PeriodReturn>, 12> months;  ///< none where nothing was measured
  PeriodReturn whole;                                  ///< of the year, or of what was measured
};
[[nodiscard]] std::vector<YearOfReturns> returnGrid(const TimeWeightedReturn& returns);

}  // namespace corvane
