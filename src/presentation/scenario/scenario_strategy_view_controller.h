// The input panel of the two scenario screens: the days, the money, and the rules of a strategy.
#pragma once

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "core/controls/form_controls.h"
#include "core/market/equity_info.h"
#include "core/strategy/investment_scenario.h"
#include "core/strategy/investment_strategy.h"
#include "presentation/controls/query_dates_picker.h"
#include "presentation/transactions/number_entry.h"

namespace corvane {

/// The state of the panel, and what the user does to it. A field takes effect when its editing
/// ends; a text that is no number stays as it is, with words about it, and changes nothing. Main
/// queue only.
class ScenarioStrategyViewController {
 public:
  explicit ScenarioStrategyViewController(std::function<Date()> now = &Date::now);
  ScenarioStrategyViewController(const ScenarioStrategyViewController&) = delete;
  ScenarioStrategyViewController& operator=(const ScenarioStrategyViewController&) = delete;

  /// Called after each change of scenario or strategy.
  std::function<void()> parametersChangedHandler = [] {};
  /// Called when there is something new to draw.
  std::function<void()> changeHandler = [] {};

  QueryDatesPicker queryDatesPicker;

  NumberEntry initialInvestmentField;
  NumberEntry strategyBuySpreadField;
  NumberEntry strategyBuyMaxField;
  NumberEntry strategySellSpreadField;
  NumberEntry strategySellSliceField;
  NumberEntry stopLossBuySpreadField;
  NumberEntry stopLossBuyMaxField;
  NumberEntry stopLossSellSpreadField;
  NumberEntry stopLossSellSliceField;

  CheckBox strategyBuyMaxCheckbox;
  CheckBox strategySellSliceCheckbox;
  CheckBox stopLossBuyMaxCheckbox;
  CheckBox stopLossSellSliceCheckbox;
  CheckBox isStopLossActiveCheckbox;

  [[nodiscard]] const InvestmentScenario& scenario() const { return scenario_; }
  [[nodiscard]] const InvestmentStrategy& strategy() const { return strategy_; }
  /// Replaces both and calls the handler.
  void setScenario(const InvestmentScenario& scenario, const InvestmentStrategy& strategy);

  // What the screen sets; the handler is not called.

  /// Shows both.
  void loadScenario(const InvestmentScenario& scenario, const InvestmentStrategy& strategy);
  /// Makes the panel one for `equity`: its days are those of its exchange, money is in its
  /// currency, and where `availableIntervals` does not have the spacing of the scenario, the next
  /// one that it has takes its place.
  void prepare(const EquityInfo& equity,
               std::function<std::set<QuoteInterval>(const DateRange&)> availableIntervals);

  // What the user does, to fields and check boxes of this panel.

  void typeInto(NumberEntry& field, std::string text);
  void endEditing(NumberEntry& field);
  void toggle(CheckBox& box, bool isOn);

  /// Whether `field` shows "no limit", a number that nobody can read.
  [[nodiscard]] bool isUnlimited(const NumberEntry& field) const;

 private:
  struct FieldBinding;
  struct BoxBinding;
  [[nodiscard]] static const std::vector<FieldBinding>& fieldBindings();
  [[nodiscard]] static const std::vector<BoxBinding>& boxBindings();

  [[nodiscard]] Decimal& boundValue(const FieldBinding& binding);
  void refresh();
  void showDates();
  void datesDidChange();
  void parametersDidChange();

  InvestmentScenario scenario_;
  InvestmentStrategy strategy_;
};

}  // namespace corvane
