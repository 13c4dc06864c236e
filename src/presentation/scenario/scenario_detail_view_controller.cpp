#include "presentation/scenario/scenario_detail_view_controller.h"

namespace corvane {

std::shared_ptr<ScenarioDetailViewController> ScenarioDetailViewController::make(
    const ScreenSurroundings& surroundings) {
  auto made = std::make_shared<ScenarioDetailViewController>(Passkey{}, surroundings);
  made->connect();
  return made;
}

ScenarioDetailViewController::ScenarioDetailViewController(Passkey /*passkey*/,
                                                           const ScreenSurroundings& surroundings)
    : ScenarioViewController(surroundings,
                             std::make_unique<ScenarioDetailDataSource>(*surroundings.defaults),
                             {&Settings::detailScenario, &Settings::detailStrategy}) {}

const ScenarioDetailDataSource& ScenarioDetailViewController::detailDataSource() const {
  return static_cast<const ScenarioDetailDataSource&>(scenarioDataSource());
}

void ScenarioDetailViewController::makeBatchAction() {
  makeBatchHandler(strategyViewController.scenario(), strategyViewController.strategy());
}

}  // namespace corvane
