#include "desktop/reports/overview_view.h"

#include <QHBoxLayout>
#include <QItemSelectionModel>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>
#include <cstdint>
#include <utility>

#include "desktop/charts/chart_widget.h"
#include "desktop/controls/dates_picker_view.h"
#include "desktop/controls/table_view.h"
#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"
#include "desktop/reports/report_parts.h"

namespace corvane::desktop {
namespace {

constexpr int mostPortfolioLines = 12;
constexpr int mostHoldingLines = 40;
constexpr int mostCurrencyLines = 8;
constexpr int widestPortfolioLines = 1150;
constexpr int widestCurrencyLines = 700;
constexpr int leastOverviewHeight = 230;

}  // namespace

OverviewView::OverviewView(std::shared_ptr<PortfoliosOverviewViewController> controller,
                           QueryDatesPicker& days, QWidget* parent)
    : ReportView(controller, QStringLiteral("Working out the chart"), parent),
      controller_(std::move(controller)) {
  const auto writes = [this](OverviewSection section) {
    return [this, section] { exportHandler(controller_->makeExporter(section)); };
  };
  addChoice(
      makeExportButton({{QStringLiteral("&Portfolios…"), writes(OverviewSection::portfolios)},
                        {QStringLiteral("&Holdings…"), writes(OverviewSection::holdings)},
                        {QStringLiteral("&Currencies…"), writes(OverviewSection::currencies)}}));
  auto* picker = new DatesPickerView(days);
  auto* line = new QHBoxLayout;
  line->setContentsMargins(0, spacing::narrow, 0, 0);
  line->addWidget(picker);
  line->addStretch(1);
  page().column().addLayout(line);
  auto* chart = new ChartWidget(controller_->chart, QStringLiteral("Value of all portfolios"));
  chart->setMinimumHeight(leastOverviewHeight);
  page().column().addWidget(chart, 1);
  addTables();
  addNotes();
  warning().retry = [this] { controller_->retryAction(); };
  warning().leaveOut = [this] { controller_->leaveOutAction(); };
  showState();
}

void OverviewView::addTables() {
  List& portfolios =
      addList(QStringLiteral("Portfolios"), QStringLiteral("Return opens the portfolio of a row"),
              QStringLiteral("overviewPortfolios"), controller_->portfolioTable, mostPortfolioLines,
              [this](std::size_t row) {
                return std::to_string(reinterpret_cast<std::uintptr_t>(
                    controller_->portfolioTable.records()[row].portfolio.get()));
              });
  const List& holdings =
      addList(QStringLiteral("Holdings"), QStringLiteral("Return opens the equity of a row"),
              QStringLiteral("overviewHoldings"), controller_->holdingTable, mostHoldingLines,
              [this](std::size_t row) { return controller_->holdingTable.records()[row].key(); });
  List& currencies = addList(
      QStringLiteral("Currencies"),
      QStringLiteral("What equities and cash are held in, each in the currency it is traded in"),
      QStringLiteral("overviewCurrencies"), controller_->currencyTable, mostCurrencyLines,
      [this](std::size_t row) {
        return std::string(controller_->currencyTable.records()[row].currency.code);
      });
  portfolios.table->setMaximumWidth(widestPortfolioLines);
  currencies.table->setMaximumWidth(widestCurrencyLines);
  connect(portfolios.table, &QTableView::activated, this, [this](const QModelIndex& index) {
    controller_->openPortfolioRow(static_cast<std::size_t>(index.row()));
  });
  connect(holdings.table, &QTableView::activated, this, [this](const QModelIndex& index) {
    controller_->openHoldingRow(static_cast<std::size_t>(index.row()));
  });
}

OverviewView::List& OverviewView::addList(const QString& heading, const QString& help,
                                          const QString& objectName, const TableModel& model,
                                          int mostRows,
                                          std::function<std::string(std::size_t)> keyOf) {
  page().addHeading(heading, help);
  auto* adapter = new TableModelAdapter(model, this);
  // The source list and the tab of a portfolio have lists with the names of the headings.
  const QString name = QStringLiteral("All ") + heading.toLower();
  TableView* table = page().addTable(adapter, model, name, objectName,
                                     [this](const TrailMaker& trail) { explain(trail); });
  lists_.push_back(std::make_unique<List>(List{adapter, table, mostRows, std::move(keyOf)}));
  List& list = *lists_.back();
  connect(table->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
          [this, &list](const QModelIndex& current) {
            if (!isShowing_ && current.isValid()) {
              list.chosen = list.keyOf(static_cast<std::size_t>(current.row()));
            }
          });
  return list;
}

void OverviewView::showState() {
  ReportView::showState();
  isShowing_ = true;
  for (const auto& list : lists_) {
    showList(*list);
  }
  isShowing_ = false;
}

/// Writes into the rows that there are; only another number of them makes the table anew.
void OverviewView::showList(List& list) {
  list.table->setPlaceholderText(qtText(controller_->message()));
  list.adapter->update();
  list.table->fitColumns();
  const auto rows = static_cast<std::size_t>(list.adapter->rowCount());
  const QModelIndex current = list.table->currentIndex();
  for (std::size_t row = 0; list.chosen && row < rows; ++row) {
    if (list.keyOf(row) == *list.chosen) {
      if (!current.isValid() || static_cast<std::size_t>(current.row()) != row) {
        list.table->chooseRow(row);
      }
      break;
    }
  }
  fitHeight(*list.table, list.mostRows);
}

}  // namespace corvane::desktop
