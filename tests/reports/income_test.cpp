// What equities are expected to pay.

#include "reports/income/income_projection.h"

#include <gmock/gmock.h>

#include <map>

#include "reports/report_cases.h"
#include "reports/series/report_days.h"

namespace corvane::testing {
namespace {

using ::testing::ElementsAre;

Decimal decimalOf(const std::string& text) {
  return Decimal::fromWholeString(text).value();
}

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
      splits.push_back({dayOf(split.array()[0]), decimalOf(ratio.substr(0, colon)),
                        decimalOf(ratio.substr(colon + 1))});
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
      EXPECT_EQ(displayName(rhythmOf(days)), made.expected.at("periodicity").string());
      return true;
    }
    const Decimal cost = amountOf(made.inputs.at("costPerShare"));
    const JSONValue& expected = made.expected.at("yieldOnCost");
    if (const JSONValue* yearly = fieldOf(made.inputs, "annualDividends")) {
      for (std::size_t i = 0; i < yearly->array().size(); ++i) {
        const Decimal paid = amountOf(yearly->array()[i]);
        EXPECT_NEAR(yieldOn(cost * 7, 7, {&paid, 1}).value(), numberOf(expected.array()[i]),
                    made.tolerance);
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

}  // namespace
}  // namespace corvane::testing
