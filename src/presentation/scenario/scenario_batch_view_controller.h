// The fourth tab of an equity's screen: a strategy tried out on many sub-periods.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "presentation/scenario/scenario_batch_data_source.h"
#include "presentation/scenario/scenario_view_controller.h"

namespace corvane {

/// Lists the outcome of each sub-period. The user's settings keep how the period is cut. Held by
/// shared pointer only. Main queue only.
class ScenarioBatchViewController : public ScenarioViewController {
  struct Passkey {};

 public:
  /// The ways to cut a period, in the order of the menu.
  static constexpr auto batchTypes = allBatchMethods;
  static constexpr std::string_view userDefaultsBatchTypeKeyName = "lastRegressionBatchType";

  [[nodiscard]] static std::shared_ptr<ScenarioBatchViewController> make(
      const ScreenSurroundings& surroundings);
  ScenarioBatchViewController(Passkey passkey, const ScreenSurroundings& surroundings);

  /// Takes the strategy and a sub-period to the screen of one run.
  ScenarioHandler goToDetailHandler = [](const auto&, const auto&) {};

  [[nodiscard]] const ScenarioBatchDataSource& batchDataSource() const;

  /// An index into batchTypes.
  [[nodiscard]] std::size_t selectedBatchType() const { return selectedBatchType_; }
  void selectBatchType(std::size_t index);

  [[nodiscard]] ProgressIndicator progress() const override;
  [[nodiscard]] std::string statusText() const override;

  /// Whether exactly one row is selected.
  [[nodiscard]] bool isGoToDetailEnabled() const { return selectedRow().has_value(); }
  void goToDetailAction();

 private:
  [[nodiscard]] ScenarioBatchDataSource& batchSource();

  std::size_t selectedBatchType_ = 0;
};

}  // namespace corvane
