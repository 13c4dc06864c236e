#include "desktop/scenario/scenario_tab.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QResizeEvent>
#include <QScrollArea>
#include <QScrollBar>
#include <QSplitter>
#include <QVBoxLayout>

#include "desktop/charts/chart_widget.h"
#include "desktop/controls/busy_bar.h"
#include "desktop/controls/dates_picker_view.h"
#include "desktop/controls/flow_row.h"
#include "desktop/controls/frozen_columns.h"
#include "desktop/controls/table_view.h"
#include "desktop/look/attributed_text_view.h"
#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"
#include "desktop/scenario/strategy_panel.h"

namespace corvane::desktop {
namespace {

constexpr int progressSteps = 1000;
constexpr int leastColumnWidth = 44;
/// Of the column of periods and dates, which are cut in a narrow window before the table scrolls.
constexpr int leastNameWidth = 130;

/// Never lower than what its texts take at the width that it has. A splitter asks for the least
/// height alone, in which no text is wrapped, and would push the wrapped ones over each other.
class WrappingColumn : public QWidget {
 protected:
  void resizeEvent(QResizeEvent* event) override {
    QWidget::resizeEvent(event);
    takeRoom();
  }
  bool event(QEvent* event) override {
    const bool isHandled = QWidget::event(event);
    if (event->type() == QEvent::LayoutRequest) {
      takeRoom();
    }
    return isHandled;
  }

 private:
  void takeRoom() {
    if (layout() != nullptr && layout()->hasHeightForWidth()) {
      setMinimumHeight(layout()->minimumHeightForWidth(width()));
    }
  }
};

}  // namespace

ScenarioTab::ScenarioTab(std::shared_ptr<ScenarioViewController> controller, const QString& name)
    : controller_(std::move(controller)),
      bar_(new FlowRow),
      progress_(makeBusyBar(QStringLiteral("Progress"))),
      run_(new QPushButton),
      summary_(new AttributedLabel),
      status_(new QLabel),
      adapter_(new TableModelAdapter(controller_->scenarioDataSource(), this)),
      table_(new TableView(name + QStringLiteral(" table"))) {
  prepareTable();
  auto* upper = new QSplitter(Qt::Horizontal);
  upper->addWidget(makePanel());
  upper->addWidget(makeOutcome(name));
  upper->setStretchFactor(0, 0);
  upper->setStretchFactor(1, 1);
  upper->setSizes({upper->widget(0)->minimumWidth(), QWIDGETSIZE_MAX / 2});
  // The table has all of the width: it has more columns than fit beside the panel.
  auto* split = new QSplitter(Qt::Vertical);
  split->addWidget(upper);
  split->addWidget(table_);
  split->setStretchFactor(0, 3);
  split->setStretchFactor(1, 2);
  split->setSizes({360, 240});
  for (QSplitter* each : {upper, split}) {
    each->setHandleWidth(1);
    each->setChildrenCollapsible(false);
  }
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, spacing::narrow, 0, 0);
  column->setSpacing(spacing::narrow);
  column->addWidget(makeTop());
  column->addWidget(split, 1);

  connect(run_, &QPushButton::clicked, this, [this] {
    if (controller_->isBusy()) {
      controller_->cancelAction();
    } else {
      controller_->runAction();
    }
  });
  connect(table_->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
    if (!isShowingSelection_) {
      const auto rows = table_->selectionModel()->selectedRows();
      controller_->selectRow(rows.size() == 1
                                 ? std::optional(static_cast<std::size_t>(rows.constFirst().row()))
                                 : std::nullopt);
    }
  });
  changes_ = subscribe(controller_->changeHandler, [this] { update(); });
  rowsChanges_ =
      subscribe(controller_->rowsChangeHandler, [this](bool added) { updateRows(added); });
  selectionChanges_ =
      subscribe(controller_->selectionChangeHandler, [this](bool takes) { showSelection(takes); });
  ScenarioTab::update();
}

QWidget* ScenarioTab::makeTop() {
  // The longer of its two texts decides on its width, so that nothing moves.
  run_->setText(QStringLiteral("Cancel"));
  run_->setMinimumWidth(run_->sizeHint().width());
  auto* top = new QWidget;
  auto* row = new QHBoxLayout(top);
  row->setContentsMargins(0, 0, 0, 0);
  row->setSpacing(spacing::narrow);
  row->addWidget(new DatesPickerView(controller_->strategyViewController.queryDatesPicker));
  row->addWidget(run_);
  row->addWidget(progress_);
  row->addStretch(1);
  return top;
}

QWidget* ScenarioTab::makePanel() {
  auto* panel = new StrategyPanel(controller_->strategyViewController);
  auto* scroll = new QScrollArea;
  scroll->setFrameShape(QFrame::NoFrame);
  scroll->setWidgetResizable(true);
  scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  scroll->setWidget(panel);
  scroll->setAccessibleName(QStringLiteral("Strategy"));
  scroll->setMinimumWidth(panel->minimumSizeHint().width() +
                          scroll->verticalScrollBar()->sizeHint().width());
  return scroll;
}

QWidget* ScenarioTab::makeOutcome(const QString& name) {
  summary_->setWordWrap(true);
  summary_->setAccessibleName(QStringLiteral("Summary"));
  status_->setForegroundRole(QPalette::PlaceholderText);
  status_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
  status_->setWordWrap(true);
  auto* chart = new ChartWidget(controller_->scenarioChartView, name + QStringLiteral(" chart"));
  chart->setMinimumHeight(120);

  bar_->setSpacing(spacing::narrow);
  auto* upper = new WrappingColumn;
  auto* column = new QVBoxLayout(upper);
  column->setContentsMargins(spacing::narrow, 0, 0, spacing::narrow);
  column->setSpacing(spacing::narrow);
  column->addLayout(bar_);
  column->addWidget(summary_);
  column->addWidget(chart, 1);
  column->addWidget(status_);
  return upper;
}

void ScenarioTab::prepareTable() {
  // Before there are columns: one that is made wider would count as sized by the user.
  table_->horizontalHeader()->setMinimumSectionSize(leastColumnWidth);
  table_->setLeastStretchedWidth(leastNameWidth);
  table_->setTable(adapter_, controller_->scenarioDataSource());
  table_->setSelectionMode(QAbstractItemView::SingleSelection);
  new FrozenColumns(*table_, 1);
}

void ScenarioTab::update() {
  const bool isBusy = controller_->isBusy();
  const ProgressIndicator progress = controller_->progress();
  progress_->setVisible(isBusy);
  progress_->setRange(0, progress.isIndeterminate ? 0 : progressSteps);
  if (!progress.isIndeterminate) {
    progress_->setValue(static_cast<int>(progressSteps * progress.value / progress.maximum));
  }
  run_->setText(isBusy ? QStringLiteral("Cancel") : QStringLiteral("Run"));
  summary_->setAttributedText(controller_->summaryTextLabel());
  status_->setText(qtText(controller_->statusText()));
}

void ScenarioTab::updateRows(bool areAppended) {
  // The first rows decide on the width of the columns, until all are there.
  if (areAppended && adapter_->rowCount() > 0) {
    adapter_->appendRows();
    return;
  }
  isShowingSelection_ = true;
  adapter_->reload();
  isShowingSelection_ = false;
  showSelection(false);
}

void ScenarioTab::showSelection(bool takesKeyboard) {
  isShowingSelection_ = true;
  table_->chooseRow(controller_->selectedRow());
  if (takesKeyboard) {
    table_->setFocus();
  }
  isShowingSelection_ = false;
}

}  // namespace corvane::desktop
