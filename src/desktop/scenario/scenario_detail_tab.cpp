#include "desktop/scenario/scenario_detail_tab.h"

#include <QPushButton>

#include "desktop/scenario/heat_map_dialog.h"

namespace corvane::desktop {

ScenarioDetailTab::ScenarioDetailTab(
    const std::shared_ptr<ScenarioDetailViewController>& controller)
    : ScenarioTab(controller, QStringLiteral("Scenario")),
      controller_(*controller),
      heatMap_(new QPushButton(QStringLiteral("&Heat Map…"))) {
  auto* makeBatch = new QPushButton(QStringLiteral("Make &Batch"));
  makeBatch->setToolTip(QStringLiteral("Tries this strategy out on parts of these days"));
  heatMap_->setToolTip(QStringLiteral("Tries other numbers out on the same prices"));
  bar().addWidget(makeBatch);
  bar().addWidget(heatMap_);
  connect(makeBatch, &QPushButton::clicked, this, [this] { controller_.makeBatchAction(); });
  connect(heatMap_, &QPushButton::clicked, this, &ScenarioDetailTab::openHeatMap);
  update();
}

void ScenarioDetailTab::openHeatMap() {
  if (auto map = controller_.detailDataSource().makeHeatMap()) {
    (new HeatMapDialog(std::move(map), window()))->open();
  }
}

void ScenarioDetailTab::update() {
  ScenarioTab::update();
  heatMap_->setEnabled(controller_.detailDataSource().numberOfRows() > 0);
}

}  // namespace corvane::desktop
