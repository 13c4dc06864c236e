#include "desktop/scenario/scenario_detail_tab.h"

#include <QHBoxLayout>
#include <QPushButton>

namespace corvane::desktop {

ScenarioDetailTab::ScenarioDetailTab(std::shared_ptr<ScenarioDetailViewController> controller)
    : ScenarioTab(controller, QStringLiteral("Scenario")) {
  auto* makeBatch = new QPushButton(QStringLiteral("Make &Batch"));
  makeBatch->setToolTip(QStringLiteral("Tries this strategy out on parts of these days"));
  bar().addWidget(makeBatch);
  connect(makeBatch, &QPushButton::clicked, this,
          [controller = std::move(controller)] { controller->makeBatchAction(); });
}

}  // namespace corvane::desktop
