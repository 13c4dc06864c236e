// The heat map of a strategy in a window of its own.
#pragma once

#include <QDialog>
#include <memory>

#include "platform/async/subscription.h"
#include "presentation/scenario/scenario_heat_map.h"

class QComboBox;
class QLabel;
class QProgressBar;
class QTableView;

namespace corvane::desktop {

class ChartWidget;
class HeatMapModel;

/// Shows a ScenarioHeatMap: two menus for what is varied, the map with the chart of its selected
/// row beside it, and the note below.
class HeatMapDialog : public QDialog {
  Q_OBJECT

 public:
  HeatMapDialog(std::unique_ptr<ScenarioHeatMap> map, QWidget* parent);
  ~HeatMapDialog() override;

  [[nodiscard]] const ScenarioHeatMap& map() const { return *map_; }

 private:
  QWidget* makeMenus();
  QWidget* makeChart();
  void connectControls();
  void update();

  std::unique_ptr<ScenarioHeatMap> map_;
  HeatMapModel* model_;
  QComboBox* rows_;
  QComboBox* columns_;
  QTableView* table_;
  QProgressBar* progress_;
  QLabel* chartTitle_;
  ChartWidget* chart_;
  QLabel* note_;
  Subscription changes_;
};

}  // namespace corvane::desktop
