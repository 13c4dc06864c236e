// Every worked example of the areas that are built, within the tolerance that it states.

#include "reports/report_cases.h"

#include <algorithm>
#include <cmath>

#include "reports/returns/money_weighted_return.h"
#include "reports/returns/risk_figures.h"
#include "reports/returns/time_weighted_return.h"
#include "reports/returns/total_return_index.h"
#include "reports/series/report_days.h"

namespace corvane::testing {
namespace {

std::vector<OwnersPayment> paymentsOf(const ReportCase& made) {
  std::vector<OwnersPayment> payments;
  if (const JSONValue* yearly = fieldOf(made.inputs, "yearlyFlows")) {
    YearMonthDay day{2001, 1, 1};
    for (const JSONValue& amount : yearly->array()) {
      payments.push_back({day, amountOf(amount)});
      day = daysAfter(day, 365);
    }
    return payments;
  }
  for (const JSONValue& flow : made.inputs.at("flows").array()) {
    payments.push_back({dayOf(flow.array()[0]), amountOf(flow.array()[1])});
  }
  return payments;
}

/// The rates a year that the payments have, the one that is shown first.
std::vector<double> yearlyRates(const MoneyWeightedReturn& found) {
  std::vector<double> rates{annualised(found.period.value(), found.days)};
  for (const double other : found.otherPeriods) {
    rates.push_back(annualised(other, found.days));
  }
  return rates;
}

TEST(ReportCases, MoneyWeightedReturns) {
  forReportCases("returns.moneyWeighted", [](const ReportCase& made) {
    const MoneyWeightedReturn found = moneyWeightedReturn(paymentsOf(made), 0);
    std::vector<double> rates = yearlyRates(found);
    if (const JSONValue* published = fieldOf(made.expected, "annualPublished")) {
      // The publisher's year has another length, and so another figure for the same growth.
      const double year = numberOf(made.expected.at("yearBasis"));
      EXPECT_NEAR(std::pow(1 + *found.period, year / found.days) - 1, numberOf(*published),
                  made.tolerance);
      EXPECT_NEAR(rates.front(), numberOf(made.expected.at("annualCorvane")), 1e-8);
      return true;
    }
    const JSONValue& annual = made.expected.at("annual");
    if (!fieldOf(made.inputs, "yearlyFlows") || made.id == "mwr-cfa-style-two-shares") {
      EXPECT_EQ(rates.size(), 1U);
      EXPECT_NEAR(rates.front(), numberOf(annual), made.tolerance);
      return true;
    }
    EXPECT_EQ(rates.size(), annual.array().size());
    std::ranges::sort(rates);
    for (std::size_t i = 0; i < std::min(rates.size(), annual.array().size()); ++i) {
      EXPECT_NEAR(rates[i], numberOf(annual.array()[i]), made.tolerance);
    }
    return true;
  });
}

std::vector<ValuationDay> daysOf(const ReportCase& made) {
  std::vector<ValuationDay> days;
  for (const JSONValue& day : made.inputs.at("days").array()) {
    const auto amount = [&](const char* name) {
      const JSONValue* field = fieldOf(day, name);
      return field == nullptr ? Decimal() : amountOf(*field);
    };
    days.push_back({dayOf(day.at("date")), amount("value"), amount("in"), amount("out")});
  }
  return days;
}

TEST(ReportCases, TimeWeightedReturns) {
  forReportCases("returns.timeWeighted", [](const ReportCase& made) {
    const TimeWeightedReturn found = timeWeightedReturn(daysOf(made));
    EXPECT_NEAR(found.total.value(), numberOf(made.expected.at("total")), made.tolerance);
    if (const JSONValue* daily = fieldOf(made.expected, "daily")) {
      const auto& accumulated = made.expected.at("accumulated").array();
      EXPECT_EQ(found.days.size(), daily->array().size() + 1);
      for (std::size_t i = 0; i + 1 < found.days.size(); ++i) {
        EXPECT_NEAR(found.days[i + 1].dailyReturn, numberOf(daily->array()[i]), made.tolerance);
        EXPECT_NEAR(found.days[i + 1].index - 1, numberOf(accumulated[i]), made.tolerance);
      }
    }
    return true;
  });
}

TEST(ReportCases, ReturnsAYear) {
  forReportCases("returns.annualise", [](const ReportCase& made) {
    EXPECT_NEAR(annualised(numberOf(made.inputs.at("return")),
                           static_cast<int>(numberOf(made.inputs.at("days")))),
                numberOf(made.expected.at("annual")), made.tolerance);
    return true;
  });
}

std::vector<double> numbersOf(const JSONValue& list) {
  std::vector<double> numbers;
  for (const JSONValue& value : list.array()) {
    numbers.push_back(numberOf(value));
  }
  return numbers;
}

TEST(ReportCases, RiskFigures) {
  forReportCases("returns.risk", [](const ReportCase& made) {
    if (const JSONValue* daily = fieldOf(made.inputs, "dailyReturns")) {
      const Volatility found = volatilityOf(numbersOf(*daily), 8);
      EXPECT_EQ(found.count, static_cast<std::size_t>(numberOf(made.expected.at("count"))));
      EXPECT_NEAR(found.period(), numberOf(made.expected.at("periodVolatility")), made.tolerance);
      return true;
    }
    const JSONValue* accumulated = fieldOf(made.inputs, "accumulated");
    std::vector<double> index =
        numbersOf(accumulated != nullptr ? *accumulated : made.inputs.at("values"));
    std::vector<YearMonthDay> days;
    for (double& value : index) {
      value += accumulated != nullptr ? 1 : 0;
      days.push_back(daysAfter({2020, 1, 1}, static_cast<std::int64_t>(days.size())));
    }
    const Drawdown found = drawdownsOf(index, days).value().deepest;
    EXPECT_NEAR(found.size, numberOf(made.expected.at("maxDrawdown")), made.tolerance);
    if (const JSONValue* peak = fieldOf(made.expected, "peakIndex")) {
      EXPECT_EQ(found.peak, static_cast<std::size_t>(numberOf(*peak)));
      EXPECT_EQ(found.trough, static_cast<std::size_t>(numberOf(made.expected.at("troughIndex"))));
    }
    return true;
  });
}

TEST(ReportCases, TotalReturnOfABenchmark) {
  forReportCases("returns.benchmark", [](const ReportCase& made) {
    std::vector<PriceLine::Close> closes;
    for (const JSONValue& close : made.inputs.at("closes").array()) {
      closes.push_back({dayOf(close.array()[0]), amountOf(close.array()[1])});
    }
    std::vector<ShareDividend> dividends;
    for (const JSONValue& paid : made.inputs.at("dividends").array()) {
      dividends.push_back({dayOf(paid.array()[0]), amountOf(paid.array()[1])});
    }
    const std::vector<double> index = totalReturnIndex(closes, dividends);
    const std::vector<double> expected = numbersOf(made.expected.at("index"));
    EXPECT_EQ(index.size(), expected.size());
    for (std::size_t i = 0; i < std::min(index.size(), expected.size()); ++i) {
      EXPECT_NEAR(index[i], expected[i], made.tolerance);
    }
    return true;
  });
}

}  // namespace
}  // namespace corvane::testing
