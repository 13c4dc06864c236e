#include "desktop/reports/returns_view.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include "desktop/charts/chart_widget.h"
#include "desktop/controls/equity_combo_box_view.h"
#include "desktop/controls/table_view.h"
#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"
#include "desktop/reports/report_parts.h"

namespace corvane::desktop {
namespace {

constexpr int mostRowsShown = 14;
constexpr int widestTable = 1150;
constexpr int leastIndexHeight = 210;
constexpr int drawdownHeight = 120;

}  // namespace

ReturnsView::ReturnsView(std::shared_ptr<ReturnsViewController> controller, QWidget* parent)
    : ReportView(controller, QStringLiteral("Computing returns"), parent),
      controller_(std::move(controller)),
      equity_(new QComboBox),
      monthAdapter_(new TableModelAdapter(controller_->monthTable, this)),
      equityAdapter_(new TableModelAdapter(controller_->equityTable, this)),
      reconciliationAdapter_(new TableModelAdapter(controller_->reconciliationTable, this)) {
  addChoices();
  auto* index =
      new ChartWidget(controller_->returnsChart, QStringLiteral("Return since the first day"));
  auto* drawdown =
      new ChartWidget(controller_->drawdownChart, QStringLiteral("Below the highest point"));
  index->setMinimumHeight(leastIndexHeight);
  drawdown->setFixedHeight(drawdownHeight);
  page().column().addWidget(index, 1);
  page().column().addWidget(drawdown);
  addNotes();
  addTables();
  warning().retry = [this] { controller_->retryAction(); };
  warning().leaveOut = [this] { controller_->leaveOutAction(); };
  showState();
}

void ReturnsView::addChoices() {
  equity_->setAccessibleName(QStringLiteral("Equity"));
  equity_->setSizeAdjustPolicy(QComboBox::AdjustToContents);
  auto* benchmark = new EquityComboBoxView(controller_->benchmarkBox, QStringLiteral("Benchmark"));
  benchmark->setMinimumWidth(190);
  benchmark->setToolTip(QStringLiteral("An equity to compare with, its dividends included"));
  auto* label = new QLabel(QStringLiteral("Com&pare with:"));
  label->setBuddy(benchmark);
  addChoice(equity_);
  heading().addWidget(label);
  heading().addWidget(benchmark);
  connect(equity_, &QComboBox::activated, this, [this](int index) {
    controller_->chooseEquity(
        index == 0 ? nullptr : controller_->equities().at(static_cast<std::size_t>(index - 1)));
  });
}

void ReturnsView::addTables() {
  page().addHeading(QStringLiteral("By month"),
                    QStringLiteral("Time-weighted returns, linked by month and by year"));
  months_ = addTable(monthAdapter_, controller_->monthTable, QStringLiteral("Returns by month"),
                     QStringLiteral("returnsByMonth"));
  equitiesHeading_ = page().addHeading(QStringLiteral("By equity"));
  equities_ = addTable(equityAdapter_, controller_->equityTable,
                       QStringLiteral("Returns by equity"), QStringLiteral("returnsByEquity"));
  page().addHeading(QStringLiteral("Reconciliation"),
                    QStringLiteral("What made of the opening value the closing value"));
  reconciliation_ =
      addTable(reconciliationAdapter_, controller_->reconciliationTable,
               QStringLiteral("Reconciliation"), QStringLiteral("returnsReconciliation"));
  // Years beside their months, and amounts beside what they are, also in a wide window.
  for (TableView* table : {months_, reconciliation_}) {
    table->setMaximumWidth(widestTable);
  }
  connect(equities_, &QTableView::activated, this, [this](const QModelIndex& index) {
    controller_->openRow(static_cast<std::size_t>(index.row()));
  });
}

TableView* ReturnsView::addTable(TableModelAdapter* adapter, const TableModel& model,
                                 const QString& name, const QString& objectName) {
  return page().addTable(adapter, model, name, objectName,
                         [this](const TrailMaker& trail) { explain(trail); });
}

void ReturnsView::showState() {
  ReportView::showState();
  showChoices();
  showTables();
}

void ReturnsView::showChoices() {
  const QSignalBlocker block(equity_);
  equity_->clear();
  equity_->addItem(QStringLiteral("All"));
  int chosen = 0;
  for (const EquityPointer& equity : controller_->equities()) {
    equity_->addItem(qtText(equity->symbol));
    if (equity == controller_->chosenEquity()) {
      chosen = equity_->count() - 1;
    }
  }
  equity_->setCurrentIndex(chosen);
  equity_->setVisible(!controller_->equities().empty());
}

void ReturnsView::showTables() {
  for (TableModelAdapter* adapter : {monthAdapter_, equityAdapter_, reconciliationAdapter_}) {
    adapter->reload();
  }
  const QString empty = qtText(controller_->message());
  for (TableView* table : {months_, equities_, reconciliation_}) {
    table->setPlaceholderText(empty);
    fitHeight(*table, mostRowsShown);
  }
  fitHeight(*reconciliation_, 2 * mostRowsShown);
  const bool hasEquities =
      controller_->equityTable.numberOfRows() > 0 || !controller_->message().empty();
  equitiesHeading_->setVisible(hasEquities);
  equities_->setVisible(hasEquities);
}

}  // namespace corvane::desktop
