// Each formula once more, the plainest way and in exact fractions where there is one.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <boost/multiprecision/cpp_int.hpp>
#include <cmath>
#include <map>
#include <set>

#include "random_cases.h"
#include "reports/income/income_projection.h"
#include "reports/income/income_report.h"
#include "reports/report_world.h"
#include "reports/returns/money_weighted_return.h"
#include "reports/returns/risk_figures.h"
#include "reports/returns/time_weighted_return.h"
#include "reports/returns/total_return_index.h"
#include "reports/series/report_days.h"
#include "reports/tax/tax_walk.h"

namespace corvane::testing {
namespace {

using Exact = boost::multiprecision::cpp_rational;
using Whole = boost::multiprecision::cpp_int;
using TaxKind = TaxRow::Kind;

Exact exactOf(const Decimal& value) {
  const std::string text = value.description();
  const std::size_t point = text.find('.');
  std::string digits = text;
  Whole scale = 1;
  if (point != std::string::npos) {
    digits.erase(point, 1);
    scale = boost::multiprecision::pow(Whole(10), static_cast<unsigned>(text.size() - point - 1));
  }
  const bool isNegative = digits.starts_with('-');
  // Without zeros in front, which would make the number an octal one.
  const std::size_t first = digits.find_first_of("123456789");
  const Whole number(first == std::string::npos ? "0" : digits.substr(first));
  return Exact(isNegative ? Whole(-number) : number, scale);
}

double doubleOf(const Exact& value) {
  return value.convert_to<double>();
}

/// Half to even, to cents.
Exact inCents(const Exact& value) {
  const Exact scaled = abs(value) * 100;
  Whole whole = numerator(scaled) / denominator(scaled);
  const Exact rest = scaled - Exact(whole);
  const Exact half(1, 2);
  if (rest > half || (rest == half && whole % 2 == 1)) {
    ++whole;
  }
  return (value < 0 ? Exact(-1) : Exact(1)) * Exact(whole, Whole(100));
}

long drawn(std::mt19937_64& random, long most) {
  return static_cast<long>(random() % static_cast<unsigned long>(most));
}

// ── Taxes ──

constexpr std::size_t wife = 1;
constexpr std::size_t plan = 2;  ///< a registered account
const std::vector<TaxHolder> family{{"", true}, {"wife", true}, {"plan", false}};

/// Rows of a family with four portfolios, of which two are of the first person. Splits are of all
/// who hold, and far enough apart to be told apart.
struct FamilyRows {
  std::vector<TaxRow> rows;
  std::map<std::size_t, Decimal> held;                ///< by portfolio
  std::vector<std::pair<std::size_t, Exact>> splits;  ///< the row that is the first of each, ratio

