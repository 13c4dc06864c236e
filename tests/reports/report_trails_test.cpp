// Why returns, taxes and yields are what they are.

#include <tuple>

#include "random_cases.h"
#include "reports/report_world.h"
#include "reports/returns/money_weighted_return.h"
#include "reports/returns/time_weighted_return.h"
#include "reports/series/report_days.h"
#include "reports/trail/income_trails.h"
#include "reports/trail/returns_trails.h"
#include "reports/trail/tax_trails.h"
#include "reports/trail_checks.h"

namespace corvane::testing {
namespace {

using ::testing::HasSubstr;
using YieldType = BasicTransaction::YieldType;

/// As the screen shows it.
Decimal percentOnScreen(double value) {
  return rounded(Decimal::fromDouble(value * 100), 2, RoundingMode::bankers);
}

/// Days around a change of the year, with flows on some of them and all sold now and then.
std::vector<ValuationDay> randomDays(std::mt19937_64& random) {
  std::vector<ValuationDay> days{{{2020, 12, 1}, static_cast<long>(random() % 2) * 1000}};
  for (int i = 0; i < 60; ++i) {
    const Decimal before = days.back().value;
    ValuationDay next{daysAfter(days.back().day, 1 + static_cast<int>(random() % 3))};
    next.inflow = random() % 6 == 0 ? static_cast<long>(random() % 500) : 0;
    next.value = (before + next.inflow) * (950 + static_cast<long>(random() % 100)) / 1000;
    next.outflow = random() % 9 == 0 ? next.value : random() % 6 == 0 ? next.value / 4 : Decimal();
    next.value -= next.outflow;
    days.push_back(next);
  }
  return days;
}

TEST(ReportTrails, LeadToTheReturns) {
  int several = 0;
  forRandomCases(100, [&](std::mt19937_64& random) {
    const std::vector<ValuationDay> days = randomDays(random);
    const TimeWeightedReturn returns = timeWeightedReturn(days);
    for (const ReturnsDetail detail : {ReturnsDetail::stretches, ReturnsDetail::days}) {
      const auto trail = timeWeightedTrail(days, Currency::cad(), detail);
      ASSERT_EQ(trail.has_value(), returns.total.has_value());
      if (trail) {
        expectRecomputes(*trail);
        EXPECT_EQ(trail->value, percentOnScreen(*returns.total));
        const TrailNode* year = nodeNamed(*trail, "Growth in 2021");
        several += year != nullptr && year->children.size() > 1 ? 1 : 0;
      }
    }
    const auto money = moneyWeightedReturn(ownersPayments(days), returns.total.value_or(0));
    const auto trail = moneyWeightedTrail(days, Currency::cad());
    ASSERT_EQ(trail.has_value(), money.period.has_value());
    if (trail) {
      expectRecomputes(*trail);
      EXPECT_EQ(trail->value, percentOnScreen(*money.period));
      const TrailNode* left = nodeNamed(*trail, "What is left of all payments at the rate");
      EXPECT_TRUE(left == nullptr ? money.outcome == MoneyWeightedReturn::Outcome::totalLoss
                                  : left->value.isZero());
    }
  });
  EXPECT_GT(several, 0);
}

/// 1000 grow to 1100; 900 come in and all grow to 2200: 1.1 × 1.1.
TEST(ReportTrails, CutTheReturnAtItsFlows) {
  const std::vector<ValuationDay> days = {{{2021, 3, 1}, 1000},
                                          {{2021, 3, 2}, 1050},
                                          {{2021, 3, 3}, 1100},
                                          {{2021, 3, 4}, 2100, 900},
                                          {{2021, 3, 5}, 2200}};
  const auto trail = timeWeightedTrail(days, Currency::cad());
  EXPECT_EQ(trail->value, 21);
  const TrailNode* first = nodeNamed(*trail, "Growth from 2021-03-02 to 2021-03-03");
  const TrailNode* second = nodeNamed(*trail, "Growth from 2021-03-04 to 2021-03-05");
  ASSERT_TRUE(first != nullptr && second != nullptr);
  EXPECT_EQ(first->value, dec("1.1"));
  EXPECT_EQ(nodeNamed(*second, "Brought in")->value, 900);
  EXPECT_NE(nodeNamed(*timeWeightedTrail(days, Currency::cad(), ReturnsDetail::days),
                      "Growth from 2021-03-05"),
            nullptr);
}

/// Random rows in the user's portfolio, in one of somebody affiliated and in a registered one.
struct TaxedWorld : ReportWorld {
  const std::vector<PortfolioPointer> all{portfolio, manager->createPortfolio(Currency::cad()),
                                          manager->createPortfolio(Currency::cad())};
  const std::vector<TaxedPortfolio> taxed{
      {all[0]}, {all[1], TaxRole::affiliated, "Kim"}, {all[2], TaxRole::registered}};

