#include "desktop/reports/income_view.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QSignalBlocker>

#include "desktop/charts/chart_widget.h"
#include "desktop/controls/flow_row.h"
#include "desktop/controls/table_view.h"
#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"
#include "desktop/reports/report_parts.h"

namespace corvane::desktop {
namespace {

constexpr int mostIncomeRows = 14;
constexpr int leastBarsHeight = 200;

}  // namespace

IncomeView::IncomeView(std::shared_ptr<IncomeViewController> controller, QWidget* parent)
    : ReportView(controller, QStringLiteral("Computing income"), parent),
      controller_(std::move(controller)),
      year_(new QComboBox),
      byYear_(new QCheckBox(QStringLiteral("&Years beside each other"))),
      monthAdapter_(new TableModelAdapter(controller_->monthTable, this)),
      expectedAdapter_(new TableModelAdapter(controller_->expectedTable, this)) {
  auto* chart = new ChartWidget(controller_->chart, QStringLiteral("Income by month"));
  chart->setMinimumHeight(leastBarsHeight);
  page().column().addWidget(makeKinds());
  page().column().addWidget(chart, 1);
  addTables();
  addNotes();
  warning().retry = [this] { controller_->retryAction(); };
  showState();
}

QWidget* IncomeView::makeKinds() {
  auto* kinds = new QWidget;
  auto* row = new FlowRow(kinds);
  row->setSpacing(spacing::medium);
  for (const IncomeViewController::Kind& kind : IncomeViewController::kinds) {
    auto* box = new QCheckBox(qtText(kind.title));
    connect(box, &QCheckBox::toggled, this,
            [this, type = kind.type](bool isOn) { controller_->setCounts(type, isOn); });
    row->addWidget(box);
    kinds_.push_back(box);
  }
  row->addStretch();
  row->addWidget(byYear_);
  connect(byYear_, &QCheckBox::toggled, this,
          [this](bool isOn) { controller_->setShowsYearsBesideEachOther(isOn); });
  return kinds;
}

void IncomeView::addTables() {
  auto* yearRow = new QHBoxLayout;
  auto* heading = new QLabel(QStringLiteral("Paid &in"));
  heading->setFont(theme::font(1, QFont::DemiBold));
  heading->setBuddy(year_);
  year_->setAccessibleName(QStringLiteral("Year of the table"));
  yearRow->addWidget(heading);
  yearRow->addWidget(year_);
  yearRow->addStretch(1);
  page().column().addLayout(yearRow);
  const auto explains = [this](const TrailMaker& trail) { explain(trail); };
  months_ = page().addTable(monthAdapter_, controller_->monthTable,
                            QStringLiteral("Income by equity and month"),
                            QStringLiteral("incomeByMonth"), explains);
  page().addHeading(
      QStringLiteral("Yields and what to expect"),
      QStringLiteral("Payments of the last twelve months a year later, on the shares of today"));
  expected_ = page().addTable(expectedAdapter_, controller_->expectedTable,
                              QStringLiteral("Yields and expected income"),
                              QStringLiteral("expectedIncome"), explains);
  connect(year_, &QComboBox::activated, this, [this](int index) {
    controller_->chooseYear(controller_->years().at(static_cast<std::size_t>(index)));
  });
  connect(months_, &QTableView::activated, this, [this](const QModelIndex& index) {
    controller_->openMonthRow(static_cast<std::size_t>(index.row()));
  });
  connect(expected_, &QTableView::activated, this, [this](const QModelIndex& index) {
    controller_->openExpectedRow(static_cast<std::size_t>(index.row()));
  });
}

void IncomeView::showState() {
  ReportView::showState();
  showChoices();
  monthAdapter_->reload();
  expectedAdapter_->reload();
  months_->setPlaceholderText(
      qtText("No income recorded in " + std::to_string(controller_->chosenYear()) + "."));
  expected_->setPlaceholderText(QStringLiteral("Nothing is held."));
  fitHeight(*months_, mostIncomeRows);
  fitHeight(*expected_, mostIncomeRows);
}

void IncomeView::showChoices() {
  const QSignalBlocker blockYear(year_);
  const QSignalBlocker blockByYear(byYear_);
  for (std::size_t i = 0; i < kinds_.size(); ++i) {
    const QSignalBlocker block(kinds_[i]);
    kinds_[i]->setChecked(controller_->counts(IncomeViewController::kinds.at(i).type));
  }
  byYear_->setChecked(controller_->showsYearsBesideEachOther());
  year_->clear();
  for (const int year : controller_->years()) {
    year_->addItem(QString::number(year));
    if (year == controller_->chosenYear()) {
      year_->setCurrentIndex(year_->count() - 1);
    }
  }
}

}  // namespace corvane::desktop
