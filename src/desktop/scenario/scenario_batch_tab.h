// The fourth tab of an equity's screen.
#pragma once

#include <memory>

#include "desktop/scenario/scenario_tab.h"
#include "presentation/scenario/scenario_batch_view_controller.h"

class QComboBox;
class QPushButton;

namespace corvane::desktop {

/// Shows a ScenarioBatchViewController.
class ScenarioBatchTab : public ScenarioTab {
  Q_OBJECT

 public:
  explicit ScenarioBatchTab(const std::shared_ptr<ScenarioBatchViewController>& controller);

 protected:
  void update() override;

 private:
  ScenarioBatchViewController& controller_;
  QComboBox* method_;
  QPushButton* goToDetail_;
};

}  // namespace corvane::desktop
