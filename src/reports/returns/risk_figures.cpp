#include "reports/returns/risk_figures.h"

#include <algorithm>
#include <cassert>
#include <cmath>

#include "reports/series/report_days.h"

namespace corvane {
namespace {

constexpr int saturday = 5;

/// The first and the last day of the month, or of the year, of `day`.
std::pair<YearMonthDay, YearMonthDay> periodAround(const YearMonthDay& day, bool isMonthly) {
  if (isMonthly) {
    return {{day.year, day.month, 1}, {day.year, day.month, daysInMonth(day.year, day.month)}};
  }
  return {{day.year, 1, 1}, {day.year, 12, 31}};
}

std::vector<PeriodReturn> periodReturns(const TimeWeightedReturn& returns, bool isMonthly) {
  std::vector<PeriodReturn> periods;
  if (returns.days.size() < 2) {
    return periods;
  }
  const YearMonthDay start = daysAfter(returns.days.front().day, 1);
  double indexBefore = 1;
  for (std::size_t i = 1; i < returns.days.size(); ++i) {
    const auto& [day, dailyReturn, index, isHeld, isAtTradePrice] = returns.days[i];
    if (periods.empty() || periods.back().last < day) {
      const auto [first, last] = periodAround(day, isMonthly);
      indexBefore = returns.days[i - 1].index;
      periods.push_back({std::max(first, start), last, 0, start <= first});
    }
    periods.back().value = index / indexBefore - 1;
  }
  const YearMonthDay end = returns.days.back().day;
  if (end < periods.back().last) {
    periods.back().last = end;
    periods.back().isWhole = false;
  }
  return periods;
}

}  // namespace

double Volatility::period() const {
  return daily * std::sqrt(static_cast<double>(count));
}

double Volatility::annual() const {
  constexpr double daysOfYear = 365;
  return daily * std::sqrt(static_cast<double>(count) * daysOfYear / calendarDays);
}

Volatility volatilityOf(std::span<const double> dailyReturns, int calendarDays) {
  assert(dailyReturns.size() >= 2 && "one return has no deviation");
  const auto count = static_cast<double>(dailyReturns.size());
  std::vector<double> logs;
  logs.reserve(dailyReturns.size());
  double sum = 0;
  for (const double value : dailyReturns) {
    logs.push_back(std::log1p(value));
    sum += logs.back();
  }
  double squares = 0;
  for (const double value : logs) {
    squares += (value - sum / count) * (value - sum / count);
  }
  return {dailyReturns.size(), std::sqrt(squares / (count - 1)), calendarDays, false};
}

std::optional<Volatility> volatilityOf(const TimeWeightedReturn& returns) {
  std::vector<double> counted;
  bool hasTradePrices = false;
  double weekend = 1;
  for (std::size_t i = 1; i < returns.days.size(); ++i) {
    const TimeWeightedReturn::Day& day = returns.days[i];
    if (dayOfWeek(dayNumber(day.day)) >= saturday) {
      weekend *= 1 + day.dailyReturn;
      continue;
    }
    if (day.isHeldThrough) {
      counted.push_back(weekend * (1 + day.dailyReturn) - 1);
      hasTradePrices |= day.isAtTradePrice;
    }
    weekend = 1;
  }
  constexpr std::size_t fewest = 20;
  if (counted.size() < fewest) {
    return std::nullopt;
  }
  Volatility volatility = volatilityOf(counted, returns.daysMeasured());
  volatility.hasTradePrices = hasTradePrices;
  return volatility;
}

std::optional<Drawdowns> drawdownsOf(std::span<const double> index,
                                     std::span<const YearMonthDay> days) {
  assert(index.size() == days.size());
  Drawdowns found;
  int longestDays = 0;
  Drawdown running;
  const auto close = [&](std::size_t end, bool isRecovered) {
    if (running.size <= 0) {
      return;
    }
    if (isRecovered) {
      running.recovered = end;
    }
    if (running.size > found.deepest.size) {
      found.deepest = running;
    }
    const int length = daysBetween(days[running.peak], days[end]);
    if (length > longestDays) {
      longestDays = length;
      found.longest = running;
    }
  };
  for (std::size_t i = 0; i < index.size(); ++i) {
    if (index[i] >= index[running.peak]) {
      close(i, true);
      running = {0, i, i, std::nullopt};
    } else if (const double size = 1 - index[i] / index[running.peak]; size > running.size) {
      running.size = size;
      running.trough = i;
    }
  }
  if (!index.empty()) {
    close(index.size() - 1, false);
  }
  return found.deepest.size > 0 ? std::optional(found) : std::nullopt;
}

std::optional<Drawdowns> drawdownsOf(const TimeWeightedReturn& returns) {
  std::vector<double> index;
  std::vector<YearMonthDay> days;
  for (const TimeWeightedReturn::Day& day : returns.days) {
    index.push_back(day.index);
    days.push_back(day.day);
  }
  return drawdownsOf(index, days);
}

std::vector<PeriodReturn> monthlyReturns(const TimeWeightedReturn& returns) {
  return periodReturns(returns, true);
}

std::vector<PeriodReturn> yearlyReturns(const TimeWeightedReturn& returns) {
  return periodReturns(returns, false);
}

std::optional<BestAndWorst> bestAndWorst(std::span<const PeriodReturn> periods) {
  std::optional<BestAndWorst> found;
  for (const PeriodReturn& period : periods) {
    if (!period.isWhole) {
      continue;
    }
    if (!found) {
      found = {period, period};
    } else if (period.value > found->best.value) {
      found->best = period;
    } else if (period.value < found->worst.value) {
      found->worst = period;
    }
  }
  return found;
}

std::vector<YearOfReturns> returnGrid(const TimeWeightedReturn& returns) {
  std::vector<YearOfReturns> grid;
  for (const PeriodReturn& year : yearlyReturns(returns)) {
    grid.push_back({year.first.year, {}, year});
  }
  for (const PeriodReturn& month : monthlyReturns(returns)) {
    const auto line = std::ranges::find(grid, month.first.year, &YearOfReturns::year);
    line->months[static_cast<std::size_t>(month.first.month - 1)] = month;
  }
  return grid;
}

}  // namespace corvane
