#include "desktop/equity/overview_tab.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QSplitter>
#include <QVBoxLayout>

#include "desktop/charts/chart_widget.h"
#include "desktop/controls/busy_bar.h"
#include "desktop/controls/flow_row.h"
#include "desktop/controls/table_view.h"
#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"

namespace corvane::desktop {
namespace {

constexpr int eventsWidth = 270;
constexpr int leastEventsWidth = 236;
constexpr int leastDateWidth = 86;
constexpr int busyWidth = 48;
constexpr int chosenPadding = 9;

}  // namespace

OverviewTab::OverviewTab(std::shared_ptr<OverviewViewController> controller, QWidget* parent)
    : QWidget(parent),
      controller_(std::move(controller)),
      periods_(new QButtonGroup(this)),
      fetching_(makeBusyBar(QStringLiteral("Fetching prices"))),
      days_(new QLabel),
      note_(new QLabel),
      status_(new QLabel),
      adapter_(new TableModelAdapter(controller_->eventsTable(), this)),
      events_(new TableView(QStringLiteral("Splits and dividends"))) {
  auto* chart = new ChartWidget(controller_->chart, QStringLiteral("Prices"));
  chart->setMinimumHeight(160);
  for (QLabel* label : {note_, status_}) {
    label->setForegroundRole(QPalette::PlaceholderText);
    label->setWordWrap(true);
  }
  auto* left = new QWidget;
  auto* leftColumn = new QVBoxLayout(left);
  leftColumn->setContentsMargins(0, 0, spacing::narrow, 0);
  leftColumn->setSpacing(spacing::narrow);
  leftColumn->addWidget(makePeriods());
  leftColumn->addWidget(chart, 1);
  auto* foot = new QHBoxLayout;
  days_->setWordWrap(true);
  foot->addWidget(days_, 1);
  foot->addWidget(note_);
  foot->addWidget(status_, 1);
  status_->setAlignment(Qt::AlignRight);
  leftColumn->addLayout(foot);

  auto* split = new QSplitter(Qt::Horizontal);
  split->setHandleWidth(1);
  split->setChildrenCollapsible(false);
  split->addWidget(left);
  split->addWidget(makeEvents());
  split->setStretchFactor(0, 1);
  split->setStretchFactor(1, 0);
  split->setSizes({700, eventsWidth});
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, spacing::narrow, 0, 0);
  column->addWidget(split);

  changes_ = subscribe(controller_->changeHandler, [this] { update(); });
  eventsChanges_ = subscribe(controller_->eventsChangeHandler, [this] { updateEvents(); });
  update();
  updateEvents();
}

QWidget* OverviewTab::makePeriods() {
  auto* bar = new QWidget;
  auto* row = new FlowRow(bar);
  row->setSpacing(2);
  int segment = 0;
  for (const auto& preset : OverviewViewController::periodPresets) {
    auto* button = new QPushButton(qtText(preset.label));
    button->setCheckable(true);
    button->setAutoExclusive(true);
    button->setAutoDefault(false);
    button->setAccessibleName(QStringLiteral("Period ") + qtText(preset.label));
    // Bold, and with the padding of the one that is chosen.
    const QFontMetrics chosen(theme::font(1, QFont::DemiBold));
    button->setMinimumWidth(chosen.horizontalAdvance(button->text()) + 2 * chosenPadding + 1);
    button->setMaximumWidth(button->minimumWidth() + spacing::tight);
    periods_->addButton(button, segment++);
    row->addWidget(button);
  }
  fetching_->setFixedWidth(busyWidth);
  row->addWidget(fetching_);
  connect(periods_, &QButtonGroup::idToggled, this, [this](int chosen, bool isOn) {
    if (isOn && static_cast<std::size_t>(chosen) != controller_->selectedPeriod()) {
      controller_->selectPeriod(static_cast<std::size_t>(chosen));
    }
  });
  return bar;
}

QWidget* OverviewTab::makeEvents() {
  auto* splits = new QCheckBox(QStringLiteral("&Splits"));
  auto* dividends = new QCheckBox(QStringLiteral("&Dividends"));
  splits->setChecked(controller_->eventsTable().showsSplits());
  dividends->setChecked(controller_->eventsTable().showsDividends());
  connect(splits, &QCheckBox::toggled, this, [this](bool on) { controller_->setShowsSplits(on); });
  connect(dividends, &QCheckBox::toggled, this,
          [this](bool on) { controller_->setShowsDividends(on); });
  events_->setLeastStretchedWidth(leastDateWidth);
  events_->setTable(adapter_, controller_->eventsTable());

  auto* box = new QWidget;
  box->setMinimumWidth(leastEventsWidth);
  auto* column = new QVBoxLayout(box);
  column->setContentsMargins(spacing::narrow, 0, 0, 0);
  column->setSpacing(spacing::narrow);
  auto* filters = new QHBoxLayout;
  filters->addWidget(splits);
  filters->addWidget(dividends);
  filters->addStretch(1);
  column->addLayout(filters);
  column->addWidget(events_, 1);
  return box;
}

void OverviewTab::update() {
  if (auto* button = periods_->button(static_cast<int>(controller_->selectedPeriod()))) {
    button->setChecked(true);
  }
  fetching_->setVisible(controller_->isFetching());
  days_->setText(qtText(controller_->dateRangeText()));
  note_->setText(qtText(controller_->priceAdjustmentText().value_or("")));
  note_->setVisible(controller_->priceAdjustmentText().has_value());
  status_->setText(qtText(controller_->statusText()));
}

void OverviewTab::updateEvents() {
  adapter_->reload();
  events_->setPlaceholderText(controller_->eventsTable().allEquityEvents().empty()
                                  ? QStringLiteral("No splits and no dividends known.")
                                  : QStringLiteral("Hidden by the check boxes above."));
  events_->scrollToTop();
  update();
}

}  // namespace corvane::desktop
