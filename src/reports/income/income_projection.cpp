#include "reports/income/income_projection.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <limits>
#include <numeric>

#include "reports/series/report_days.h"

namespace corvane {
namespace {

/// The mean number of days from one payment to the next; there are at least two.
double meanInterval(std::span<const YearMonthDay> days) {
  return static_cast<double>(daysBetween(days.front(), days.back())) /
         static_cast<double>(days.size() - 1);
}

YearMonthDay yearsAfter(const YearMonthDay& day, int years) {
  const int year = day.year + years;
  return {year, day.month, std::min(day.day, daysInMonth(year, day.month))};
}

std::vector<YearMonthDay> daysOfPayments(std::span<const SharePayment> payments) {
  std::vector<YearMonthDay> days;
  for (const SharePayment& payment : payments) {
    days.push_back(payment.day);
  }
  return days;
}

/// Of an even number the lower of the two in the middle.
std::optional<Decimal> medianOf(std::span<const SharePayment> payments) {
  constexpr std::size_t fewest = 3;
  if (payments.size() < fewest) {
    return std::nullopt;
  }
  std::vector<Decimal> amounts;
  for (const SharePayment& payment : payments) {
    amounts.push_back(payment.amount);
  }
  std::ranges::sort(amounts);
  return amounts[(amounts.size() - 1) / 2];
}

/// 0.5 with two digits: amounts per share read as money does.
std::string perShareText(const Decimal& amount) {
  const std::string text = amount.description();
  const std::size_t point = text.find('.');
  if (point == std::string::npos) {
    return text + ".00";
  }
  return text.size() - point < 3 ? text + "0" : text;
}

/// The payments of `payments` after `first` and up to `last`.
std::span<const SharePayment> paymentsWithin(std::span<const SharePayment> payments,
                                             const YearMonthDay& first, const YearMonthDay& last) {
  const auto begin = std::ranges::upper_bound(payments, first, {}, &SharePayment::day);
  const auto end = std::ranges::upper_bound(payments, last, {}, &SharePayment::day);
  return {begin, std::max(begin, end)};
}

void addDeclared(IncomeProjection& projection, const SharePayment& declared, double interval,
                 const Decimal& amount) {
  auto& payments = projection.payments;
  const auto distance = [&](const IncomeProjection::Payment& payment) {
    return std::abs(daysBetween(payment.day, declared.day));
  };
  const auto nearest = std::ranges::min_element(payments, {}, [&](const auto& payment) {
    return payment.isDeclared ? std::numeric_limits<int>::max() : distance(payment);
  });
  if (nearest != payments.end() && !nearest->isDeclared && distance(*nearest) * 2 <= interval) {
    payments.erase(nearest);
  }
  payments.push_back({declared.day, declared.amount, amount, true});
}

}  // namespace

PaymentRhythm rhythmOf(std::span<const YearMonthDay> days) {
  if (days.size() < 2) {
    return days.empty() ? PaymentRhythm::none : PaymentRhythm::unknown;
  }
  struct Bound {
    double days;
    PaymentRhythm rhythm;
  };
  constexpr Bound bounds[] = {{20, PaymentRhythm::irregular},
                              {60, PaymentRhythm::monthly},
                              {130, PaymentRhythm::quarterly},
                              {270, PaymentRhythm::halfYearly},
                              {430, PaymentRhythm::annual}};
  const double interval = meanInterval(days);
  if (interval < bounds[0].days) {
    return PaymentRhythm::irregular;
  }
  const auto found =
      std::ranges::find_if(bounds, [&](const Bound& bound) { return interval <= bound.days; });
  if (found == std::end(bounds)) {
    return PaymentRhythm::irregular;
  }
  return found == std::begin(bounds) ? PaymentRhythm::monthly : found->rhythm;
}

std::string_view displayName(PaymentRhythm rhythm) {
  switch (rhythm) {
    case PaymentRhythm::none:
      return "none";
    case PaymentRhythm::unknown:
      return "unknown";
    case PaymentRhythm::monthly:
      return "monthly";
    case PaymentRhythm::quarterly:
      return "quarterly";
    case PaymentRhythm::halfYearly:
      return "half-yearly";
    case PaymentRhythm::annual:
      return "annual";
    case PaymentRhythm::irregular:
      return "irregular";
  }
  __builtin_unreachable();
}

std::vector<SharePayment> restatedForSplits(std::vector<SharePayment> payments,
                                            std::span<const ShareSplit> splits) {
  for (SharePayment& payment : payments) {
    for (const ShareSplit& split : splits) {
      if (payment.day < split.day) {
        payment.amount = payment.amount * split.from / split.into;
      }
    }
  }
  return payments;
}

Decimal IncomeProjection::next12Months() const {
  Decimal sum;
  for (const Payment& payment : payments) {
    sum += payment.amount;
  }
  return sum;
}

IncomeProjection projectedIncome(std::span<const SharePayment> payments, const YearMonthDay& today,
                                 const ProjectedHolding& holding) {
  constexpr int yearsOfMedian = 3;
  constexpr int timesMedian = 3;
  constexpr double intervalsWithoutPayment = 1.5;
  IncomeProjection projection;
  const auto recent = paymentsWithin(payments, yearsAfter(today, -yearsOfMedian), today);
  const std::vector<YearMonthDay> recentDays = daysOfPayments(recent);
  projection.rhythm = rhythmOf(recentDays);
  const double interval = recentDays.size() < 2 ? 0 : meanInterval(recentDays);
  const bool hasStopped =
      interval > 0 && daysBetween(recentDays.back(), today) > intervalsWithoutPayment * interval;
  const auto median = medianOf(recent);
  const auto amountOf = [&](const SharePayment& payment) {
    return roundedToMinorUnits(holding.shares * payment.amount * holding.rate, holding.currency);
  };
  for (const SharePayment& payment : paymentsWithin(payments, yearsAfter(today, -1), today)) {
    if (hasStopped) {
      projection.leftOut.push_back(
          {payment.day, payment.amount, "stopped: no payment since " + isoText(recentDays.back())});
    } else if (median && payment.amount > *median * timesMedian) {
      projection.leftOut.push_back(
          {payment.day, payment.amount,
           "special: more than 3 times the median of " + perShareText(*median)});
    } else {
      projection.payments.push_back(
          {yearsAfter(payment.day, 1), payment.amount, amountOf(payment), false});
    }
  }
  for (const SharePayment& declared : paymentsWithin(payments, today, yearsAfter(today, 1))) {
    addDeclared(projection, declared, interval, amountOf(declared));
  }
  std::ranges::stable_sort(projection.payments, {}, &IncomeProjection::Payment::day);
  return projection;
}

std::optional<double> yieldOn(const Decimal& base, const Decimal& shares,
                              std::span<const Decimal> perShare) {
  if (base <= 0) {
    return std::nullopt;
  }
  const Decimal paid = std::accumulate(perShare.begin(), perShare.end(), Decimal()) * shares;
  return paid.doubleValue() / base.doubleValue();
}

}  // namespace corvane
