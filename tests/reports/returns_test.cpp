// Rules of returns that no worked example shows, and laws that hold for every series.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <map>

#include "random_cases.h"
#include "reports/returns/money_weighted_return.h"
#include "reports/returns/risk_figures.h"
#include "reports/returns/time_weighted_return.h"
#include "reports/returns/total_return_index.h"
#include "reports/series/report_days.h"

namespace corvane::testing {
namespace {

constexpr YearMonthDay start{2020, 1, 1};

struct Told {
  long value;
  long in = 0;
  long out = 0;
};

std::vector<ValuationDay> daysOf(const std::vector<Told>& told) {
  std::vector<ValuationDay> days;
  for (const auto& [value, in, out] : told) {
    days.push_back({daysAfter(start, static_cast<std::int64_t>(days.size())), value, in, out});
  }
  return days;
}

TEST(TimeWeighted, BeginsAnewAfterADebt) {
  const TimeWeightedReturn found =
      timeWeightedReturn(daysOf({{1000}, {1100}, {-120}, {200, 400}, {220}}));
  ASSERT_TRUE(found.restart);
  EXPECT_EQ(found.restart->worth, -120);
  EXPECT_EQ(found.restart->worthOn, (YearMonthDay{2020, 1, 3}));
  EXPECT_EQ(found.restart->since, (YearMonthDay{2020, 1, 4}));
  // 400 paid into a debt of 120 are a capital of 280.
  EXPECT_NEAR(found.total.value(), 200.0 / 280 * 1.1 - 1, 1e-12);
}

TEST(TimeWeighted, MeasuresFromTheFirstToTheLastDayWithCapital) {
  const TimeWeightedReturn found =
      timeWeightedReturn(daysOf({{0}, {0}, {100, 100}, {110}, {0, 0, 121}, {0}, {0}}));
  EXPECT_NEAR(found.total.value(), 0.21, 1e-12);
  EXPECT_EQ(found.days.front().day, (YearMonthDay{2020, 1, 2}));
  EXPECT_EQ(found.days.back().day, (YearMonthDay{2020, 1, 5}));
  EXPECT_FALSE(timeWeightedReturn(daysOf({{0}, {0}})).total);
}

TEST(TimeWeighted, MeasuresWhatIsBoughtAndSoldOnOneDay) {
  EXPECT_NEAR(timeWeightedReturn(daysOf({{0}, {0, 1000, 990}, {0}})).total.value(), -0.01, 1e-12);
  EXPECT_NEAR(timeWeightedReturn(daysOf({{0}, {0, 1000, 1010}, {0}})).total.value(), 0.01, 1e-12);
}

/// Sold out for 100, a dividend of 5 follows.
TEST(TimeWeighted, CountsLateIncomeOnTheLastDayHeld) {
  EXPECT_NEAR(timeWeightedReturn(daysOf({{100}, {0, 0, 100}, {0}, {0, 0, 5}})).total.value(), 0.05,
              1e-12);
  EXPECT_TRUE(timeWeightedReturn(daysOf({{0}, {5}, {5}})).hasGainWithoutCapital);
}

TEST(TimeWeighted, HasAFigureAYearOnlyAboveAYear) {
  std::vector<ValuationDay> days = daysOf({{100}, {110}});
  days.back().day = daysAfter(start, 366);
  EXPECT_FALSE(timeWeightedReturn(days).annual());
  days.back().day = daysAfter(start, 367);
  EXPECT_NEAR(timeWeightedReturn(days).annual().value(), std::pow(1.1, 365.0 / 367) - 1, 1e-12);
}

/// A portfolio that moves by up to a tenth a day, with flows now and then.
std::vector<ValuationDay> randomDays(std::mt19937_64& random, int count) {
  const auto below = [&](long most) {
    return static_cast<long>(random() % static_cast<unsigned>(most));
  };
  std::vector<ValuationDay> days{{start, Decimal(below(2) * 100'000)}};
  for (int i = 1; i < count; ++i) {
    Decimal in = below(10) == 0 || days.back().value.isZero() ? 1000 + below(50'000) : 0;
    const Decimal invested = days.back().value + in;
    Decimal worth = rounded(invested * (950 + below(110)) / 1000, 2, RoundingMode::bankers);
    Decimal out = below(15) == 0 ? rounded(worth / 3, 2, RoundingMode::bankers) : Decimal();
    if (below(60) == 0) {
      out = worth;
    }
    days.push_back({daysAfter(days.back().day, 1 + below(3)), worth - out, in, out});
  }
  return days;
}

/// The definition once more, in long doubles and without any chain.
long double naiveGrowth(const std::vector<ValuationDay>& days) {
  long double growth = 1;
  for (std::size_t i = 1; i < days.size(); ++i) {
    const long double flow = (days[i].inflow - days[i].outflow).doubleValue();
    long double base = days[i - 1].value.doubleValue() + std::max(flow, 0.0L);
    long double top = days[i].value.doubleValue() + std::max(-flow, 0.0L);
    if ((base == 0 && days[i].inflow > 0) || (top == 0 && days[i].outflow > 0)) {
      base = (days[i - 1].value + days[i].inflow).doubleValue();
      top = (days[i].value + days[i].outflow).doubleValue();
    }
    growth *= base > 0 ? top / base : 1;
  }
  return growth;
}

TEST(ReturnsProperty, PeriodsLinkAndRatesSolve) {
  forRandomCases(300, [](std::mt19937_64& random) {
    const std::vector<ValuationDay> days = randomDays(random, 3 + static_cast<int>(random() % 200));
    const TimeWeightedReturn whole = timeWeightedReturn(days);
    const double total = whole.total.value_or(0);
    EXPECT_NEAR(1 + total, static_cast<double>(naiveGrowth(days)), 1e-9 * (1 + total));

    // Cut anywhere, the two parts link to the whole: the last day of one is the base of the next.
    const std::size_t cut = 1 + random() % (days.size() - 1);
    const std::span<const ValuationDay> all(days);
    EXPECT_NEAR((1 + timeWeightedReturn(all.first(cut)).total.value_or(0)) *
                    (1 + timeWeightedReturn(all.subspan(cut - 1)).total.value_or(0)),
                1 + total, 1e-9 * (1 + total));
    for (const auto& periods : {monthlyReturns(whole), yearlyReturns(whole)}) {
      double linked = 1;
      for (const PeriodReturn& period : periods) {
        linked *= 1 + period.value;
      }
      EXPECT_NEAR(linked, 1 + total, 1e-9 * (1 + total));
    }

    const std::vector<OwnersPayment> payments = ownersPayments(days);
    const MoneyWeightedReturn found = moneyWeightedReturn(payments, total);
    if (found.outcome != MoneyWeightedReturn::Outcome::rate) {
      return;
    }
    std::map<YearMonthDay, Decimal> byDay;
    for (const OwnersPayment& payment : payments) {
      byDay[payment.day] += payment.amount;
    }
    std::erase_if(byDay, [](const auto& day) { return day.second.isZero(); });
    const YearMonthDay last = byDay.rbegin()->first;
    std::vector<double> roots = found.otherPeriods;
    roots.push_back(found.period.value());
    for (const double root : roots) {
      long double balance = 0;
      long double size = 0;
      for (const auto& [day, amount] : byDay) {
        const double part = static_cast<double>(daysBetween(day, last)) / found.days;
        const long double grown =
            amount.doubleValue() * std::pow(1 + static_cast<long double>(root), part);
        balance += grown;
        size += std::abs(grown);
      }
      EXPECT_LT(std::abs(balance), 1e-9L * size) << root << " in " << found.days << " days";
    }
  });
}

TEST(MoneyWeighted, SaysWhyThereIsNoRate) {
  using Outcome = MoneyWeightedReturn::Outcome;
  const auto of = [](std::vector<long> amounts) {
    std::vector<OwnersPayment> payments;
    for (const long amount : amounts) {
      payments.push_back(
          {daysAfter(start, static_cast<std::int64_t>(payments.size()) * 365), amount});
    }
    return moneyWeightedReturn(payments, 0);
  };
  EXPECT_EQ(of({}).outcome, Outcome::nothingPaid);
  EXPECT_EQ(of({0, 0, 5}).outcome, Outcome::nothingPaid);
  EXPECT_EQ(of({-5, 0, 0}).period, -1);
  EXPECT_EQ(of({-5, 0, 0}).annual(), -1);
  EXPECT_EQ(of({-10, 24, -15}).outcome, Outcome::noRate);
  EXPECT_FALSE(of({-10, 24, -15}).period);
  // What stands at 0 at the end does not make it a total loss.
  EXPECT_NEAR(of({-100, 110, 0}).period.value(), 0.1, 1e-12);
  EXPECT_FALSE(of({-100, 110, 0}).annual()) << "a year is no more than 366 days";
}

TEST(Risk, LinksWeekendsIntoMondayAndWantsTwentyDays) {
  // 2020-01-03 is a Friday.
  std::vector<ValuationDay> days{{{2020, 1, 3}, 100}};
  for (int i = 1; i <= 28; ++i) {
    days.push_back({daysAfter(days.front().day, i), days.back().value + (i % 7 < 3 ? 2 : -1)});
  }
  const auto found = volatilityOf(timeWeightedReturn(days));
  ASSERT_TRUE(found);
  EXPECT_EQ(found->count, 20U);
  std::vector<double> weekdays;
  for (std::size_t i = 1; i < days.size(); ++i) {
    const double before = days[i - (i % 7 == 3 ? 3 : 1)].value.doubleValue();
    if (i % 7 != 1 && i % 7 != 2) {
      weekdays.push_back(days[i].value.doubleValue() / before - 1);
    }
  }
  EXPECT_NEAR(found->daily, volatilityOf(weekdays, 28).daily, 1e-12);
  days.pop_back();
  EXPECT_FALSE(volatilityOf(timeWeightedReturn(days)));
}

TEST(Risk, TellsDeepestAndLongestFallApart) {
  const std::vector<double> index{1, 1.2, 1.1, 1.15, 1.1, 1.2, 0.9, 1.3, 1.25};
  std::vector<YearMonthDay> days;
  for (std::size_t i = 0; i < index.size(); ++i) {
    days.push_back(daysAfter(start, static_cast<std::int64_t>(i)));
  }
  const Drawdowns found = drawdownsOf(index, days).value();
  EXPECT_NEAR(found.deepest.size, 0.25, 1e-12);
  EXPECT_EQ(found.deepest.peak, 5U);
  EXPECT_EQ(found.deepest.recovered, 7U);
  EXPECT_EQ(found.longest.peak, 1U);
  EXPECT_EQ(found.longest.recovered, 5U);
  EXPECT_FALSE(drawdownsOf(std::vector<double>{1, 1, 2}, std::span(days).first(3)));
}

TEST(Risk, KnowsWholeMonths) {
  std::vector<ValuationDay> days{{{2020, 1, 15}, 100},
                                 {{2020, 1, 31}, 110},
                                 {{2020, 2, 28}, 121},
                                 {{2020, 2, 29}, 121},
                                 {{2020, 3, 30}, 100}};
  const auto months = monthlyReturns(timeWeightedReturn(days));
  ASSERT_EQ(months.size(), 3U);
  EXPECT_EQ(months[0].first, (YearMonthDay{2020, 1, 16}));
  EXPECT_FALSE(months[0].isWhole);
  EXPECT_TRUE(months[1].isWhole);
  EXPECT_NEAR(months[1].value, 0.1, 1e-12);
  EXPECT_FALSE(months[2].isWhole);
}

TEST(Risk, HasAGridOfYearsAndTheBestAndTheWorstOfWholeMonths) {
  std::vector<ValuationDay> days{{{2020, 11, 20}, 100}, {{2020, 11, 30}, 150},
                                 {{2020, 12, 31}, 120}, {{2021, 1, 31}, 132},
                                 {{2021, 2, 28}, 66},   {{2021, 3, 2}, 33}};
  const TimeWeightedReturn returns = timeWeightedReturn(days);
  const auto grid = returnGrid(returns);
  ASSERT_EQ(grid.size(), 2U);
  EXPECT_EQ(grid[0].year, 2020);
  EXPECT_FALSE(grid[0].months[9]);
  EXPECT_NEAR(grid[0].months[10]->value, 0.5, 1e-12);
  EXPECT_NEAR(grid[0].whole.value, 0.2, 1e-12);
  EXPECT_NEAR(grid[1].months[1]->value, -0.5, 1e-12);
  EXPECT_FALSE(grid[1].months[3]);
  double linked = 1;
  for (const YearOfReturns& year : grid) {
    linked *= 1 + year.whole.value;
  }
  EXPECT_NEAR(linked - 1, *returns.total, 1e-12);
  const auto extremes = bestAndWorst(monthlyReturns(returns));
  ASSERT_TRUE(extremes);
  EXPECT_EQ(extremes->best.first, (YearMonthDay{2021, 1, 1})) << "November is a part of a month";
  EXPECT_EQ(extremes->worst.first, (YearMonthDay{2021, 2, 1}));
  EXPECT_FALSE(bestAndWorst(std::vector<PeriodReturn>{{start, start, 0.1, false}}));
}

TEST(Benchmark, IsMeasuredFromTheCloseBeforeTheRangeInTheCurrencyWanted) {
  const PriceLine rates{{{{2020, 1, 1}, 2}, {{2020, 1, 6}, 3}}, std::nullopt};
  const DividendHistory history{{{{{2020, 1, 2}, 10}, {{2020, 1, 7}, 11}}, std::nullopt},
                                {{{2020, 1, 4}, 1}}};
  EXPECT_NEAR(benchmarkReturn(history, nullptr, {2020, 1, 4}).value().total(), 0.2, 1e-12);
  EXPECT_NEAR(benchmarkReturn(history, &rates, {2020, 1, 4}).value().total(), 0.8, 1e-12);
  EXPECT_FALSE(benchmarkReturn(history, nullptr, {2020, 1, 2}));
}

/// A benchmark and a portfolio that holds nothing else swing alike.
TEST(Benchmark, HasTheRiskFiguresOfAPortfolio) {
  DividendHistory history;
  std::vector<ValuationDay> days;
  for (int i = 0; i < 60; ++i) {
    const YearMonthDay day = daysAfter({2020, 1, 1}, i);
    if (dayOfWeek(dayNumber(day)) < 5) {
      history.prices.closes.push_back({day, 100 + i * 37 % 11});
      days.push_back({day, 100 + i * 37 % 11});
    }
  }
  const TimeWeightedReturn held = timeWeightedReturn(days);
  const TimeWeightedReturn benchmark =
      benchmarkReturn(history, nullptr, {2020, 1, 2}).value().asReturns();
  EXPECT_NEAR(benchmark.total.value(), held.total.value(), 1e-12);
  EXPECT_NEAR(volatilityOf(benchmark).value().annual(), volatilityOf(held).value().annual(), 1e-9);
  EXPECT_NEAR(drawdownsOf(benchmark).value().deepest.size, drawdownsOf(held).value().deepest.size,
              1e-12);
}

}  // namespace
}  // namespace corvane::testing
