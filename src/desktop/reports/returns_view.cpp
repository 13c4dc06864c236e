#include "desktop/reports/returns_view.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include "desktop/charts/chart_widget.h"
#include "desktop/controls/busy_bar.h"
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
    : QWidget(parent),
      controller_(std::move(controller)),
      title_(new QLabel),
      equity_(new QComboBox),
      currency_(new QComboBox),
      benchmark_(new EquityComboBoxView(controller_->benchmarkBox, QStringLiteral("Benchmark"))),
      busy_(makeBusyBar(QStringLiteral("Computing returns"))),
      warning_(new ReportWarningBar),
      page_(new ReportPage),
      figures_(new FiguresRow),
      notes_(nullptr),
      monthAdapter_(new TableModelAdapter(controller_->monthTable, this)),
      equityAdapter_(new TableModelAdapter(controller_->equityTable, this)),
      reconciliationAdapter_(new TableModelAdapter(controller_->reconciliationTable, this)) {
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, spacing::narrow, 0, 0);
  column->setSpacing(spacing::narrow);
  addChoices(*column);
  column->addWidget(warning_);
  column->addWidget(page_, 1);

  auto* index =
      new ChartWidget(controller_->returnsChart, QStringLiteral("Return since the first day"));
  auto* drawdown =
      new ChartWidget(controller_->drawdownChart, QStringLiteral("Below the highest point"));
  index->setMinimumHeight(leastIndexHeight);
  drawdown->setFixedHeight(drawdownHeight);
  page_->column().addWidget(figures_);
  page_->column().addWidget(index, 1);
  page_->column().addWidget(drawdown);
  notes_ = page_->addNote();
  addTables();

  warning_->retry = [this] { controller_->retryAction(); };
  warning_->leaveOut = [this] { controller_->leaveOutAction(); };
  figures_->explain = [this](const ReportFigure& figure) {
    controller_->explainHandler(figure.explain);
  };
  changes_ = subscribe(controller_->changeHandler, [this] { showState(); });
  showState();
}

ReturnsView::~ReturnsView() {
  // Charts and box give their handlers back, so they go before what holds them.
  delete page_;
  delete benchmark_;
}

void ReturnsView::addChoices(QVBoxLayout& column) {
  title_->setFont(theme::font(1, QFont::DemiBold));
  title_->setWordWrap(true);
  equity_->setAccessibleName(QStringLiteral("Equity"));
  equity_->setSizeAdjustPolicy(QComboBox::AdjustToContents);
  currency_->setAccessibleName(QStringLiteral("Currency of the report"));
  currency_->setSizeAdjustPolicy(QComboBox::AdjustToContents);
  benchmark_->setMinimumWidth(190);
  benchmark_->setToolTip(QStringLiteral("An equity to compare with, its dividends included"));
  auto* label = new QLabel(QStringLiteral("Com&pare with:"));
  label->setBuddy(benchmark_);
  auto* row = new QHBoxLayout;
  row->setSpacing(spacing::narrow);
  row->addWidget(title_, 1);
  row->addWidget(busy_);
  row->addWidget(equity_);
  row->addWidget(currency_);
  row->addWidget(label);
  row->addWidget(benchmark_);
  column.addLayout(row);
  connect(equity_, &QComboBox::activated, this, [this](int index) {
    controller_->chooseEquity(
        index == 0 ? nullptr : controller_->equities().at(static_cast<std::size_t>(index - 1)));
  });
  connect(currency_, &QComboBox::activated, this,
          [this](int index) { controller_->chooseCurrency(static_cast<std::size_t>(index)); });
}

void ReturnsView::addTables() {
  page_->addHeading(QStringLiteral("By month"),
                    QStringLiteral("Time-weighted returns, linked by month and by year"));
  months_ = addTable(monthAdapter_, controller_->monthTable, QStringLiteral("Returns by month"),
                     QStringLiteral("returnsByMonth"));
  equitiesHeading_ = page_->addHeading(QStringLiteral("By equity"));
  equities_ = addTable(equityAdapter_, controller_->equityTable,
                       QStringLiteral("Returns by equity"), QStringLiteral("returnsByEquity"));
  page_->addHeading(QStringLiteral("Reconciliation"),
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
  auto* table = new TableView(name);
  table->setObjectName(objectName);
  table->setTable(adapter, model);
  page_->column().addWidget(table);
  return table;
}

void ReturnsView::showState() {
  title_->setText(qtText(controller_->title()));
  busy_->setVisible(controller_->isBusy());
  warning_->setWarning(controller_->warning());
  figures_->setFigures(controller_->figures());
  QString notes;
  for (const std::string& note : controller_->notes()) {
    notes += (notes.isEmpty() ? "" : "\n") + qtText(note);
  }
  notes_->setText(notes);
  notes_->setVisible(!notes.isEmpty());
  showChoices();
  showTables();
}

void ReturnsView::showChoices() {
  const QSignalBlocker blockEquity(equity_);
  const QSignalBlocker blockCurrency(currency_);
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
  currency_->clear();
  for (const Currency& currency : controller_->currencies()) {
    currency_->addItem(qtText(currency.code));
    if (currency == controller_->currency()) {
      currency_->setCurrentIndex(currency_->count() - 1);
    }
  }
  currency_->setVisible(controller_->currencies().size() > 1);
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
