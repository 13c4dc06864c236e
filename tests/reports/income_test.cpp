// What equities are expected to pay.

#include "reports/income/income_projection.h"

#include <gmock/gmock.h>

#include <map>

#include "reports/income/income_report.h"
#include "reports/report_cases.h"
#include "reports/report_world.h"
#include "reports/series/report_days.h"

namespace corvane::testing {
namespace {

using ::testing::ElementsAre;

void checkProjection(const ReportCase& made) {
  std::vector<SharePayment> payments;
  for (const JSONValue& event : made.inputs.at("events").array()) {
    payments.push_back({dayOf(event.array()[0]), amountOf(event.array()[1])});
  }
  std::vector<ShareSplit> splits;
  if (const JSONValue* told = fieldOf(made.inputs, "splits")) {
    for (const JSONValue& split : told->array()) {
      const std::string& ratio = split.array()[1].string();
      const std::size_t colon = ratio.find(':');
      splits.push_back(
          {dayOf(split.array()[0]), dec(ratio.substr(0, colon)), dec(ratio.substr(colon + 1))});
    }
  }
  const IncomeProjection found = projectedIncome(
      restatedForSplits(payments, splits), dayOf(made.inputs.at("today")),
      {amountOf(made.inputs.at("sharesNow")), amountOf(made.inputs.at("rate")), Currency::cad()});
  for (const auto& [name, value] : made.expected.object()) {
    SCOPED_TRACE(name);
    if (name == "next12Months") {
      EXPECT_EQ(found.next12Months(), amountOf(value));
    } else if (name == "months") {
      std::map<std::string, Decimal> months;
      for (const IncomeProjection::Payment& payment : found.payments) {
        months[isoText(payment.day).substr(0, 7)] += payment.amount;
      }
      EXPECT_EQ(months.size(), value.object().size());
      for (const auto& [month, amount] : value.object()) {
        EXPECT_EQ(months[month], amountOf(amount)) << month;
      }
    } else if (name == "leftOut") {
      EXPECT_EQ(found.leftOut.size(), value.array().size());
      for (std::size_t i = 0; i < std::min(found.leftOut.size(), value.array().size()); ++i) {
        const auto& expected = value.array()[i].array();
        EXPECT_EQ(found.leftOut[i].day, dayOf(expected[0]));
        EXPECT_EQ(found.leftOut[i].perShare, amountOf(expected[1]));
        EXPECT_EQ(found.leftOut[i].reason, expected[2].string());
      }
    } else {
      ADD_FAILURE() << "a figure that this test does not know";
    }
  }
}

TEST(ReportCases, Income) {
  forReportCases("income", [](const ReportCase& made) {
    if (fieldOf(made.inputs, "events") != nullptr) {
      checkProjection(made);
      return true;
    }
    if (const JSONValue* payments = fieldOf(made.inputs, "payments")) {
      std::vector<YearMonthDay> days;
      for (const JSONValue& day : payments->array()) {
        days.push_back(dayOf(day));
      }
      const std::string& told = made.expected.at("periodicity").string();
      const bool isHalfYearly = told.starts_with("semi") || told == "halfYearly";
      EXPECT_EQ(displayName(rhythmOf(days)), isHalfYearly ? "half-yearly" : told);
      return true;
    }
    const Decimal cost = amountOf(made.inputs.at("costPerShare"));
    const JSONValue& expected = made.expected.at("yieldOnCost");
    if (const JSONValue* yearly = fieldOf(made.inputs, "annualDividends")) {
      for (std::size_t i = 0; i < yearly->array().size(); ++i) {
        const Decimal paid = amountOf(yearly->array()[i]);
        EXPECT_NEAR(yieldOn(cost * 7, 7, {&paid, 1}).value(),
                    numberOf(isArray(expected) ? expected.array()[i] : expected), made.tolerance);
      }
      return true;
    }
    std::vector<Decimal> paid;
    for (const JSONValue& amount : made.inputs.at("perShare").array()) {
      paid.push_back(amountOf(amount));
    }
    EXPECT_NEAR(yieldOn(cost, 1, paid).value(), numberOf(expected), made.tolerance);
    return true;
  });
}

TEST(IncomeProjections, LetWhatIsDeclaredTakeThePlaceOfItsEstimate) {
  const YearMonthDay today{2024, 6, 30};
  const std::vector<SharePayment> payments{{{2023, 8, 10}, 1}, {{2023, 11, 10}, 1},
                                           {{2024, 2, 29}, 1}, {{2024, 5, 10}, 1},
                                           {{2024, 8, 2}, 2},  {{2025, 7, 1}, 9}};
  const IncomeProjection found = projectedIncome(payments, today, {10, 1, Currency::cad()});
  std::vector<std::string> told;
  for (const auto& payment : found.payments) {
    told.push_back(isoText(payment.day) + " " + payment.amount.description() +
                   (payment.isDeclared ? " declared" : ""));
  }
  EXPECT_THAT(told, ElementsAre("2024-08-02 20 declared", "2024-11-10 10", "2025-02-28 10",
                                "2025-05-10 10"));
  EXPECT_EQ(found.rhythm, PaymentRhythm::quarterly);
}

TEST(IncomeProjections, LeaveOutWhatHasStopped) {
  const std::vector<SharePayment> payments{
      {{2023, 7, 10}, 1}, {{2023, 8, 10}, 1}, {{2023, 9, 10}, 1}};
  EXPECT_EQ(projectedIncome(payments, {2023, 10, 26}, {10, 1, Currency::cad()}).payments.size(),
            3U);
  const IncomeProjection stopped =
      projectedIncome(payments, {2023, 10, 27}, {10, 1, Currency::cad()});
  EXPECT_EQ(stopped.next12Months(), 0);
  EXPECT_EQ(stopped.leftOut.at(2).reason, "stopped: no payment since 2023-09-10");
  EXPECT_FALSE(yieldOn(0, 10, {}));
}

/// 10 shares are paid 8 and 5, become 20, and 10 of these are sold.
TEST(IncomeReport, TakesPaymentsToTheSharesOfToday) {
  ReportWorld world;
  world.portfolio->usesCashAccounts = false;
  using enum BasicTransaction::YieldType;
  world.record(
      {world.on(day(2020, 5, 1)).buy("10", "200"), world.on(day(2020, 6, 30)).yield(dividend, "8"),
       world.on(day(2020, 9, 1)).yield(reinvestedDistribution, "5"),
       world.yield(returnOfCapital, "9"), world.split("10", "20"), world.sell("10", "50")});
  world.abc->recentPrice = 4;
  const auto noRate = [](const Currency&) { return std::optional<Decimal>(); };
  const auto lines = equityIncomes(*world.portfolio, {2021, 6, 29}, world.calendar, noRate);
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_EQ(lines[0].shares, 10);
  EXPECT_EQ(lines[0].costBase, 98);
  EXPECT_EQ(lines[0].lastYear, dec("6.5")) << "0.4 and 0.25 on 10 shares";
  EXPECT_NEAR(lines[0].yieldOnCost.value(), 6.5 / 98, 1e-12);
  EXPECT_NEAR(lines[0].yieldOnValue.value(), 6.5 / 40, 1e-12);
  EXPECT_FALSE(lines[0].isSoFar);
  EXPECT_EQ(lines[0].payments.front().amount, dec("0.4"));

  const auto later = equityIncomes(*world.portfolio, {2021, 6, 30}, world.calendar, noRate);
  EXPECT_EQ(later[0].lastYear, dec("2.5")) << "a year is over with its day";
  EXPECT_TRUE(equityIncomes(*world.portfolio, {2020, 12, 31}, world.calendar, noRate)[0].isSoFar);
  EXPECT_EQ(recordedIncome(*world.portfolio, world.calendar).size(), 2U);
  EXPECT_EQ(recordedIncome(*world.portfolio, world.calendar, true).size(), 3U);

  world.abc->currency = Currency::usd();
  EXPECT_FALSE(
      equityIncomes(*world.portfolio, {2021, 6, 29}, world.calendar, noRate)[0].yieldOnValue);
}

/// A year that is not over stands beside the same months of the last one, which is whole itself.
TEST(IncomeReport, ComparesAPartOfAYearWithTheSameMonths) {
  ReportWorld world;
  world.portfolio->usesCashAccounts = false;
  const auto paid = [&](Date date, const std::string& amount) {
    return world.on(date).yield(BasicTransaction::YieldType::dividend, amount);
  };
  world.record({world.on(day(2019, 1, 2)).buy("10", "100"), paid(day(2019, 5, 3), "1"),
                paid(day(2020, 2, 3), "2"), paid(day(2020, 5, 31), "4"), paid(day(2020, 6, 1), "8"),
                paid(day(2021, 2, 3), "16")});
  const auto rows = recordedIncome(*world.portfolio, world.calendar);
  const auto told = [&](IncomePeriod::Length length) {
    std::vector<std::string> lines;
    for (const IncomePeriod& period : incomeByPeriod(rows, length, {2021, 5, 7})) {
      lines.push_back(period.name() + ": " + period.income.description() + " after " +
                      period.sameMonthsBefore.description());
    }
    return lines;
  };
  using ::testing::ElementsAre;
  EXPECT_THAT(told(IncomePeriod::Length::year),
              ElementsAre("2019: 1 after 0", "2020: 14 after 1", "2021: 16 after 6"));
  EXPECT_THAT(told(IncomePeriod::Length::quarter),
              ElementsAre("2019 Q2: 1 after 0", "2020 Q1: 2 after 0", "2020 Q2: 12 after 1",
                          "2021 Q1: 16 after 2"));
  EXPECT_THAT(told(IncomePeriod::Length::month),
              ElementsAre("2019-05: 1 after 0", "2020-02: 2 after 0", "2020-05: 4 after 1",
                          "2020-06: 8 after 0", "2021-02: 16 after 2"));
}

}  // namespace
}  // namespace corvane::testing
