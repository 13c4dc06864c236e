#include "reports/trail/returns_trails.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "reports/returns/money_weighted_return.h"
#include "reports/returns/time_weighted_return.h"
#include "reports/series/report_days.h"

namespace corvane {
namespace {

TrailNode amountOn(std::string label, const Decimal& amount, const std::string& unit,
                   const YearMonthDay& day) {
  return {.label = std::move(label), .value = amount, .unit = unit, .day = day};
}

/// `value` with what was moved to or from it, where that is not 0.
TrailNode withFlow(std::string label, TrailNode value, const char* flowLabel, const Decimal& sum,
                   const YearMonthDay& day) {
  const Decimal flow = sum - value.value;
  if (flow.isZero()) {
    return value;
  }
  const std::string unit = value.unit;
  return sumOf(std::move(label), unit, {std::move(value), amountOn(flowLabel, flow, unit, day)});
}

/// The growth over days `first` to `last`, of which each begins with what the one before ended
/// with.
TrailNode stretchTrail(std::span<const ValuationDay> days, std::span<const DayFraction> fractions,
                       std::size_t first, std::size_t last, const std::string& unit) {
  const ValuationDay& before = days[first - 1];
  const ValuationDay& from = days[first];
  const ValuationDay& to = days[last];
  TrailNode base = withFlow("Capital", amountOn("Value before", before.value, unit, before.day),
                            "Brought in", fractions[first].base, from.day);
  TrailNode top =
      withFlow("Capital with what was taken out", amountOn("Value after", to.value, unit, to.day),
               "Taken out", fractions[last].top, to.day);
  TrailNode growth = quotientOf(
      "Growth from " + isoText(from.day) + (first == last ? "" : " to " + isoText(to.day)), "",
      std::move(top), std::move(base));
  growth.day = to.day;
  return growth;
}

bool isMeasured(const TimeWeightedReturn& returns, const YearMonthDay& day) {
  return returns.days.front().day < day && day <= returns.days.back().day;
}

double growthTo(double growth, double part) {
  return std::exp(std::log(growth) * part);
}

std::vector<OwnersPayment> paymentsByDay(std::span<const ValuationDay> days) {
  std::vector<OwnersPayment> netted;
  for (const OwnersPayment& payment : ownersPayments(days)) {
    if (payment.amount.isZero()) {
      continue;
    }
    if (!netted.empty() && netted.back().day == payment.day) {
      netted.back().amount += payment.amount;
    } else {
      netted.push_back(payment);
    }
  }
  std::erase_if(netted, [](const OwnersPayment& payment) { return payment.amount.isZero(); });
  return netted;
}

}  // namespace

std::optional<TrailNode> timeWeightedTrail(std::span<const ValuationDay> days,
                                           const Currency& currency, ReturnsDetail detail) {
  const TimeWeightedReturn returns = timeWeightedReturn(days);
  if (!returns.total) {
    return std::nullopt;
  }
  const std::string unit(currency.code);
  const std::vector<DayFraction> fractions = dayFractions(days);
  const auto isCounted = [&](std::size_t i) {
    return isMeasured(returns, days[i].day) && fractions[i].hasCapital();
  };
  std::vector<TrailNode> years;
  std::vector<TrailNode> stretches;
  int year = 0;
  const auto closeYear = [&] {
    if (!stretches.empty()) {
      years.push_back(
          productOf("Growth in " + std::to_string(year), "", std::exchange(stretches, {})));
    }
  };
  for (std::size_t i = 1; i < days.size(); ++i) {
    if (!isCounted(i)) {
      continue;
    }
    if (days[i].day.year != year) {
      closeYear();
      year = days[i].day.year;
    }
    const std::size_t first = i;
    while (detail == ReturnsDetail::stretches && i + 1 < days.size() && isCounted(i + 1) &&
           days[i + 1].day.year == year && fractions[i + 1].base == fractions[i].top) {
      ++i;
    }
    stretches.push_back(stretchTrail(days, fractions, first, i, unit));
  }
  closeYear();
  TrailNode one{.label = "What was there at the start", .value = 1};
  return percentOf("Time-weighted return from " + isoText(daysAfter(returns.days.front().day, 1)) +
                       " to " + isoText(returns.days.back().day),
                   differenceOf("Growth less 1", "",
                                {productOf("Growth", "", std::move(years)), std::move(one)}));
}

std::optional<TrailNode> moneyWeightedTrail(std::span<const ValuationDay> days,
                                            const Currency& currency) {
  const double expected = timeWeightedReturn(days).total.value_or(0);
  const MoneyWeightedReturn found = moneyWeightedReturn(ownersPayments(days), expected);
  if (!found.period) {
    return std::nullopt;
  }
  TrailNode rate{.label = "Rate for the period",
                 .value = Decimal::fromDouble(*found.period),
                 .source = "solved"};
  if (found.outcome == MoneyWeightedReturn::Outcome::totalLoss) {
    rate.source = "nothing came back";
    return percentOf("Money-weighted return", std::move(rate));
  }
  const std::string unit(currency.code);
  const std::vector<OwnersPayment> payments = paymentsByDay(days);
  std::vector<TrailNode> grown;
  grown.reserve(payments.size());
  for (const OwnersPayment& payment : payments) {
    const double part =
        static_cast<double>(daysBetween(payment.day, payments.back().day)) / found.days;
    TrailNode amount = amountOn(payment.amount < 0 ? "Paid in" : "Taken out, or left at the end",
                                payment.amount, unit, payment.day);
    TrailNode growth{
        .label = "Growth until the end",
        .value = Decimal::fromDouble(growthTo(1 + *found.period, part)),
        .source = "growth of the period to the power of " +
                  rounded(Decimal::fromDouble(part), 6, RoundingMode::bankers).description()};
    std::vector<TrailNode> factors;
    factors.reserve(2);
    factors.push_back(std::move(amount));
    factors.push_back(std::move(growth));
    grown.push_back(
        productOf("Payment of " + isoText(payment.day) + " at the rate", unit, std::move(factors)));
  }
  TrailNode left = roundedTo(currency.minorUnits, "What is left of all payments at the rate",
                             sumOf("All payments at the rate", unit, std::move(grown)));
  TrailNode solved = solutionOf("Rate at which nothing is left", std::move(rate), std::move(left));
  for (const double other : found.otherPeriods) {
    solved.note += (solved.note.empty() ? "also solves: " : ", ") +
                   rounded(Decimal::fromDouble(other * 100), 1, RoundingMode::plain).description() +
                   " %";
  }
  return percentOf("Money-weighted return from " + isoText(payments.front().day) + " to " +
                       isoText(payments.back().day),
                   std::move(solved));
}

}  // namespace corvane
