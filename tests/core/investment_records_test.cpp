// The records of a back-test: their period in a calendar and their form in JSON.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "core/decimal/json_coding.h"
#include "core/money/year_month_day.h"
#include "core/strategy/investment_scenario.h"
#include "core/strategy/investment_strategy.h"

namespace corvane {
namespace {

DateComponents day(int year, int month, int dayOfMonth) {
  return {
      {CalendarUnit::year, year}, {CalendarUnit::month, month}, {CalendarUnit::day, dayOfMonth}};
}

TEST(InvestmentScenario, CoversItsLastDayWhole) {
  const Calendar toronto(*TimeZone::withIdentifier("America/Toronto"));
  const auto range = [&](const DateComponents& from, const DateComponents& to) {
    return InvestmentScenario{from, to, QuoteInterval::oneDay, 1000}.dateRange(toronto);
  };
  const auto start = [&](int year, int month, int dayOfMonth) {
    return YearMonthDay{year, month, dayOfMonth}.startIn(toronto);
  };
  EXPECT_EQ(range(day(2024, 5, 31), day(2024, 5, 31)),
            DateRange(start(2024, 5, 31), start(2024, 6, 1)));
  EXPECT_EQ(range(day(2024, 12, 30), day(2024, 12, 31)),
            DateRange(start(2024, 12, 30), start(2025, 1, 1)));
  // The day on which the clocks go forward has 23 hours.
  const auto shortDay = range(day(2024, 3, 10), day(2024, 3, 10));
  EXPECT_EQ(shortDay->upper().timeIntervalSince(shortDay->lower()), 23 * 3600);
  // An absent day is day 0, so the period ends where the month begins.
  EXPECT_EQ(range(day(2024, 4, 1), {{CalendarUnit::year, 2024}, {CalendarUnit::month, 5}}),
            DateRange(start(2024, 4, 1), start(2024, 5, 1)));

  EXPECT_EQ(range(day(2024, 5, 2), day(2024, 5, 1)), std::nullopt);
  EXPECT_EQ(range(day(2024, 5, 3), day(2024, 5, 1)), std::nullopt);
  EXPECT_EQ(range(day(2024, 5, 1), day(2024, 5, std::numeric_limits<int>::max())), std::nullopt);
  EXPECT_EQ(range(day(2024, 5, 1), day(std::numeric_limits<int>::max(), 5, 1)), std::nullopt);
}

TEST(InvestmentScenario, StartsWithThirtyDaysUpToToday) {
  const Calendar calendar = Calendar::current();
  const auto& scenario = InvestmentScenario::defaultScenario();
  const DateRange range = scenario.dateRange(calendar).value();
  EXPECT_TRUE(range.contains(Date::now()));
  EXPECT_EQ(calendar.dateComponents({CalendarUnit::day}, range.lower(), range.upper()).day(), 30);
  EXPECT_EQ(scenario.quoteInterval, QuoteInterval::oneMinute);
  EXPECT_EQ(scenario.initialInvestment, Decimal(1000));
}

TEST(InvestmentRecords, SurviveJSONWithEveryDigit) {
  InvestmentScenario scenario{day(2024, 2, 29), day(2025, 3, 1), QuoteInterval::oneWeek,
                              *Decimal::fromWholeString("1234.56")};
  EXPECT_EQ(json(scenario).text(),
            R"({"fromDateComponents":{"year":2024,"month":2,"day":29},)"
            R"("toDateComponents":{"year":2025,"month":3,"day":1},)"
            R"("quoteInterval":{"weekOfYear":1},"initialInvestment":1234.56})");
  EXPECT_EQ(investmentScenario(JSONValue::parse(json(scenario).text())), scenario);

  InvestmentStrategy strategy = InvestmentStrategy::defaultStrategy();
  EXPECT_EQ(json(strategy).text(),
            R"({"targetBuySpread":0.05,"targetBuyMax":1000,"targetSellSpread":0.05,)"
            R"("targetSellSlice":1,"isStopLossActive":false,"stopLossBuySpread":0.05,)"
            R"("stopLossBuyMax":1000,"stopLossSellSpread":0.05,"stopLossSellSlice":1})");
  strategy.isStopLossActive = true;
  strategy.targetBuyMax = Decimal::greatestFiniteMagnitude();
  strategy.stopLossBuyMax = -Decimal::greatestFiniteMagnitude();
  strategy.targetSellSlice = Decimal::leastNonzeroMagnitude();
  strategy.stopLossSellSlice = Decimal(1) / Decimal(3);
  for (const auto& stored : {strategy, InvestmentStrategy::buyAndHold()}) {
    EXPECT_EQ(investmentStrategy(JSONValue::parse(json(stored).text())), stored);
  }
}

TEST(InvestmentRecords, AreReadOnlyWhole) {
  const auto refused = [](const auto& record, const auto& read, std::string_view key,
                          std::optional<JSONValue> replacement) -> std::string {
    JSONValue value = json(record);
    value.remove(key);
    if (replacement) {
      value.set(key, *replacement);
    }
    try {
      (void)read(value, "settings");
      return "nothing";
    } catch (const JSONError& error) {
      return error.path;
    }
  };
  const auto& strategy = InvestmentStrategy::defaultStrategy();
  const auto& scenario = InvestmentScenario::defaultScenario();
  const JSONValue wholeStrategy = json(strategy);
  for (const auto& [key, value] : wholeStrategy.object()) {
    EXPECT_EQ(refused(strategy, investmentStrategy, key, std::nullopt), "settings." + key);
    EXPECT_EQ(refused(strategy, investmentStrategy, key, "0.05"), "settings." + key);
  }
  const JSONValue wholeScenario = json(scenario);
  for (const auto& [key, value] : wholeScenario.object()) {
    EXPECT_EQ(refused(scenario, investmentScenario, key, std::nullopt), "settings." + key);
    EXPECT_EQ(refused(scenario, investmentScenario, key, JSONValue()), "settings." + key);
  }
  EXPECT_EQ(refused(strategy, investmentStrategy, "targetBuyMax", *JSONNumber::fromText("1e200")),
            "settings.targetBuyMax");
  EXPECT_EQ(
      refused(scenario, investmentScenario, "toDateComponents", JSONValue::parse(R"({"day":1.5})")),
      "settings.toDateComponents.day");
  InvestmentStrategy unset;
  unset.targetBuyMax = Decimal::nan();
  EXPECT_THROW((void)json(unset), JSONError);

  JSONValue newer = wholeStrategy;
  newer.set("addedLater", true);
  EXPECT_EQ(investmentStrategy(newer), strategy);
}

}  // namespace
}  // namespace corvane
