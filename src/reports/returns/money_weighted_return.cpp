#include "reports/returns/money_weighted_return.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <limits>

#include "reports/returns/time_weighted_return.h"
#include "reports/series/report_days.h"

namespace corvane {
namespace {

/// f(x) = Σ a(j) · x^((T - t(j)) / T) for the growth x > 0 over the whole span of T days.
class BalanceOfPayments {
 public:
  explicit BalanceOfPayments(std::span<const OwnersPayment> payments) {
    // Payments of 0 at the front change no balance, and make all stretches equally long.
    const std::size_t padding = (stretches - payments.size() % stretches) % stretches;
    amounts_.reserve(padding + payments.size());
    amounts_.resize(padding);
    gapOf_.reserve(padding + payments.size());
    gapOf_.resize(padding);
    const std::int64_t last = dayNumber(payments.back().day);
    std::int64_t before = dayNumber(payments.front().day);
    const auto span = static_cast<double>(last - before);
    parts_.push_back(0);
    length_ = (padding + payments.size()) / stretches;
    for (const OwnersPayment& payment : payments) {
      const std::int64_t day = dayNumber(payment.day);
      amounts_.push_back(payment.amount.doubleValue());
      scale_ = std::max(scale_, std::abs(amounts_.back()));
      gapOf_.push_back(placeOfGap(day - before, span));
      before = day;
      if (amounts_.size() % length_ == 0) {
        restAfter_[amounts_.size() / length_ - 1] = static_cast<double>(last - day) / span;
      }
    }
    growths_.resize(parts_.size());
  }

  /// What is left of the payments at the end where they grow by exp(`logGrowth`) in all.
  double operator()(double logGrowth) {
    setGrowth(logGrowth);
    // Each stretch of payments by itself, side by side: a balance waits for the one before it.
    std::array<double, stretches> balances{};
    for (std::size_t i = 0; i < length_; ++i) {
#pragma GCC unroll 8
      for (std::size_t k = 0; k < stretches; ++k) {
        const std::size_t at = k * length_ + i;
        balances[k] = balances[k] * growths_[gapOf_[at]] + amounts_[at];
      }
    }
    double balance = 0;
    for (std::size_t k = 0; k < stretches; ++k) {
      balance += balances[k] * std::exp(logGrowth * restAfter_[k]);
    }
    return balance;
  }

  /// How many roots there can be above exp(`logGrowth`) at most: as many as the balances after each
  /// payment change their signs there. (Descartes' rule for sums: beyond that growth each power
  /// less the next one is positive.)
  int mostRootsAbove(double logGrowth) {
    setGrowth(logGrowth);
    int changes = 0;
    double balance = 0;
    double sign = 0;
    for (std::size_t i = 0; i < amounts_.size(); ++i) {
      balance = balance * growths_[gapOf_[i]] + amounts_[i];
      countChange(balance, sign, changes);
    }
    return changes;
  }

  /// The same below it, with what is still to be paid, discounted.
  int mostRootsBelow(double logGrowth) {
    setGrowth(-logGrowth);
    int changes = 0;
    double rest = 0;
    double sign = 0;
    for (std::size_t i = amounts_.size(); i-- > 0;) {
      rest += amounts_[i];
      countChange(rest, sign, changes);
      rest *= growths_[gapOf_[i]];
    }
    return changes;
  }

