#include "desktop/equity/history_tab.h"

#include <QHBoxLayout>
#include <QItemSelectionModel>
#include <QLabel>
#include <QProgressBar>
#include <QSplitter>
#include <QTimer>
#include <QVBoxLayout>
#include <utility>

#include "desktop/charts/chart_widget.h"
#include "desktop/controls/busy_bar.h"
#include "desktop/controls/dates_picker_view.h"
#include "desktop/controls/table_view.h"
#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"

namespace corvane::desktop {

HistoryTab::HistoryTab(std::shared_ptr<HistoryViewController> controller, QWidget* parent)
    : QWidget(parent),
      controller_(std::move(controller)),
      fetching_(makeBusyBar(QStringLiteral("Fetching prices"))),
      note_(new QLabel),
      status_(new QLabel),
      adapter_(new TableModelAdapter(controller_->table(), this)),
      table_(new TableView(QStringLiteral("Price history"))) {
  table_->setObjectName(QStringLiteral("history"));
  table_->setTable(adapter_, controller_->table());
  table_->setSelectionMode(QAbstractItemView::SingleSelection);

  auto* split = new QSplitter(Qt::Vertical);
  split->setHandleWidth(1);
  split->setChildrenCollapsible(false);
  split->addWidget(makeUpper());
  split->addWidget(table_);
  split->setStretchFactor(0, 1);
  split->setStretchFactor(1, 1);
  split->setSizes({320, 260});
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, spacing::narrow, 0, 0);
  column->addWidget(split);

  connect(table_->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
    if (!isShowingSelection_) {
      const auto rows = table_->selectionModel()->selectedRows();
      controller_->selectRow(
          rows.isEmpty() ? std::nullopt
                         : std::optional(static_cast<std::size_t>(rows.constFirst().row())));
    }
  });
  changes_ = subscribe(controller_->changeHandler, [this] { update(); });
  rowsChanges_ = subscribe(controller_->rowsChangeHandler, [this] { updateRows(); });
  selectionChanges_ =
      subscribe(controller_->selectionChangeHandler, [this](bool takes) { showSelection(takes); });
  update();
  updateRows();
}

QWidget* HistoryTab::makeUpper() {
  auto* chart = new ChartWidget(controller_->chart, QStringLiteral("Price history"));
  chart->setMinimumHeight(120);
  for (QLabel* label : {note_, status_}) {
    label->setForegroundRole(QPalette::PlaceholderText);
    label->setWordWrap(true);
  }
  status_->setAlignment(Qt::AlignRight);
  auto* picker = new QHBoxLayout;
  picker->setSpacing(spacing::narrow);
  picker->addWidget(new DatesPickerView(controller_->datesPicker));
  picker->addWidget(fetching_);
  picker->addStretch(1);
  auto* foot = new QHBoxLayout;
  foot->addWidget(note_);
  foot->addWidget(status_, 1);

  auto* upper = new QWidget;
  auto* column = new QVBoxLayout(upper);
  column->setContentsMargins(0, 0, 0, spacing::narrow);
  column->setSpacing(spacing::narrow);
  column->addLayout(picker);
  column->addWidget(chart, 1);
  column->addLayout(foot);
  return upper;
}

void HistoryTab::update() {
  fetching_->setVisible(controller_->isFetching());
  note_->setText(qtText(controller_->priceAdjustmentText().value_or("")));
  note_->setVisible(controller_->priceAdjustmentText().has_value());
  status_->setText(qtText(controller_->statusText()));
}

void HistoryTab::updateRows() {
  isShowingSelection_ = true;
  adapter_->reload();
  isShowingSelection_ = false;
  table_->setPlaceholderText(qtText(controller_->chart.noDataText));
  isNewestWanted_ = true;
  scrollToNewest();
  showSelection(false);
  update();
}

void HistoryTab::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  scrollToNewest();
}

/// A table knows where its rows are only once it has its size, and has been laid out.
void HistoryTab::scrollToNewest() {
  QTimer::singleShot(0, this, [this] {
    if (!isVisible() || !std::exchange(isNewestWanted_, false)) {
      return;
    }
    if (const auto row = controller_->rowToScrollTo(); row && !controller_->selectedRow()) {
      table_->doItemsLayout();
      table_->scrollTo(adapter_->index(static_cast<int>(*row), 0),
                       QAbstractItemView::PositionAtCenter);
    }
  });
}

void HistoryTab::showSelection(bool takesKeyboard) {
  isShowingSelection_ = true;
  table_->chooseRow(controller_->selectedRow());
  if (takesKeyboard) {
    table_->setFocus();
  }
  isShowingSelection_ = false;
}

}  // namespace corvane::desktop
