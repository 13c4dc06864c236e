#include "reports/returns/money_weighted_return.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>

#include "reports/returns/time_weighted_return.h"
#include "reports/series/report_days.h"

namespace corvane {
namespace {

/// f(x) = Σ a(j) · x^((T - t(j)) / T) for the growth x > 0 over the whole span of T days.
class BalanceOfPayments {
 public:
  explicit BalanceOfPayments(std::span<const OwnersPayment> payments) {
    const double span = daysBetween(payments.front().day, payments.back().day);
    for (std::size_t i = 0; i < payments.size(); ++i) {
      amounts_.push_back(payments[i].amount.doubleValue());
      scale_ = std::max(scale_, std::abs(amounts_.back()));
      const int gap = i == 0 ? 0 : daysBetween(payments[i - 1].day, payments[i].day);
      const auto known = std::ranges::find(gaps_, gap);
      gapOf_.push_back(static_cast<std::size_t>(known - gaps_.begin()));
      if (known == gaps_.end()) {
        gaps_.push_back(gap);
        parts_.push_back(gap / span);
      }
    }
    growths_.resize(gaps_.size());
  }

  /// What is left of the payments at the end where they grow by exp(`logGrowth`) in all.
  double operator()(double logGrowth) {
    setGrowth(logGrowth);
    double balance = 0;
    for (std::size_t i = 0; i < amounts_.size(); ++i) {
      balance = balance * growths_[gapOf_[i]] + amounts_[i];
    }
    return balance;
  }

  /// The same at several points; the sums do not wait for each other.
  static constexpr std::size_t batch = 8;
  using Points = std::array<double, batch>;
  Points at(const Points& logGrowths) {
    std::vector<Points> growths(parts_.size());
    for (std::size_t i = 0; i < parts_.size(); ++i) {
      for (std::size_t k = 0; k < batch; ++k) {
        growths[i][k] = std::exp(logGrowths[k] * parts_[i]);
      }
    }
    Points balance{};
    for (std::size_t i = 0; i < amounts_.size(); ++i) {
      const Points& growth = growths[gapOf_[i]];
      for (std::size_t k = 0; k < batch; ++k) {
        balance[k] = balance[k] * growth[k] + amounts_[i];
      }
    }
    return balance;
  }

  /// Whether the owner never owes anything before the end. Then no other rate solves the equation
  /// (the pure-investment test of Teichroew, Robichek and Montalbano, 1965).
  bool isPureInvestment(double logGrowth) {
    setGrowth(logGrowth);
    constexpr double dust = 1e-12;
    double balance = 0;
    for (std::size_t i = 0; i + 1 < amounts_.size(); ++i) {
      balance = balance * growths_[gapOf_[i]] + amounts_[i];
      if (balance > dust * scale_) {
        return false;
      }
    }
    return true;
  }

 private:
  void setGrowth(double logGrowth) {
    for (std::size_t i = 0; i < parts_.size(); ++i) {
      growths_[i] = std::exp(logGrowth * parts_[i]);
    }
  }