  explicit TaxedWorld(std::mt19937_64& random) {
    std::map<std::size_t, long> held;
    for (const PortfolioPointer& each : all) {
      each->usesCashAccounts = false;
    }
    for (int i = 0; i < 60; ++i) {
      const std::size_t who = random() % 3;
      const std::string amount =
          std::to_string(random() % 1000 + 1) + ".0" + std::to_string(random() % 9 + 1);
      const long shares = 1 + static_cast<long>(random() % 9);
      BasicTransaction basic = buy(std::to_string(shares), amount);
      if (held[who] > shares && random() % 2 == 0) {
        basic = sell(std::to_string(shares), amount);
        held[who] -= shares;
      } else if (held[who] > 0 && random() % 7 == 0) {
        basic = yield(YieldType::returnOfCapital, amount);
      } else {
        held[who] += shares;
      }
      manager->recordTransactions({basic}, all[who], nullptr);
    }
  }

  /// The questions of each person under the rules of each country, about the days up to `last`.
  template <typename Check>
  void forQuestions(const YearMonthDay& last, Check check) {
    for (const TaxCountry country :
         {TaxCountry::none, TaxCountry::canada, TaxCountry::unitedKingdom}) {
      for (const char* person : {"", "Kim"}) {
        TaxYearQuestion question{{2021, 1, 1}, last, {2030, 1, 1}, person};
        question.country = country;
        check(question, taxYear(taxed, question, calendar));
      }
    }
  }
};

/// Trails of all disposals of random ledgers of three portfolios, by the rules of each country.
TEST(ReportTrails, LeadToTheTaxGains) {
  int denied = 0;
  forRandomCases(30, [&](std::mt19937_64& random) {
    TaxedWorld world(random);
    world.forQuestions({2021, 12, 31}, [&](const TaxYearQuestion& question, const TaxYear& year) {
      for (const TaxYear::Disposal& disposal : year.disposals) {
        const TrailNode trail = taxGainTrail(disposal, world.taxed, question, world.calendar);
        expectRecomputes(trail);
        EXPECT_EQ(trail.value, disposal.tax.taxGain);
        EXPECT_FALSE(trail.children.empty()) << trail.note;
        const TrailNode* part = nodeNamed(trail, "Denied");
        EXPECT_EQ(part == nullptr ? Decimal() : part->value, disposal.tax.superficial.denied);
        denied += part == nullptr ? 0 : 1;
      }
    });
  });
  EXPECT_GT(denied, 0);
}

/// Of what was sold, and of what is left at the end of a year in the midst of the rows.
TEST(ReportTrails, LeadToTheCostBasesOfATaxYear) {
  int told = 0;
  int withDeniedLosses = 0;
  int matched = 0;
  forRandomCases(30, [&](std::mt19937_64& random) {
    TaxedWorld world(random);
    const YearMonthDay last = daysAfter({2021, 3, 10}, static_cast<int>(random() % 50));
    world.forQuestions(last, [&](const TaxYearQuestion& question, const TaxYear& year) {
      for (const TaxYear::Disposal& disposal : year.disposals) {
        const TrailNode trail = taxCostTrail(disposal, world.taxed, question, world.calendar);
        expectRecomputes(trail);
        EXPECT_EQ(trail.value, rounded(disposal.tax.costDisposed, 2, RoundingMode::bankers));
      }
      for (const TaxYear::CostAtEnd& cost : year.costs) {
        const TrailNode trail = taxCostAtEndTrail(cost, world.taxed, question, world.calendar);
        expectRecomputes(trail);
        EXPECT_EQ(trail.value, rounded(cost.pool.cost, 2, RoundingMode::bankers));
        if (cost.pool.cost > 0) {
          EXPECT_FALSE(trail.children.empty()) << trail.label;
          ++told;
        }
        withDeniedLosses += nodeNamed(trail, "Cost base with a denied loss") == nullptr ? 0 : 1;
        matched +=
            nodeNamed(trail, "Matched with a sale of up to 30 days before") == nullptr ? 0 : 1;
      }
    });
  });
  EXPECT_GT(told, 50);
  EXPECT_GT(withDeniedLosses, 0);
  EXPECT_GT(matched, 0);
}

/// Of 15 bought on two rows of a day for 300, sales take 3 on the same day and 4 before it: 8 enter
/// the pool for 160.
TEST(ReportTrails, TellWhatSalesHaveTakenOfAPurchase) {
  ReportWorld world;
  world.portfolio->usesCashAccounts = false;
  world.record(
      {world.on(day(2021, 1, 4)).buy("10", "100"), world.on(day(2021, 6, 1)).sell("4", "90"),
       world.on(day(2021, 6, 20)).buy("5", "120"), world.on(day(2021, 6, 20)).buy("10", "180"),
       world.on(day(2021, 6, 20)).sell("3", "80"), world.on(day(2021, 7, 1)).split("18", "36"),
       world.on(day(2021, 9, 1)).sell("9", "200")});
  const std::vector<TaxedPortfolio> taxed{{world.portfolio}};
  TaxYearQuestion question{{2021, 1, 1}, {2021, 8, 31}, {2030, 1, 1}};
  question.country = TaxCountry::unitedKingdom;
  const TaxYear year = taxYear(taxed, question, world.calendar);
  ASSERT_EQ(year.costs.size(), 1U);
  const TrailNode trail = taxCostAtEndTrail(year.costs.front(), taxed, question, world.calendar);
  expectRecomputes(trail);
  EXPECT_EQ(trail.value, 260);
  EXPECT_EQ(nodeNamed(trail, "Cost of all bought on 2021-06-20")->children.size(), 2U);
  EXPECT_EQ(nodeNamed(trail, "Shares that enter the pool")->value, 8);
  EXPECT_EQ(nodeNamed(trail, "Cost of the shares that enter the pool")->value, 160);
  const TrailNode* sameDay = nodeNamed(trail, "Matched with a sale of the same day");
  const TrailNode* before = nodeNamed(trail, "Matched with a sale of up to 30 days before");
  ASSERT_TRUE(sameDay != nullptr && before != nullptr);
  EXPECT_EQ(std::tuple(sameDay->value, sameDay->row->position), std::tuple(Decimal(3), 4U));
  EXPECT_EQ(std::tuple(before->value, before->row->position), std::tuple(Decimal(4), 1U));

  question.last = {2021, 12, 31};
  const TaxYear whole = taxYear(taxed, question, world.calendar);
  const TrailNode sale = taxGainTrail(whole.disposals.back(), taxed, question, world.calendar);
  EXPECT_EQ(sale.value, 200 - 65) << "a quarter of the pool";
  EXPECT_NE(nodeNamed(sale, "Matched with a sale of the same day"), nullptr)
      << "the pool before a sale is told by its rows as well";
}

/// A line that was worked out before an edit is explained by its own row, wherever that stands, and
/// never by what has become of the ledger.
TEST(ReportTrails, ExplainNoLineOfAnOlderLedgerByTheNewOne) {
  for (const TaxCountry country : {TaxCountry::canada, TaxCountry::unitedKingdom}) {
    ReportWorld world;
    world.portfolio->usesCashAccounts = false;
    world.record({world.on(day(2021, 1, 4)).buy("10", "100"),
                  world.on(day(2021, 6, 1)).sell("2", "50"),
                  world.on(day(2021, 7, 1)).sell("2", "60")});
    const std::vector<TaxedPortfolio> taxed{{world.portfolio}};
    TaxYearQuestion question{{2021, 1, 1}, {2021, 12, 31}, {2030, 1, 1}};
    question.country = country;
    const TaxYear year = taxYear(taxed, question, world.calendar);
    const auto gains = [&] {
      std::vector<TrailNode> made;
      for (const TaxYear::Disposal& line : year.disposals) {
        made.push_back(taxGainTrail(line, taxed, question, world.calendar));
        made.push_back(taxCostTrail(line, taxed, question, world.calendar));
      }
      made.push_back(taxCostAtEndTrail(year.costs.front(), taxed, question, world.calendar));
      return made;
    };
    const std::vector<TrailNode> asShown = gains();
    ASSERT_EQ(asShown.size(), 5U);

    // A row of another equity before them moves all rows by one.
    world.on(day(2021, 2, 1));
    world.record({world.buyOf(world.xyz, "1", "10", "12")});
    for (const TrailNode& trail : gains()) {
      EXPECT_FALSE(trail.children.empty()) << trail.label << ": " << trail.note;
    }
    EXPECT_EQ(nodeNamed(gains().front(), "Proceeds")->row->position, 2U);

    // Another purchase changes the figures of all lines.
    world.record({world.on(day(2021, 3, 1)).buy("10", "300")});
    const std::vector<TrailNode> after = gains();
    for (std::size_t i = 0; i < after.size(); ++i) {
      EXPECT_EQ(after[i].value, asShown[i].value);
      EXPECT_EQ(after[i].label, asShown[i].label);
      EXPECT_TRUE(after[i].children.empty());
      EXPECT_THAT(after[i].note, HasSubstr("has changed")) << after[i].label;
    }
  }
}

TEST(ReportTrails, NameEachPurchaseAndHoldingOfADeniedLoss) {
  ReportWorld world;
  const PortfolioPointer plan = world.manager->createPortfolio(Currency::cad());
  plan->name = "Plan";
  plan->usesCashAccounts = world.portfolio->usesCashAccounts = false;
  world.record(
      {world.on(day(2021, 1, 4)).buy("10", "100"), world.on(day(2021, 6, 1)).sell("10", "70")});
  world.manager->recordTransactions({world.on(day(2021, 6, 9)).buy("4", "30")}, plan, nullptr);
  const std::vector<TaxedPortfolio> taxed{{world.portfolio}, {plan, TaxRole::registered}};
  const TaxYearQuestion question{{2021, 1, 1}, {2021, 12, 31}, {2030, 1, 1}};
  const TaxYear year = taxYear(taxed, question, world.calendar);
  const TrailNode trail = taxGainTrail(year.disposals.front(), taxed, question, world.calendar);
  EXPECT_EQ(trail.value, -18);
  EXPECT_EQ(nodeNamed(trail, "Bought")->source, "row 1 of “Plan”, registered");
  EXPECT_EQ(nodeNamed(trail, "Held by Plan")->value, 4);
  EXPECT_EQ(nodeNamed(trail, "Shares that count")->value, 4);
  EXPECT_THAT(nodeNamed(trail, "Denied")->note, HasSubstr("added to Plan 12 (lost)"));
}

TEST(ReportTrails, LeadToYieldsAndToWhatIsExpected) {
  ReportWorld world;
  world.abc->recentPrice = dec("7.5");
  world.record({world.on(day(2020, 1, 6)).deposit("1000"), world.buy("30", "301"),
                world.on(day(2020, 2, 3)).yield(YieldType::dividend, "5"),
                world.on(day(2020, 6, 1)).yield(YieldType::dividend, "7"),
                world.on(day(2020, 9, 1)).split("30", "90"),
                world.on(day(2020, 12, 1)).yield(YieldType::dividend, "11"),
                world.on(day(2020, 12, 2)).yield(YieldType::returnOfCapital, "2"),
                world.on(day(2020, 12, 3)).sell("20", "150")});
  const YearMonthDay today{2021, 2, 4};
  DividendCalendar told;
  told.payments[world.abc] = {{{2020, 6, 1}, dec("0.07")},
                              {{2020, 9, 1}, dec("0.07")},
                              {{2020, 12, 1}, dec("0.7")},
                              {{2021, 3, 1}, dec("0.08")}};
  const std::vector<PortfolioPointer> portfolios{world.portfolio};
  const auto expected = expectedIncomes(portfolios, today, world.calendar, {}, told);
  ASSERT_EQ(expected.size(), 1U);
  const EquityIncome& line = expected.front().line;

  const auto onCost = yieldOnCostTrail(*world.portfolio, world.abc, today, world.calendar);
  const auto onValue = yieldOnValueTrail(*world.portfolio, world.abc, 1, today, world.calendar);
  const auto projected = projectionTrail(expected.front());
  for (const auto* trail : {&onCost, &onValue, &projected}) {
    ASSERT_TRUE(trail->has_value());
    expectRecomputes(**trail);
  }
  EXPECT_EQ(onCost->value, percentOnScreen(line.yieldOnCost.value()));
  EXPECT_EQ(onValue->value, percentOnScreen(line.yieldOnValue.value()));
  EXPECT_EQ(nodeNamed(*onCost, "Paid per share in the last 12 months")->children.size(), 2U)
      << "February of the year before is more than 12 months ago";
  EXPECT_EQ(projected->value, expected.front().projection.next12Months());
  EXPECT_NE(nodeNamed(*projected, "Declared for 2021-03-01"), nullptr);
  EXPECT_THAT(nodeNamed(*projected, "Left out: 0.7 a share")->note, HasSubstr("special"));
}

}  // namespace
}  // namespace corvane::testing
