// The third tab of an equity's screen.
#pragma once

#include <memory>

#include "desktop/scenario/scenario_tab.h"
#include "presentation/scenario/scenario_detail_view_controller.h"

class QPushButton;

namespace corvane::desktop {

/// Shows a ScenarioDetailViewController.
class ScenarioDetailTab : public ScenarioTab {
  Q_OBJECT

 public:
  explicit ScenarioDetailTab(const std::shared_ptr<ScenarioDetailViewController>& controller);

 protected:
  void update() override;

 private:
  void openHeatMap();

  ScenarioDetailViewController& controller_;
  QPushButton* heatMap_;
};

}  // namespace corvane::desktop