  std::vector<double> amounts_;
  std::vector<std::size_t> gapOf_;
  std::vector<int> gaps_;
  std::vector<double> parts_;
  std::vector<double> growths_;
  double scale_ = 0;
};

/// The root between `low` and `high`, at which the signs differ. Each step divides the bracket in
/// nine by its signs, which needs no slope and so cannot run away.
double rootBetween(BalanceOfPayments& balance, double low, double high) {
  const bool isNegativeAtLow = balance(low) < 0;
  constexpr int steps = 20;  // as close as 60 halvings
  for (int i = 0; i < steps; ++i) {
    BalanceOfPayments::Points points{};
    const double width = (high - low) / (BalanceOfPayments::batch + 1);
    for (std::size_t k = 0; k < points.size(); ++k) {
      points[k] = low + width * static_cast<double>(k + 1);
    }
    const auto balances = balance.at(points);
    const auto crossed = std::ranges::find_if(
        balances, [&](double value) { return (value < 0) != isNegativeAtLow; });
    const auto place = static_cast<std::size_t>(crossed - balances.begin());
    high = crossed == balances.end() ? high : points[place];
    low = place == 0 ? low : points[place - 1];
  }
  return (low + high) / 2;
}

/// A root near `start`, looked for in ever wider brackets.
std::optional<double> rootAround(BalanceOfPayments& balance, double start) {
  const double furthest = std::log(1e9);
  constexpr double firstWidth = 0.1;
  for (double width = firstWidth;; width *= 2) {
    const double low = std::max(start - width, -furthest);
    const double high = std::min(start + width, furthest);
    if ((balance(low) < 0) != (balance(high) < 0)) {
      return rootBetween(balance, low, high);
    }
    if (low == -furthest && high == furthest) {
      return std::nullopt;
    }
  }
}

/// All roots that differ by more than a fortieth of a decade between 1e-6 and 1e6.
std::vector<double> allRoots(BalanceOfPayments& balance) {
  constexpr int pointsOfDecade = 40;
  constexpr int decades = 6;
  std::vector<double> roots;
  const auto at = [](int point) { return std::log(10.0) * point / pointsOfDecade; };
  constexpr int last = decades * pointsOfDecade;
  bool isNegative = balance(at(-last)) < 0;
  for (int first = -last + 1; first <= last; first += BalanceOfPayments::batch) {
    BalanceOfPayments::Points points{};
    for (int k = 0; k < static_cast<int>(points.size()); ++k) {
      points[static_cast<std::size_t>(k)] = at(first + k);
    }
    const auto balances = balance.at(points);
    for (std::size_t k = 0; k < points.size(); ++k) {
      if ((balances[k] < 0) != isNegative) {
        isNegative = !isNegative;
        roots.push_back(
            rootBetween(balance, points[k] - std::log(10.0) / pointsOfDecade, points[k]));
      }
    }
  }
  return roots;
}

/// `payments` by day, without zeros at either end: at the end they would always let -100 % solve
/// the equation.
std::vector<OwnersPayment> nettedByDay(std::span<const OwnersPayment> payments) {
  std::vector<OwnersPayment> netted;
  for (const OwnersPayment& payment : payments) {
    if (!netted.empty() && netted.back().day == payment.day) {
      netted.back().amount += payment.amount;
    } else {
      netted.push_back(payment);
    }
  }
  const auto isPayment = [](const OwnersPayment& payment) { return !payment.amount.isZero(); };
  netted.erase(netted.begin(), std::ranges::find_if(netted, isPayment));
  while (!netted.empty() && !isPayment(netted.back())) {
    netted.pop_back();
  }
  return netted;
}

}  // namespace

std::optional<double> MoneyWeightedReturn::annual() const {
  if (!period || days <= longestSpanWithoutAnnualFigure) {
    return std::nullopt;
  }
  return annualised(*period, days);
}

std::vector<OwnersPayment> ownersPayments(std::span<const ValuationDay> days) {
  std::vector<OwnersPayment> payments;
  if (days.empty()) {
    return payments;
  }
  payments.push_back({days.front().day, -days.front().value});
  for (const ValuationDay& day : days.subspan(1)) {
    const Decimal amount = day.outflow - day.inflow;
    if (!amount.isZero()) {
      payments.push_back({day.day, amount});
    }
  }
  payments.push_back({days.back().day, days.back().value});
  return payments;
}

MoneyWeightedReturn moneyWeightedReturn(std::span<const OwnersPayment> payments, double expected) {
  using Outcome = MoneyWeightedReturn::Outcome;
  const std::vector<OwnersPayment> netted = nettedByDay(payments);
  if (std::ranges::none_of(netted, [](const auto& payment) { return payment.amount < 0; })) {
    return {};
  }
  if (std::ranges::none_of(netted, [](const auto& payment) { return payment.amount > 0; })) {
    return {Outcome::totalLoss, daysBetween(netted.front().day, payments.back().day), -1, {}};
  }
  const int days = daysBetween(netted.front().day, netted.back().day);
  BalanceOfPayments balance(netted);
  constexpr double leastGrowth = 1e-9;
  const double start = std::log(std::max(1 + expected, leastGrowth));
  const std::optional<double> near = rootAround(balance, start);
  if (near && balance.isPureInvestment(*near)) {
    return {Outcome::rate, days, std::expm1(*near), {}};
  }
  std::vector<double> roots = allRoots(balance);
  if (roots.empty() && near) {
    roots.push_back(*near);
  }
  if (roots.empty()) {
    return {Outcome::noRate, days, std::nullopt, {}};
  }
  const auto nearest = std::ranges::min_element(
      roots, {}, [&](double root) { return std::abs(std::expm1(root) - expected); });
  MoneyWeightedReturn result{Outcome::rate, days, std::expm1(*nearest), {}};
  roots.erase(nearest);
  std::ranges::transform(roots, std::back_inserter(result.otherPeriods),
                         [](double root) { return std::expm1(root); });
  return result;
}

}  // namespace corvane
