// The third tab of an equity's screen: a strategy replayed once over a period.
#pragma once

#include "presentation/scenario/scenario_detail_data_source.h"
#include "presentation/scenario/scenario_view_controller.h"

namespace corvane {

/// Lists every simulated transaction. Held by shared pointer only. Main queue only.
class ScenarioDetailViewController : public ScenarioViewController {
  struct Passkey {};

 public:
  [[nodiscard]] static std::shared_ptr<ScenarioDetailViewController> make(
      const ScreenSurroundings& surroundings);
  ScenarioDetailViewController(Passkey passkey, const ScreenSurroundings& surroundings);

  /// Takes the input to the screen for batches.
  ScenarioHandler makeBatchHandler = [](const auto&, const auto&) {};

  [[nodiscard]] const ScenarioDetailDataSource& detailDataSource() const;

  void makeBatchAction();
};

}  // namespace corvane