  /// The same at several points.
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
      const double amount = amounts_[i];
      // Unrolled, the balances stay in registers.
#pragma GCC unroll 8
      for (std::size_t k = 0; k < batch; ++k) {
        balance[k] = balance[k] * growth[k] + amount;
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
  static constexpr std::size_t stretches = 8;

  static void countChange(double balance, double& sign, int& changes) {
    changes += balance * sign < 0 ? 1 : 0;
    sign = balance != 0 ? std::copysign(1.0, balance) : sign;
  }

  /// Where the part of the span that `days` are stands in `parts_`. Long gaps, of which there are
  /// few, have a place each.
  std::uint32_t placeOfGap(std::int64_t days, double span) {
    const auto place = static_cast<std::uint32_t>(parts_.size());
    if (days < static_cast<std::int64_t>(placeOfShortGap_.size())) {
      std::uint32_t& known = placeOfShortGap_[static_cast<std::size_t>(days)];
      if (days == 0 || known > 0) {
        return known;
      }
      known = place;
    }
    parts_.push_back(static_cast<double>(days) / span);
    return place;
  }

  void setGrowth(double logGrowth) {
    for (std::size_t i = 0; i < parts_.size(); ++i) {
      growths_[i] = std::exp(logGrowth * parts_[i]);
    }
  }

  std::vector<double> amounts_;
  std::vector<std::uint32_t> gapOf_;  ///< the days before each payment, by their place in `parts_`
  std::vector<double> parts_;         ///< of the span
  std::vector<double> growths_;       ///< over each of them
  std::array<std::uint32_t, 64> placeOfShortGap_{};
  std::size_t length_ = 0;                     ///< of a stretch
  std::array<double, stretches> restAfter_{};  ///< the part of the span that follows on a stretch
  double scale_ = 0;
};

struct PointOfBalance {
  double at;
  double balance;
};

/// From `best` to where the parabola through the three points, or the line where two of them are
/// one, meets 0.
double interpolatedStep(const PointOfBalance& best, const PointOfBalance& before,
                        const PointOfBalance& opposite) {
  const double ratio = best.balance / before.balance;
  if (before.at == opposite.at) {
    return (opposite.at - best.at) * ratio / (ratio - 1);
  }
  const double far = before.balance / opposite.balance;
  const double near = best.balance / opposite.balance;
  const double numerator =
      ratio * ((opposite.at - best.at) * far * (far - near) - (best.at - before.at) * (near - 1));
  const double denominator = (far - 1) * (near - 1) * (ratio - 1);
  return -numerator / denominator;
}

/// The root between `low` and `high`, at which the signs differ: Brent's method (1973), which goes
/// on by parabolas and secants where these close in on the root, and else by halves. The root is
/// always between the signs, so nothing runs away.
double rootBetween(BalanceOfPayments& balance, const PointOfBalance& low,
                   const PointOfBalance& high) {
  constexpr double epsilon = std::numeric_limits<double>::epsilon();
  constexpr int mostSteps = 200;
  double best = high.at, before = low.at, opposite = low.at;
  double atBest = high.balance, atBefore = low.balance, atOpposite = low.balance;
  double step = best - before, lastStep = step;
  for (int i = 0; i < mostSteps && atBest != 0; ++i) {
    if (std::abs(atOpposite) < std::abs(atBest)) {
      before = best;
      best = opposite;
      opposite = before;
      atBefore = atBest;
      atBest = atOpposite;
      atOpposite = atBefore;
    }
    const double tolerance = 2 * epsilon * std::abs(best) + epsilon;
    const double half = (opposite - best) / 2;
    if (std::abs(half) <= tolerance) {
      break;
    }
    const double wanted =
        interpolatedStep({best, atBest}, {before, atBefore}, {opposite, atOpposite});
    const bool closesIn =
        std::abs(lastStep) >= tolerance && std::abs(atBefore) > std::abs(atBest) &&
        wanted * half > 0 &&
        std::abs(wanted) < std::min(std::abs(half) * 3 / 2, std::abs(lastStep) / 2);
    lastStep = closesIn ? step : half;
    step = closesIn ? wanted : half;
    before = best;
    atBefore = atBest;
    best += std::abs(step) > tolerance ? step : std::copysign(tolerance, half);
    atBest = balance(best);
    if ((atBest < 0) == (atOpposite < 0)) {
      opposite = before;
      atOpposite = atBefore;
      step = lastStep = best - before;
    }
  }
  return best;
}

/// A root near `start`, looked for in ever wider brackets.
std::optional<double> rootAround(BalanceOfPayments& balance, double start) {
  const double furthest = std::log(1e9);
  constexpr double firstWidth = 0.1;
  const auto pointAt = [&](double at) { return PointOfBalance{at, balance(at)}; };
  PointOfBalance innerLow = pointAt(std::clamp(start, -furthest, furthest));
  PointOfBalance innerHigh = innerLow;
  for (double width = firstWidth;; width *= 2) {
    const PointOfBalance low = pointAt(std::max(start - width, -furthest));
    if ((low.balance < 0) != (innerLow.balance < 0)) {
      return rootBetween(balance, low, innerLow);
    }
    const PointOfBalance high = pointAt(std::min(start + width, furthest));
    if ((high.balance < 0) != (innerHigh.balance < 0)) {
      return rootBetween(balance, innerHigh, high);
    }
    if (low.at == -furthest && high.at == furthest) {
      return std::nullopt;
    }
    innerLow = low;
    innerHigh = high;
  }
}

/// How many roots there can be at most above 1 and below it, by the exact sums of the payments.
struct MostRoots {
  int aboveOne = 0;
  int belowOne = 0;
  bool isAtOne = false;  ///< the payments add up to 0
};

MostRoots mostRoots(std::span<const OwnersPayment> payments) {
  const auto signOf = [](const Decimal& sum) {
    return sum.isZero() ? 0 : sum.sign() == Sign::minus ? -1 : 1;
  };
  Decimal whole;
  for (const OwnersPayment& payment : payments) {
    whole += payment.amount;
  }
  MostRoots most{0, 0, whole.isZero()};
  int signBefore = 0;
  int signAfter = signOf(whole);
  Decimal sum;
  for (const OwnersPayment& payment : payments) {
    sum += payment.amount;
    const int before = signOf(sum);
    const int after = signOf(whole - sum);
    most.aboveOne += before * signBefore < 0 ? 1 : 0;
    most.belowOne += after * signAfter < 0 ? 1 : 0;
    signBefore = before != 0 ? before : signBefore;
    signAfter = after != 0 ? after : signAfter;
  }
  return most;
}

/// The points at which roots are looked for: a fortieth of a decade apart, from 1e-6 to 1e6.
struct RootGrid {
  static constexpr int pointsOfDecade = 40;
  static constexpr int decades = 6;

