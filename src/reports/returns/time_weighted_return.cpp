#include "reports/returns/time_weighted_return.h"

#include <algorithm>
#include <cmath>

#include "reports/series/report_days.h"

namespace corvane {
namespace {

// What a comparison with 0 says, by the sign alone, for there are very many days.
inline bool isPositive(const Decimal& value) {
  return value.sign() == Sign::plus && !value.isZero() && !value.isNaN();
}
inline bool isNegative(const Decimal& value) {
  return value.sign() == Sign::minus || value.isNaN();
}

DayFraction fractionOf(const Decimal& before, const ValuationDay& day) {
  if (day.inflow.isZero() && day.outflow.isZero()) {
    return {before, day.value};
  }
  const Decimal flow = day.inflow - day.outflow;
  DayFraction fraction{before, day.value};
  if (isNegative(flow)) {
    fraction.top -= flow;
  } else {
    fraction.base += flow;
  }
  // What was bought and sold within the day leaves no capital behind to measure against, and
  // nothing on top where it was sold at a loss: then the day's whole purchases are the capital.
  if ((!isPositive(fraction.base) && isPositive(day.inflow)) ||
      (!isPositive(fraction.top) && isPositive(day.outflow))) {
    return {before + day.inflow, day.value + day.outflow};
  }
  return fraction;
}

}  // namespace

std::vector<DayFraction> dayFractions(std::span<const ValuationDay> days) {
  std::vector<DayFraction> fractions{{0, 0}};
  fractions.reserve(days.size());
  std::optional<std::size_t> lastWithCapital;
  for (std::size_t i = 1; i < days.size(); ++i) {
    DayFraction fraction = fractionOf(days[i - 1].value, days[i]);
    const bool isLateIncome = days[i - 1].value.isZero() && days[i].value.isZero() &&
                              days[i].inflow.isZero() && isPositive(days[i].outflow);
    if (isLateIncome && lastWithCapital) {
      fractions[*lastWithCapital].top += fraction.top;
      fraction.top = 0;
    }
    if (isPositive(fraction.base)) {
      lastWithCapital = i;
    }
    fractions.push_back(fraction);
  }
  return fractions;
}

double annualised(double periodReturn, int days) {
  constexpr double daysOfYear = 365;
  return std::pow(1 + periodReturn, daysOfYear / days) - 1;
}

int TimeWeightedReturn::daysMeasured() const {
  return days.empty() ? 0 : daysBetween(days.front().day, days.back().day);
}

std::optional<double> TimeWeightedReturn::annual() const {
  if (!total || daysMeasured() <= longestSpanWithoutAnnualFigure) {
    return std::nullopt;
  }
  return annualised(*total, daysMeasured());
}

TimeWeightedReturn timeWeightedReturn(std::span<const ValuationDay> days) {
  TimeWeightedReturn result;
  result.days.reserve(days.size() + 1);
  const std::vector<DayFraction> fractions = dayFractions(days);
  std::size_t endWithCapital = 0;
  for (std::size_t i = 1; i < days.size(); ++i) {
    const DayFraction& fraction = fractions[i];
    const bool isOverdrawn =
        isNegative(fraction.base) || (isPositive(fraction.base) && !isPositive(fraction.top));
    if (isOverdrawn) {
      result.restart = {daysAfter(days[i].day, 1), days[i].day, days[i].value};
      result.days = {{.day = days[i].day}};
      endWithCapital = 0;
      continue;
    }
    if (!isPositive(fraction.base)) {
      result.hasGainWithoutCapital |= !fraction.top.isZero();
      if (!result.days.empty()) {
        result.days.push_back({.day = days[i].day, .index = result.days.back().index});
      }
      continue;
    }
    if (result.days.empty()) {
      const bool isHeldFromTheBase = i == 1 && isPositive(days[0].value);
      result.days.push_back({.day = isHeldFromTheBase ? days[0].day : daysAfter(days[i].day, -1)});
    }
    const double growth = fraction.growth();
    result.days.push_back({days[i].day, growth - 1, result.days.back().index * growth,
                           isPositive(days[i - 1].value) && isPositive(days[i].value),
                           days[i].isAtTradePrice});
    endWithCapital = result.days.size();
  }
  result.days.resize(endWithCapital);
  if (!result.days.empty()) {
    result.total = result.days.back().index - 1;
  }
  return result;
}

}  // namespace corvane
