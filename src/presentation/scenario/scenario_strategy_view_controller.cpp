#include "presentation/scenario/scenario_strategy_view_controller.h"

#include <algorithm>
#include <utility>

namespace corvane {
namespace {

using Selection = QueryDatesPicker::Selection;

QueryDatesPicker::Preset presetOfDays(std::string label, int firstDaysAgo, int lastDaysAgo,
                                      QuoteInterval interval) {
  return {std::move(label),
          [firstDaysAgo, lastDaysAgo, interval](YearMonthDay today, const Calendar& calendar) {
            const auto daysAgo = [&](int days) {
              return YearMonthDay::normalised(today.year, today.month, today.day - days, calendar);
            };
            return Selection{daysAgo(firstDaysAgo), daysAgo(lastDaysAgo), interval};
          }};
}

std::vector<QueryDatesPicker::Preset> scenarioPresets() {
  return {presetOfDays("Today", 0, 0, QuoteInterval::oneMinute),
          presetOfDays("Yesterday", 1, 1, QuoteInterval::oneMinute),
          presetOfDays("Past 7 days", 6, 0, QuoteInterval::oneMinute),
          presetOfDays("Past 30 days", 29, 0, QuoteInterval::oneMinute),
          presetOfDays("Past 60 days", 59, 0, QuoteInterval::twoMinutes)};
}

DecimalNumberFormatter spreadFormatter() {
  DecimalNumberFormatter formatter;
  formatter.style = NumberFormatter::Style::percent;
  formatter.minimumFractionDigits = 2;
  formatter.maximumFractionDigits = 4;
  return formatter;
}

DateComponents componentsOf(const YearMonthDay& day) {
  return {{CalendarUnit::year, day.year},
          {CalendarUnit::month, day.month},
          {CalendarUnit::day, day.day}};
}

/// The day that `components` name, which may roll over.
YearMonthDay dayOf(const DateComponents& components, const Calendar& calendar) {
  return YearMonthDay::normalised(components.year().value_or(1), components.month().value_or(1),
                                  components.day().value_or(1), calendar);
}

}  // namespace

/// A field and what it is about: money or a fraction, of the strategy unless it has no member.
struct ScenarioStrategyViewController::FieldBinding {
  NumberEntry ScenarioStrategyViewController::*field;
  std::string_view label;
  Decimal InvestmentStrategy::*member;  ///< null for the initial investment
  bool isMoney;
  bool isStopLoss;
};

/// A check box that puts one of two values into the field beside it.
struct ScenarioStrategyViewController::BoxBinding {
  CheckBox ScenarioStrategyViewController::*box;
  std::string_view title;
  NumberEntry ScenarioStrategyViewController::*field;
  Decimal InvestmentStrategy::*member;
  bool isLimit;  ///< on: no limit, off: the initial investment; else on: all, off: a half
  bool isStopLoss;
  [[nodiscard]] Decimal valueWhenOn() const {
    return isLimit ? Decimal::greatestFiniteMagnitude() : Decimal(1);
  }
};

auto ScenarioStrategyViewController::fieldBindings() -> const std::vector<FieldBinding>& {
  using Panel = ScenarioStrategyViewController;
  using Strategy = InvestmentStrategy;
  static const std::vector<FieldBinding> bindings = {
      {&Panel::initialInvestmentField, "Initial investment:", nullptr, true, false},
      {&Panel::strategyBuySpreadField, "Buy when down by:", &Strategy::targetBuySpread, false,
       false},
      {&Panel::strategyBuyMaxField, "Spend at most:", &Strategy::targetBuyMax, true, false},
      {&Panel::strategySellSpreadField, "Sell when up by:", &Strategy::targetSellSpread, false,
       false},
      {&Panel::strategySellSliceField, "Part to sell:", &Strategy::targetSellSlice, false, false},
      {&Panel::stopLossBuySpreadField, "Buy when up by:", &Strategy::stopLossBuySpread, false,
       true},
      {&Panel::stopLossBuyMaxField, "Spend at most:", &Strategy::stopLossBuyMax, true, true},
      {&Panel::stopLossSellSpreadField, "Sell when down by:", &Strategy::stopLossSellSpread, false,
       true},
      {&Panel::stopLossSellSliceField, "Part to sell:", &Strategy::stopLossSellSlice, false, true}};
  return bindings;
}

auto ScenarioStrategyViewController::boxBindings() -> const std::vector<BoxBinding>& {
  using Panel = ScenarioStrategyViewController;
  using Strategy = InvestmentStrategy;
  static const std::vector<BoxBinding> bindings = {
      {&Panel::strategyBuyMaxCheckbox, "No limit", &Panel::strategyBuyMaxField,
       &Strategy::targetBuyMax, true, false},
      {&Panel::strategySellSliceCheckbox, "All shares", &Panel::strategySellSliceField,
       &Strategy::targetSellSlice, false, false},
      {&Panel::stopLossBuyMaxCheckbox, "No limit", &Panel::stopLossBuyMaxField,
       &Strategy::stopLossBuyMax, true, true},
      {&Panel::stopLossSellSliceCheckbox, "All shares", &Panel::stopLossSellSliceField,
       &Strategy::stopLossSellSlice, false, true}};
  return bindings;
}

ScenarioStrategyViewController::ScenarioStrategyViewController(std::function<Date()> now)
    : queryDatesPicker(std::move(now)),
      scenario_(InvestmentScenario::defaultScenario()),
      strategy_(InvestmentStrategy::defaultStrategy()) {
  for (const FieldBinding& binding : fieldBindings()) {
    NumberEntry& field = this->*binding.field;
    field.label = binding.label;
    field.setFormatter(binding.isMoney ? DecimalNumberFormatter() : spreadFormatter());
    if (binding.isMoney) {
      field.minimum = 0;
    }
  }
  for (const BoxBinding& binding : boxBindings()) {
    (this->*binding.box).title = binding.title;
  }
  isStopLossActiveCheckbox.title = "Stop loss";
  queryDatesPicker.setPresets(scenarioPresets());
  queryDatesPicker.action = [this] { datesDidChange(); };
  showDates();
  refresh();
}

void ScenarioStrategyViewController::setScenario(const InvestmentScenario& scenario,
                                                 const InvestmentStrategy& strategy) {
  loadScenario(scenario, strategy);
  parametersChangedHandler();
}

void ScenarioStrategyViewController::loadScenario(const InvestmentScenario& scenario,
                                                  const InvestmentStrategy& strategy) {
  scenario_ = scenario;
  strategy_ = strategy;
  showDates();
  refresh();
}

void ScenarioStrategyViewController::prepare(
    const EquityInfo& equity,
    std::function<std::set<QuoteInterval>(const DateRange&)> availableIntervals) {
  for (const FieldBinding& binding : fieldBindings()) {
    if (binding.isMoney) {
      (this->*binding.field).setFormatter(DecimalNumberFormatter::money(equity.currency));
    }
  }
  queryDatesPicker.setCalendar(equity.calendar);
  queryDatesPicker.setAvailableIntervalsFilter(std::move(availableIntervals));
  showDates();
  refresh();
}

Decimal& ScenarioStrategyViewController::boundValue(const FieldBinding& binding) {
  return binding.member == nullptr ? scenario_.initialInvestment : strategy_.*binding.member;
}

void ScenarioStrategyViewController::refresh() {
  const bool isActive = strategy_.isStopLossActive;
  for (const FieldBinding& binding : fieldBindings()) {
    NumberEntry& field = this->*binding.field;
    field.setValue(boundValue(binding));
    field.isEnabled = !binding.isStopLoss || isActive;
  }
  for (const BoxBinding& binding : boxBindings()) {
    CheckBox& box = this->*binding.box;
    NumberEntry& field = this->*binding.field;
    box.isOn = strategy_.*binding.member == binding.valueWhenOn();
    box.isEnabled = !binding.isStopLoss || isActive;
    field.isEnabled = field.isEnabled && !box.isOn;
  }
  isStopLossActiveCheckbox.isOn = isActive;
  changeHandler();
}

/// Puts the days and the spacing of the scenario into the picker, and what the picker makes of the
/// spacing back: what is shown is what is run.
void ScenarioStrategyViewController::showDates() {
  const Calendar& calendar = queryDatesPicker.calendar();
  const YearMonthDay from = dayOf(scenario_.fromDateComponents, calendar);
  queryDatesPicker.setDates(from, std::max(from, dayOf(scenario_.toDateComponents, calendar)));
  queryDatesPicker.setSelectedInterval(scenario_.quoteInterval);
  scenario_.quoteInterval = queryDatesPicker.selectedInterval();
}

void ScenarioStrategyViewController::datesDidChange() {
  scenario_.fromDateComponents = componentsOf(queryDatesPicker.startDate());
  scenario_.toDateComponents = componentsOf(queryDatesPicker.endDate());
  scenario_.quoteInterval = queryDatesPicker.selectedInterval();
  parametersChangedHandler();
}

void ScenarioStrategyViewController::parametersDidChange() {
  refresh();
  parametersChangedHandler();
}

void ScenarioStrategyViewController::typeInto(NumberEntry& field, std::string text) {
  field.setText(std::move(text));
  changeHandler();
}

void ScenarioStrategyViewController::endEditing(NumberEntry& field) {
  const auto binding = std::ranges::find_if(fieldBindings(), [&](const FieldBinding& candidate) {
    return &(this->*candidate.field) == &field;
  });
  field.endEditing();
  if (field.value() && *field.value() != boundValue(*binding)) {
    boundValue(*binding) = *field.value();
    parametersDidChange();
  } else {
    changeHandler();
  }
}

void ScenarioStrategyViewController::toggle(CheckBox& box, bool isOn) {
  if (&box == &isStopLossActiveCheckbox) {
    strategy_.isStopLossActive = isOn;
    parametersDidChange();
    return;
  }
  const auto binding = std::ranges::find_if(
      boxBindings(), [&](const BoxBinding& candidate) { return &(this->*candidate.box) == &box; });
  const Decimal half = Decimal::fromMantissa(Sign::plus, 5, -1);
  const Decimal wanted = isOn               ? binding->valueWhenOn()
                         : binding->isLimit ? scenario_.initialInvestment
                                            : half;
  Decimal& value = strategy_.*binding->member;
  if (value != wanted) {
    value = wanted;
    parametersDidChange();
  } else {
    refresh();
  }
}

bool ScenarioStrategyViewController::isUnlimited(const NumberEntry& field) const {
  return field.value() == Decimal::greatestFiniteMagnitude();
}

}  // namespace corvane