  static bool reaches(double logGrowth) { return std::abs(logGrowth) <= std::log(10.0) * decades; }
  static double at(int point) { return std::log(10.0) * point / pointsOfDecade; }
  /// The last point at or below `logGrowth`, within the grid.
  static int pointBelow(double logGrowth) {
    constexpr double end = decades * pointsOfDecade;
    return static_cast<int>(
        std::floor(std::clamp(logGrowth / std::log(10.0) * pointsOfDecade, -end, end - 1)));
  }
};

/// The roots between the points `start` and `last` or a little further; of those in one cell of the
/// grid one or none.
std::vector<double> rootsBetween(BalanceOfPayments& balance, int start, int last) {
  constexpr int batch = BalanceOfPayments::batch;
  std::vector<double> roots;
  PointOfBalance before{RootGrid::at(start), balance(RootGrid::at(start))};
  for (int first = start + 1; first <= last; first += batch) {
    BalanceOfPayments::Points points{};
    for (int k = 0; k < batch; ++k) {
      points[static_cast<std::size_t>(k)] = RootGrid::at(first + k);
    }
    const auto balances = balance.at(points);
    for (std::size_t k = 0; k < points.size(); ++k) {
      const PointOfBalance after{points[k], balances[k]};
      if ((after.balance < 0) != (before.balance < 0)) {
        roots.push_back(rootBetween(balance, before, after));
      }
      before = after;
    }
  }
  return roots;
}

/// All roots, on the sides of 1 where there can be any.
std::vector<double> allRoots(BalanceOfPayments& balance, const MostRoots& most) {
  // A batch reaches over 1 on either side, where a root may stand.
  constexpr int batch = BalanceOfPayments::batch;
  int start = -batch;
  int last = batch;
  for (int decade = 1; most.belowOne > 0 && decade <= RootGrid::decades; ++decade) {
    start = -decade * RootGrid::pointsOfDecade;
    if (balance.mostRootsBelow(RootGrid::at(start)) == 0) {
      break;
    }
  }
  for (int decade = 1; most.aboveOne > 0 && decade <= RootGrid::decades; ++decade) {
    last = decade * RootGrid::pointsOfDecade;
    if (balance.mostRootsAbove(RootGrid::at(last)) == 0) {
      break;
    }
  }
  return rootsBetween(balance, start, last);
}

/// The root whose return is nearest to `expected`, where `near` is one: others are looked for no
/// further from it, nor where there can be none.
double nearestRoot(BalanceOfPayments& balance, double near, double expected) {
  const auto distanceOf = [&](double root) { return std::abs(std::expm1(root) - expected); };
  const auto pointBelow = [](double growth) {
    return RootGrid::pointBelow(std::log(std::max(growth, std::numeric_limits<double>::min())));
  };
  const double distance = distanceOf(near);
  const int lowest = pointBelow(1 + expected - distance);
  const int highest = pointBelow(1 + expected + distance) + 1;
  constexpr int firstStep = RootGrid::pointsOfDecade / 4;
  int start = RootGrid::pointBelow(near) - firstStep;
  while (start > lowest && balance.mostRootsBelow(RootGrid::at(start)) > 0) {
    start -= RootGrid::pointsOfDecade;
  }
  int last = RootGrid::pointBelow(near) + firstStep;
  while (last < highest && balance.mostRootsAbove(RootGrid::at(last)) > 0) {
    last += RootGrid::pointsOfDecade;
  }
  const std::vector<double> roots =
      rootsBetween(balance, std::max(start, lowest), std::min(last, highest));
  return roots.empty() ? near : *std::ranges::min_element(roots, {}, distanceOf);
}

/// `payments` by day, without zeros at either end: at the end they would always let -100 % solve
/// the equation.
std::vector<OwnersPayment> nettedByDay(std::span<const OwnersPayment> payments) {
  std::vector<OwnersPayment> netted;
  netted.reserve(payments.size());
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
  payments.reserve(days.size() + 1);
  payments.push_back({days.front().day, -days.front().value});
  for (const ValuationDay& day : days.subspan(1)) {
    if (day.outflow != day.inflow) {
      payments.push_back({day.day, day.outflow - day.inflow});
    }
  }
  payments.push_back({days.back().day, days.back().value});
  return payments;
}

MoneyWeightedReturn moneyWeightedReturn(std::span<const OwnersPayment> payments, double expected,
                                        RatesWanted wanted) {
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
  if (near && wanted == RatesWanted::nearest && RootGrid::reaches(*near)) {
    return {Outcome::rate, days, std::expm1(nearestRoot(balance, *near, expected)), {}};
  }
  const MostRoots most = mostRoots(netted);
  if (near && !most.isAtOne && most.aboveOne + most.belowOne <= 1) {
    return {Outcome::rate, days, std::expm1(*near), {}};
  }
  std::vector<double> roots = allRoots(balance, most);
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