  explicit FamilyRows(std::mt19937_64& random) {
    constexpr std::size_t holderOfPortfolio[] = {0, 0, wife, plan};
    YearMonthDay today{2020, 1, 1};
    YearMonthDay lastSplit = today;
    for (int i = 0; i < 70; ++i, today = daysAfter(today, drawn(random, 14))) {
      const auto portfolio = static_cast<std::size_t>(drawn(random, 4));
      TaxRow row{.day = today, .holder = holderOfPortfolio[portfolio], .portfolio = portfolio};
      row.amount =
          Decimal::fromParts(Sign::plus, -2, static_cast<unsigned long>(drawn(random, 90'000) + 1));
      const long what = drawn(random, 12);
      const bool isHeld =
          std::ranges::any_of(held, [](const auto& entry) { return entry.second > 0; });
      if (what == 0 && isHeld && daysBetween(lastSplit, today) > 15) {
        // On a day of its own: who holds none then, has no row that is before or after it.
        today = daysAfter(today, 1);
        lastSplit = today;
        split(today, holderOfPortfolio, drawn(random, 2) == 0 ? 2 : 5);
        continue;
      }
      if (what < 2 && held[portfolio] > 0) {
        row.kind = what == 0 ? TaxKind::reinvestedDistribution : TaxKind::returnOfCapital;
      } else if (what < 7 && held[portfolio] > 0) {
        row.kind = TaxKind::sale;
        row.shares =
            what == 2 ? held[portfolio] : std::min(held[portfolio], Decimal(drawn(random, 9) + 1));
        held[portfolio] -= row.shares;
      } else {
        row.shares = drawn(random, 20) + 1;
        held[portfolio] += row.shares;
      }
      rows.push_back(row);
    }
  }

  /// The shares of row `i` as those of after the last row.
  [[nodiscard]] Exact inTheEnd(std::size_t i, const Decimal& shares) const {
    Exact result = exactOf(shares);
    for (const auto& [row, ratio] : splits) {
      result *= i < row ? ratio : Exact(1);
    }
    return result;
  }

 private:
  void split(const YearMonthDay& day, const std::size_t* holders, long ratio) {
    splits.emplace_back(rows.size(), ratio);
    for (auto& [portfolio, shares] : held) {
      if (shares > 0) {
        TaxRow row{.kind = TaxKind::split,
                   .day = day,
                   .holder = holders[portfolio],
                   .portfolio = portfolio};
        row.splitFrom = shares;
        shares = shares * ratio;
        row.splitInto = shares;
        rows.push_back(row);
      }
    }
  }
};

/// The walk in fractions, each figure counted anew over all rows.
struct NaiveTaxes {
  const FamilyRows& told;
  bool deniesLosses;
  std::map<std::size_t, Exact> shares;  ///< by holder
  std::map<std::size_t, Exact> cost;
  std::map<std::size_t, Exact> gains;  ///< of each sale, what is denied not counted
  std::map<std::size_t, Exact> denied;
  std::map<std::size_t, std::map<std::size_t, Exact>> added;
  std::map<std::size_t, Exact> deemed;
  std::map<std::size_t, Exact> costAfter;

  NaiveTaxes(const FamilyRows& family, bool denies) : told(family), deniesLosses(denies) {
    for (std::size_t i = 0; i < told.rows.size(); ++i) {
      if (told.rows[i].holder != plan) {
        book(i);
      }
    }
  }

 private:
  void book(std::size_t i) {
    const TaxRow& row = told.rows[i];
    Exact& held = shares[row.holder];
    Exact& base = cost[row.holder];
    const Exact amount = exactOf(row.amount);
    switch (row.kind) {
      case TaxKind::purchase:
        held += exactOf(row.shares);
        base += amount;
        break;
      case TaxKind::sale: {
        const Exact sold = exactOf(row.shares);
        gains[i] = inCents(amount - base * sold / held);
        base = inCents(base * (held - sold) / held);
        held -= sold;
        break;
      }
      case TaxKind::split:
        held += exactOf(row.splitInto) - exactOf(row.splitFrom);
        break;
      case TaxKind::reinvestedDistribution:
        base += amount;
        break;
      case TaxKind::returnOfCapital:
        base -= amount;
        if (base < 0) {
          deemed[i] = -base;
          base = 0;
        }
        break;
      case TaxKind::journaled:
        break;
    }
    costAfter[i] = base;
    if (deniesLosses && gains.contains(i) && gains[i] < 0) {
      deny(i);
    }
  }

  void deny(std::size_t sale) {
    const TaxRow& sold = told.rows[sale];
    std::map<std::size_t, Exact> bought;
    std::map<std::size_t, Exact> left;
    Exact allBought;
    Exact allLeft;
    for (std::size_t i = 0; i < told.rows.size(); ++i) {
      const TaxRow& row = told.rows[i];
      const int apart = daysBetween(sold.day, row.day);
      const Exact count = told.inTheEnd(i, row.shares);
      if (row.kind == TaxKind::purchase && -30 <= apart && apart <= 30) {
        bought[row.holder] += count;
        allBought += count;
      }
      if (apart <= 30) {
        const Exact change = row.kind == TaxKind::sale ? Exact(-count) : count;
        left[row.holder] += change;
        allLeft += change;
      }
    }
    const Exact own = told.inTheEnd(sale, sold.shares);
    const Exact counted = std::min({own, allBought, allLeft});
    denied[sale] = inCents(-gains[sale] * counted / own);
    Exact weights;
    for (const auto& [who, count] : bought) {
      weights += left[who];
    }
    if (weights == 0) {
      return;
    }
    // Cents one by one, each to whom most is still missing.
    Exact given;
    for (const auto& [who, count] : bought) {
      if (left[who] > 0) {
        const Exact cents = denied[sale] * left[who] / weights * 100;
        added[sale][who] = Exact(Whole(numerator(cents) / denominator(cents)), Whole(100));
        given += added[sale][who];
      }
    }
    for (; given < denied[sale]; given += Exact(1, 100)) {
      std::size_t most = added[sale].begin()->first;
      const auto missing = [&](std::size_t who) -> Exact {
        return denied[sale] * left[who] / weights - added[sale][who];
      };
      for (const auto& [who, amount] : added[sale]) {
        most = missing(who) > missing(most) ? who : most;
      }
      added[sale][most] += Exact(1, 100);
    }
    for (const auto& [who, amount] : added[sale]) {
      cost[who] += amount;
    }
  }
};

TEST(NaiveReports, TaxWalkIsWhatFractionsGive) {
  int losses = 0;
  int deemed = 0;
  forRandomCases(80, [&](std::mt19937_64& random) {
    const FamilyRows told(random);
    for (const TaxCountry country : {TaxCountry::none, TaxCountry::canada}) {
      const TaxWalk walk = walkTaxes(told.rows, family, {Currency::cad(), country, {2100, 1, 1}});
      const NaiveTaxes naive(told, country == TaxCountry::canada);
      ASSERT_EQ(walk.disposals.size(), naive.gains.size());
      for (const TaxDisposal& disposal : walk.disposals) {
        EXPECT_EQ(exactOf(disposal.gain), naive.gains.at(disposal.row)) << disposal.row;
        const auto found = naive.denied.find(disposal.row);
        EXPECT_EQ(exactOf(disposal.superficial.denied),
                  found == naive.denied.end() ? Exact(0) : found->second)
            << disposal.row;
        std::map<std::size_t, Exact> added;
        for (const auto& [who, amount] : disposal.superficial.additions) {
          added[who] = exactOf(amount);
        }
        const auto expected = naive.added.find(disposal.row);
        const bool isDenied = found != naive.denied.end() && found->second > 0;
        EXPECT_TRUE(!isDenied || expected == naive.added.end() || added == expected->second);
        losses += isDenied ? 1 : 0;
      }
      EXPECT_EQ(walk.deemedGains.size(), naive.deemed.size());
      for (const auto& [row, amount] : walk.deemedGains) {
        EXPECT_EQ(exactOf(amount), naive.deemed.at(row));
      }
      deemed += static_cast<int>(naive.deemed.size());
      for (const auto& [row, cost] : naive.costAfter) {
        EXPECT_EQ(exactOf(walk.poolsAfter[row].cost), cost) << row;
      }
    }
  });
  EXPECT_GT(losses, 0);
  EXPECT_GT(deemed, 0);
}

// ── Returns ──

std::vector<ValuationDay> investedDays(std::mt19937_64& random) {
  std::vector<ValuationDay> days{{{2020, 1, 1}, 1000 + drawn(random, 9000)}};
  for (int i = 0; i < 60; ++i) {
    ValuationDay next{daysAfter(days.back().day, 1 + drawn(random, 3))};
    next.inflow = drawn(random, 5) == 0 ? drawn(random, 4000) : 0;
    const Decimal grown = (days.back().value + next.inflow) * (900 + drawn(random, 210)) / 1000;
    next.value = rounded(grown, 2, RoundingMode::bankers);
    next.outflow =
        drawn(random, 6) == 0 ? rounded(next.value / 5, 2, RoundingMode::bankers) : Decimal();
    next.value -= next.outflow;
    days.push_back(next);
  }
  return days;
}

TEST(NaiveReports, TimeWeightedReturnIsAProductOfFractions) {
  forRandomCases(60, [](std::mt19937_64& random) {
    const std::vector<ValuationDay> days = investedDays(random);
    Exact growth = 1;
    for (std::size_t i = 1; i < days.size(); ++i) {
      const Exact flow = exactOf(days[i].inflow) - exactOf(days[i].outflow);
      const Exact none;
      growth *= (exactOf(days[i].value) + std::max(Exact(-flow), none)) /
                (exactOf(days[i - 1].value) + std::max(flow, none));
    }
    EXPECT_NEAR(timeWeightedReturn(days).total.value(), doubleOf(growth - 1),
                1e-12 * doubleOf(growth));
  });
}

/// Polynomials that are made of their roots: a year's growths of a whole number of percents.
TEST(NaiveReports, MoneyWeightedReturnFindsTheRootsOfItsPolynomial) {
  forRandomCases(100, [](std::mt19937_64& random) {
    std::set<long> roots;
    for (long i = drawn(random, 3) + 1; i > 0; --i) {
      roots.insert(50 + 30 * drawn(random, 8));
    }
    std::vector<Exact> coefficients{Exact(-1000)};
    for (const long root : roots) {
      std::vector<Exact> next(coefficients.size() + 1);
      for (std::size_t i = 0; i < coefficients.size(); ++i) {
        next[i] += coefficients[i];
        next[i + 1] -= coefficients[i] * Exact(root, 100);
      }
      coefficients = next;
    }
    std::vector<OwnersPayment> payments;
    for (std::size_t i = 0; i < coefficients.size(); ++i) {
      payments.push_back({daysAfter({2001, 1, 1}, static_cast<std::int64_t>(i) * 365),
                          Decimal::fromDouble(doubleOf(coefficients[i]))});
    }
    const long expected = *std::next(roots.begin(), drawn(random, static_cast<long>(roots.size())));
    const double years = static_cast<double>(roots.size());
    const MoneyWeightedReturn found =
        moneyWeightedReturn(payments, std::pow(static_cast<double>(expected) / 100, years) - 1);
    ASSERT_TRUE(found.period);
    EXPECT_NEAR(std::pow(1 + *found.period, 1 / years), static_cast<double>(expected) / 100, 1e-6)
        << "the one nearest to what is expected";
    std::vector<double> growths{*found.period};
    growths.insert(growths.end(), found.otherPeriods.begin(), found.otherPeriods.end());
    std::ranges::sort(growths);
    ASSERT_EQ(growths.size(), roots.size());
    auto root = roots.begin();
    for (const double growth : growths) {
      EXPECT_NEAR(std::pow(1 + growth, 1 / years), static_cast<double>(*root++) / 100, 1e-6);
    }
  });
}

/// Whoever asks for the nearest rate alone gets the first of all: of purchases and sales in any
/// order, from an expectation that may be far off.
TEST(NaiveReports, TheNearestRateIsTheFirstOfAll) {
  int several = 0;
  forRandomCases(600, [&](std::mt19937_64& random) {
    std::vector<OwnersPayment> payments;
    YearMonthDay day{2015, 3, 1};
    const long count = drawn(random, 40) + 2;
    for (long i = 0; i < count; ++i, day = daysAfter(day, drawn(random, 120) + 1)) {
      payments.push_back({day, drawn(random, 10'000) - 5000});
    }
    const double expected = std::exp(static_cast<double>(drawn(random, 1200) - 600) / 100) - 1;
    const MoneyWeightedReturn all = moneyWeightedReturn(payments, expected);
    const MoneyWeightedReturn one = moneyWeightedReturn(payments, expected, RatesWanted::nearest);
    EXPECT_EQ(one.outcome, all.outcome);
    ASSERT_EQ(one.period.has_value(), all.period.has_value());
    if (one.period) {
      EXPECT_NEAR(*one.period, *all.period, 1e-9 * (1 + *all.period));
    }
    several += all.otherPeriods.empty() ? 0 : 1;
  });
  EXPECT_GT(several, 10);
}

/// Discounted to the first day and halved, the way a textbook does it.
TEST(NaiveReports, MoneyWeightedReturnIsWhatHalvingGives) {
  forRandomCases(60, [](std::mt19937_64& random) {
    std::vector<OwnersPayment> payments;
    YearMonthDay day{2015, 3, 1};
    const long count = drawn(random, 30) + 2;
    for (long i = 0; i < count; ++i, day = daysAfter(day, drawn(random, 90) + 1)) {
      payments.push_back({day, i < count / 2 ? -drawn(random, 5000) - 1 : drawn(random, 5000) + 1});
    }
    const auto worth = [&](long double rate) {
      long double sum = 0;
      for (const OwnersPayment& payment : payments) {
        sum += payment.amount.doubleValue() /
               std::pow(1 + rate, daysBetween(payments.front().day, payment.day) / 365.0L);
      }
      return sum;
    };
    long double low = -0.999999999L;
    long double high = 1e12L;
    for (int i = 0; i < 300; ++i) {
      const long double middle = std::sqrt((1 + low) * (1 + high)) - 1;
      (worth(middle) > 0 ? low : high) = middle;
    }
    const MoneyWeightedReturn found = moneyWeightedReturn(payments, 0);
    if (worth(-0.99L) > 0 && worth(1e6L) < 0) {
      EXPECT_TRUE(found.otherPeriods.empty()) << "payments in come before payments out";
      EXPECT_NEAR((1 + annualised(found.period.value(), found.days)) / static_cast<double>(1 + low),
                  1, 1e-6);
    }
  });
}

TEST(NaiveReports, FallsAreThoseOfEveryPairOfDays) {
  forRandomCases(100, [](std::mt19937_64& random) {
    std::vector<double> index{1};
    std::vector<YearMonthDay> days{{2020, 1, 1}};
    for (int i = 0; i < 50; ++i) {
      index.push_back(index.back() * (0.9 + 0.02 * static_cast<double>(drawn(random, 11))));
      days.push_back(daysAfter(days.back(), 1 + drawn(random, 4)));
    }
    double deepest = 0;
    int longest = 0;
    for (std::size_t from = 0; from < index.size(); ++from) {
      bool isUnderWater = false;
      for (std::size_t to = from + 1; to < index.size(); ++to) {
        deepest = std::max(deepest, 1 - index[to] / index[from]);
        const bool hasEnded = index[to] >= index[from];
        isUnderWater |= !hasEnded;
        if (isUnderWater && (hasEnded || to + 1 == index.size())) {
          longest = std::max(longest, daysBetween(days[from], days[to]));
        }
        if (hasEnded) {
          break;
        }
      }
    }
    const auto found = drawdownsOf(index, days);
    ASSERT_EQ(found.has_value(), deepest > 0);
    if (found) {
      EXPECT_NEAR(found->deepest.size, deepest, 1e-12);
      EXPECT_NEAR(1 - index[found->deepest.trough] / index[found->deepest.peak], deepest, 1e-12);
      EXPECT_EQ(daysBetween(days[found->longest.peak],
                            days[found->longest.recovered.value_or(days.size() - 1)]),
                longest);
    }
  });
}

TEST(NaiveReports, VolatilityIsTheDeviationOfLogarithms) {
  forRandomCases(30, [](std::mt19937_64& random) {
    std::vector<double> returns;
    for (long i = drawn(random, 200) + 2; i > 0; --i) {
      returns.push_back(static_cast<double>(drawn(random, 200) - 95) / 1000);
    }
    // The mean of all squared differences of pairs is twice the variance.
    long double squares = 0;
    for (const double left : returns) {
      for (const double right : returns) {
        squares += std::pow(std::log(1.0L + left) - std::log(1.0L + right), 2.0L);
      }
    }
    const auto count = static_cast<long double>(returns.size());
    const long double deviation = std::sqrt(squares / 2 / count / (count - 1));
    const Volatility found = volatilityOf(returns, 100);
    EXPECT_NEAR(found.daily, static_cast<double>(deviation), 1e-12);
    EXPECT_NEAR(found.annual(), static_cast<double>(deviation * std::sqrt(count * 3.65L)), 1e-11);
  });
}

/// Whoever buys more shares for each dividend has this index.
TEST(NaiveReports, BenchmarkIsWhatReinvestingGives) {
  forRandomCases(50, [](std::mt19937_64& random) {
    std::vector<PriceLine::Close> closes;
    std::vector<ShareDividend> dividends;
    Exact shares = 1;
    std::vector<Exact> worth;
    YearMonthDay day{2020, 1, 1};
    for (int i = 0; i < 30; ++i, day = daysAfter(day, 1 + drawn(random, 3))) {
      const Decimal price =
          Decimal::fromParts(Sign::plus, -2, static_cast<unsigned long>(drawn(random, 9000) + 100));
      closes.push_back({day, price});
      if (i > 0 && drawn(random, 4) == 0) {
        const Decimal paid =
            Decimal::fromParts(Sign::plus, -2, static_cast<unsigned long>(drawn(random, 300) + 1));
        dividends.push_back({day, paid});
        shares *= 1 + exactOf(paid) / exactOf(price);
      }
      worth.push_back(shares * exactOf(price));
    }
    const std::vector<double> index = totalReturnIndex(closes, dividends);
    ASSERT_EQ(index.size(), worth.size());
    for (std::size_t i = 0; i < index.size(); ++i) {
      EXPECT_NEAR(index[i], doubleOf(worth[i] / worth[0]), 1e-12 * (1 + index[i]));
    }
  });
}

// ── Income ──

/// Each payment of the last twelve months once more, unless half or more of all those of three
/// years are less than a third of it.
TEST(NaiveReports, ProjectionPlacesEachPaymentAYearLater) {
  int special = 0;
  int stopped = 0;
  forRandomCases(200, [&](std::mt19937_64& random) {
    const YearMonthDay today{2024, 6, 30};
    const long interval = 20 + drawn(random, 160);
    std::vector<SharePayment> payments;
    for (YearMonthDay day = daysAfter(today, -1500 - drawn(random, 90));
         day <= daysAfter(today, -drawn(random, 250)); day = daysAfter(day, interval)) {
      payments.push_back(
          {day, Decimal::fromParts(Sign::plus, -2,
                                   static_cast<unsigned long>(
                                       drawn(random, 12) == 0 ? 900 : 90 + drawn(random, 20)))});
    }
    const Decimal rate = dec("1.37");
    const auto isRecent = [&](const SharePayment& payment) {
      return YearMonthDay{2021, 6, 30} < payment.day;
    };
    const long count = std::ranges::count_if(payments, isRecent);
    Exact sum;
    std::set<YearMonthDay> leftOut;
    for (const SharePayment& payment : payments) {
      if (payment.day <= YearMonthDay{2023, 6, 30}) {
        continue;
      }
      const long less = std::ranges::count_if(payments, [&](const SharePayment& other) {
        return isRecent(other) && other.amount * 3 < payment.amount;
      });
      const auto first = std::ranges::find_if(payments, isRecent);
      const bool hasStopped =
          count >= 2 && 2 * (count - 1) * daysBetween(payments.back().day, today) >
                            3 * daysBetween(first->day, payments.back().day);
      const bool isSpecial = count >= 3 && less * 2 >= count;
      if (hasStopped || isSpecial) {
        leftOut.insert(payment.day);
        (hasStopped ? stopped : special) += 1;
      } else {
        sum += inCents(exactOf(payment.amount) * 30 * exactOf(rate));
      }
    }
    const IncomeProjection found = projectedIncome(payments, today, {30, rate, Currency::cad()});
    EXPECT_EQ(exactOf(found.next12Months()), sum);
    std::set<YearMonthDay> told;
    for (const auto& left : found.leftOut) {
      told.insert(left.day);
    }
    EXPECT_EQ(told, leftOut);
  });
  EXPECT_GT(special, 0);
  EXPECT_GT(stopped, 0);
}

/// What a share of today was paid: of before a split of 1 into n the nth part.
TEST(NaiveReports, YieldOnCostCountsSharesOfToday) {
  forRandomCases(60, [](std::mt19937_64& random) {
    ReportWorld world;
    world.portfolio->usesCashAccounts = false;
    const YearMonthDay today{2021, 12, 31};
    std::vector<BasicTransaction> basics;
    struct Paid {
      YearMonthDay day;
      Exact ofOneShare;
    };
    std::vector<Paid> paid;
    Exact cost;
    long held = 0;
    for (int i = 0; i < 40; ++i) {
      const YearMonthDay on = daysAfter({2020, 6, 1}, i * 14);
      world.on(day(on.year, on.month, on.day));
      const long what = held == 0 ? 0 : drawn(random, 6);
      if (what < 2) {
        const long shares = drawn(random, 30) + 1;
        held += shares;
        cost += 10 * shares;
        basics.push_back(world.buy(std::to_string(shares), std::to_string(10 * shares)));
      } else if (what == 2 && held > 1) {
        const long shares = drawn(random, held - 1) + 1;
        cost = inCents(cost * (held - shares) / held);
        held -= shares;
        basics.push_back(world.sell(std::to_string(shares), std::to_string(12 * shares)));
      } else if (what == 3 && held < 1'000'000) {
        basics.push_back(world.split(std::to_string(held), std::to_string(held * 3)));
        held *= 3;
        for (Paid& before : paid) {
          before.ofOneShare /= 3;
        }
      } else {
        const long amount = drawn(random, 50) + 1;
        basics.push_back(
            world.yield(BasicTransaction::YieldType::dividend, std::to_string(amount)));
        paid.push_back({on, Exact(amount, held)});
      }
    }
    world.record(basics);
    Exact sum;
    for (const Paid& each : paid) {
      sum += YearMonthDay{2020, 12, 31} < each.day ? each.ofOneShare * held : Exact(0);
    }
    const auto lines = equityIncomes(*world.portfolio, today, world.calendar,
                                     [](const Currency&) { return std::optional<Decimal>(); });
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(exactOf(lines[0].costBase), cost);
    EXPECT_NEAR(lines[0].lastYear.doubleValue(), doubleOf(sum), 1e-9);
    ASSERT_EQ(lines[0].yieldOnCost.has_value(), cost > 0);
    if (cost > 0) {
      EXPECT_NEAR(lines[0].yieldOnCost.value(), doubleOf(sum / cost), 1e-12);
    }
  });
}

}  // namespace
}  // namespace corvane::testing
