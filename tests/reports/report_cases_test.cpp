// Every worked example of the areas that are built, within the tolerance that it states.

#include "reports/report_cases.h"

#include <algorithm>
#include <cmath>
#include <map>

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
  if (!found.period) {
    return {};
  }
  std::vector<double> rates{annualised(*found.period, found.days)};
  for (const double other : found.otherPeriods) {
    rates.push_back(annualised(other, found.days));
  }
  return rates;
}

/// One rate, all rates in any order, or none where that is what is expected.
void compareRates(std::vector<double> rates, const JSONValue& expected, double tolerance) {
  if (expected.isNull()) {
    EXPECT_TRUE(rates.empty());
    return;
  }
  if (!isArray(expected)) {
    ASSERT_FALSE(rates.empty());
    const auto isNear = [&](double rate) {
      return std::abs(rate - numberOf(expected)) <= tolerance;
    };
    EXPECT_TRUE(std::ranges::any_of(rates, isNear)) << rates.front();
    return;
  }
  ASSERT_EQ(rates.size(), expected.array().size());
  std::ranges::sort(rates);
  for (std::size_t i = 0; i < rates.size(); ++i) {
    EXPECT_NEAR(rates[i], numberOf(expected.array()[i]), tolerance);
  }
}

TEST(ReportCases, MoneyWeightedReturns) {
  forReportCases("returns.moneyWeighted", [](const ReportCase& made) {
    const MoneyWeightedReturn found = moneyWeightedReturn(paymentsOf(made), 0);
    const std::vector<double> rates = yearlyRates(found);
    for (const auto& [name, value] : made.expected.object()) {
      SCOPED_TRACE(name);
      if (name == "annual") {
        compareRates(rates, value, made.tolerance);
      } else if (name == "annualCorvane") {
        compareRates(rates, value, 1e-8);
      } else if (name == "period") {
        EXPECT_NEAR(found.period.value(), numberOf(value), made.tolerance);
      } else if (name == "annualPublished") {
        // The publisher's year has another length, and so another figure for the same growth.
        const double year = numberOf(made.expected.at("yearBasis"));
        EXPECT_NEAR(std::pow(1 + found.period.value(), year / found.days) - 1, numberOf(value),
                    made.tolerance);
      } else if (name != "yearBasis") {
        ADD_FAILURE() << "a figure that this test does not know";
      }
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
    const auto compareDays = [&](const JSONValue& expected, auto figure) {
      ASSERT_EQ(found.days.size(), expected.array().size() + 1);
      for (std::size_t i = 0; i + 1 < found.days.size(); ++i) {
        EXPECT_NEAR(figure(found.days[i + 1]), numberOf(expected.array()[i]), made.tolerance) << i;
      }
    };
    for (const auto& [name, value] : made.expected.object()) {
      SCOPED_TRACE(name);
      if (name == "total" && value.isNull()) {
        EXPECT_FALSE(found.total);
      } else if (name == "total") {
        EXPECT_NEAR(found.total.value(), numberOf(value), made.tolerance);
      } else if (name == "annual") {
        EXPECT_NEAR(annualised(found.total.value(), found.daysMeasured()), numberOf(value),
                    made.tolerance);
      } else if (name == "daily") {
        compareDays(value, [](const auto& day) { return day.dailyReturn; });
      } else if (name == "accumulated") {
        compareDays(value, [](const auto& day) { return day.index - 1; });
      } else {
        ADD_FAILURE() << "a figure that this test does not know";
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

void compareVolatility(const ReportCase& made, const JSONValue& dailyReturns) {
  const JSONValue* days = fieldOf(made.inputs, "calendarDays");
  const std::vector<double> daily = numbersOf(dailyReturns);
  const Volatility found =
      volatilityOf(daily, days == nullptr ? 365 : static_cast<int>(numberOf(*days)));
  for (const auto& [name, value] : made.expected.object()) {
    SCOPED_TRACE(name);
    if (name == "count") {
      EXPECT_EQ(found.count, static_cast<std::size_t>(numberOf(value)));
    } else if (name == "periodVolatility") {
      EXPECT_NEAR(found.period(), numberOf(value), made.tolerance);
    } else if (name == "dailyVolatility") {
      EXPECT_NEAR(found.daily, numberOf(value), made.tolerance);
    } else if (name == "annualVolatility" && days != nullptr) {
      EXPECT_NEAR(found.annual(), numberOf(value), made.tolerance);
    } else {
      ADD_FAILURE() << "a figure that this test does not know";
    }
  }
}

TEST(ReportCases, RiskFigures) {
  forReportCases("returns.risk", [](const ReportCase& made) {
    if (const JSONValue* daily = fieldOf(made.inputs, "dailyReturns")) {
      compareVolatility(made, *daily);
      return true;
    }
    const JSONValue* accumulated = fieldOf(made.inputs, "accumulated");
    std::vector<double> index =
        numbersOf(accumulated != nullptr ? *accumulated : made.inputs.at("values"));
    const JSONValue* dates = fieldOf(made.inputs, "dates");
    std::vector<YearMonthDay> days;
    for (double& value : index) {
      value += accumulated != nullptr ? 1 : 0;
      days.push_back(dates != nullptr
                         ? dayOf(dates->array()[days.size()])
                         : daysAfter({2020, 1, 1}, static_cast<std::int64_t>(days.size())));
    }
    const auto falls = drawdownsOf(index, days);
    const Drawdown deepest = falls ? falls->deepest : Drawdown();
    const std::map<std::string, std::size_t> places = {
        {"peakIndex", deepest.peak},
        {"troughIndex", deepest.trough},
        {"recoveredIndex", deepest.recovered.value_or(index.size())},
        {"longestPeakIndex", falls ? falls->longest.peak : 0}};
    for (const auto& [name, value] : made.expected.object()) {
      SCOPED_TRACE(name);
      if (name == "maxDrawdown") {
        EXPECT_NEAR(deepest.size, numberOf(value), made.tolerance);
      } else if (name == "recoveredIndex" && value.isNull()) {
        EXPECT_FALSE(deepest.recovered);
      } else {
        EXPECT_EQ(places.at(name), static_cast<std::size_t>(numberOf(value)));
      }
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
