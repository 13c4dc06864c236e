#include "desktop/scenario/scenario_batch_tab.h"

#include <QComboBox>
#include <QPushButton>

#include "desktop/controls/flow_row.h"
#include "desktop/controls/table_view.h"
#include "desktop/look/qt_text.h"

namespace corvane::desktop {

ScenarioBatchTab::ScenarioBatchTab(const std::shared_ptr<ScenarioBatchViewController>& controller)
    : ScenarioTab(controller, QStringLiteral("Scenario batch")),
      controller_(*controller),
      method_(new QComboBox),
      goToDetail_(new QPushButton(QStringLiteral("Go to &Detail"))) {
  method_->setAccessibleName(QStringLiteral("Periods"));
  method_->setToolTip(QStringLiteral("How the days are divided"));
  for (const BatchMethod method : ScenarioBatchViewController::batchTypes) {
    method_->addItem(qtText(title(method)));
  }
  goToDetail_->setToolTip(QStringLiteral("Replays the selected period by itself"));
  bar().addWidget(method_);
  bar().addWidget(goToDetail_);
  connect(method_, &QComboBox::activated, this,
          [this](int index) { controller_.selectBatchType(static_cast<std::size_t>(index)); });
  connect(goToDetail_, &QPushButton::clicked, this, [this] { controller_.goToDetailAction(); });
  connect(&table(), &QTableView::activated, this, [this] { controller_.goToDetailAction(); });
  update();
}

void ScenarioBatchTab::update() {
  ScenarioTab::update();
  method_->setCurrentIndex(static_cast<int>(controller_.selectedBatchType()));
  goToDetail_->setEnabled(controller_.isGoToDetailEnabled());
}

}  // namespace corvane::desktop
