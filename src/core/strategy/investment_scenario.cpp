#include "core/strategy/investment_scenario.h"

#include <limits>

#include "core/decimal/json_coding.h"
#include "core/strategy/investment_strategy.h"

namespace corvane {
namespace {

InvestmentScenario scenarioUpToToday() {
  const Calendar calendar = Calendar::current();
  const Date now = Date::now();
  const Date start = calendar.dateByAdding(CalendarUnit::day, -29, now).value_or(now);
  const auto dayOf = [&](Date date) {
    return calendar.dateComponents({CalendarUnit::year, CalendarUnit::month, CalendarUnit::day},
                                   date);
  };
  return {dayOf(start), dayOf(now), allQuoteIntervals.front(),
          InvestmentStrategy::defaultMaximum()};
}

}  // namespace

const InvestmentScenario& InvestmentScenario::defaultScenario() {
  static const InvestmentScenario scenario = scenarioUpToToday();
  return scenario;
}

std::optional<DateRange> InvestmentScenario::dateRange(const Calendar& calendar) const {
  const int lastDay = toDateComponents.day().value_or(0);
  if (lastDay == std::numeric_limits<int>::max()) {
    return std::nullopt;
  }
  DateComponents dayAfterLast = toDateComponents;
  dayAfterLast.set(CalendarUnit::day, lastDay + 1);
  const auto lower = calendar.date(fromDateComponents);
  const auto upper = calendar.date(dayAfterLast);
  if (!lower || !upper || *upper <= *lower) {
    return std::nullopt;
  }
  return DateRange(*lower, *upper);
}

JSONValue json(const InvestmentScenario& scenario, std::string_view path) {
  return JSONValue::Object{
      {"fromDateComponents", json(scenario.fromDateComponents)},
      {"toDateComponents", json(scenario.toDateComponents)},
      {"quoteInterval", json(scenario.quoteInterval)},
      {"initialInvestment", json(scenario.initialInvestment, pathOf("initialInvestment", path))}};
}

InvestmentScenario investmentScenario(const JSONValue& value, std::string_view path) {
  const auto field = [&](std::string_view key) -> const JSONValue& {
    return requiredField(value, key, path);
  };
  return {dateComponents(field("fromDateComponents"), pathOf("fromDateComponents", path)),
          dateComponents(field("toDateComponents"), pathOf("toDateComponents", path)),
          quoteInterval(field("quoteInterval"), pathOf("quoteInterval", path)),
          decimal(field("initialInvestment"), pathOf("initialInvestment", path))};
}

}  // namespace corvane
