// The input panel of the scenario screens, as Qt shows it.
#pragma once

#include <QWidget>
#include <functional>
#include <vector>

#include "platform/async/subscription.h"
#include "presentation/scenario/scenario_strategy_view_controller.h"

class QCheckBox;
class QGridLayout;

namespace corvane::desktop {

/// Shows the fields and check boxes of a ScenarioStrategyViewController, but not its picker, one
/// below the other. A field takes effect on Return and when the keyboard leaves it. The controller
/// must outlive this, which takes its changeHandler.
class StrategyPanel : public QWidget {
  Q_OBJECT

 public:
  explicit StrategyPanel(ScenarioStrategyViewController& controller, QWidget* parent = nullptr);

 private:
  void addField(QGridLayout& grid, NumberEntry& entry, const QString& accessibleName);
  QCheckBox* addCheckBox(QGridLayout& grid, CheckBox& box, const QString& accessibleName);
  void update();

  ScenarioStrategyViewController& controller_;
  std::vector<std::function<void()>> updates_;  ///< of one control each
  Subscription changes_;
};

}  // namespace corvane::desktop
