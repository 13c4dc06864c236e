#include "desktop/reports/income_view.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include "desktop/charts/chart_widget.h"
#include "desktop/controls/busy_bar.h"
#include "desktop/controls/explain_command.h"
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
    : QWidget(parent),
      controller_(std::move(controller)),
      title_(new QLabel),
      currency_(new QComboBox),
      year_(new QComboBox),
      byYear_(new QCheckBox(QStringLiteral("&Years beside each other"))),
      busy_(makeBusyBar(QStringLiteral("Computing income"))),
      warning_(new ReportWarningBar),
      page_(new ReportPage),
      figures_(new FiguresRow),
      monthAdapter_(new TableModelAdapter(controller_->monthTable, this)),
      expectedAdapter_(new TableModelAdapter(controller_->expectedTable, this)),
      months_(new TableView(QStringLiteral("Income by equity and month"))),
      expected_(new TableView(QStringLiteral("Yields and expected income"))) {
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, spacing::narrow, 0, 0);
  column->setSpacing(spacing::narrow);
  column->addWidget(makeHeading());
  column->addWidget(warning_);
  column->addWidget(page_, 1);
  auto* chart = new ChartWidget(controller_->chart, QStringLiteral("Income by month"));
  chart->setMinimumHeight(leastBarsHeight);
  page_->column().addWidget(figures_);
  page_->column().addWidget(makeKinds());
  page_->column().addWidget(chart, 1);
  addTables();
  notes_ = page_->addNote();

  warning_->retry = [this] { controller_->retryAction(); };
  figures_->explain = [this](const ReportFigure& figure) {
    controller_->explainHandler(figure.explain);
  };
  changes_ = subscribe(controller_->changeHandler, [this] { showState(); });
  showState();
}

IncomeView::~IncomeView() {
  // The chart gives its handlers back, so it goes before what holds them.
  delete page_;
}

QWidget* IncomeView::makeHeading() {
  title_->setFont(theme::font(1, QFont::DemiBold));
  title_->setWordWrap(true);
  currency_->setAccessibleName(QStringLiteral("Currency of the report"));
  auto* heading = new QWidget;
  auto* row = new QHBoxLayout(heading);
  row->setContentsMargins(0, 0, 0, 0);
  row->setSpacing(spacing::narrow);
  row->addWidget(title_, 1);
  row->addWidget(busy_);
  row->addWidget(currency_);
  connect(currency_, &QComboBox::activated, this,
          [this](int index) { controller_->chooseCurrency(static_cast<std::size_t>(index)); });
  return heading;
}

QWidget* IncomeView::makeKinds() {
  auto* kinds = new QWidget;
  auto* column = new QVBoxLayout(kinds);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(spacing::narrow);
  auto* row = new QHBoxLayout;
  row->setSpacing(spacing::medium);
  column->addLayout(row);
  // By itself, since a small window has no room for it beside the kinds.
  column->addWidget(byYear_);
  for (const IncomeViewController::Kind& kind : IncomeViewController::kinds) {
    auto* box = new QCheckBox(qtText(kind.title));
    connect(box, &QCheckBox::toggled, this,
            [this, type = kind.type](bool isOn) { controller_->setCounts(type, isOn); });
    row->addWidget(box);
    kinds_.push_back(box);
  }
  row->addStretch(1);
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
  page_->column().addLayout(yearRow);
  months_->setObjectName(QStringLiteral("incomeByMonth"));
  months_->setTable(monthAdapter_, controller_->monthTable);
  page_->column().addWidget(months_);
  page_->addHeading(
      QStringLiteral("Yields and what to expect"),
      QStringLiteral("Payments of the last twelve months a year later, on the shares of today"));
  expected_->setObjectName(QStringLiteral("expectedIncome"));
  expected_->setTable(expectedAdapter_, controller_->expectedTable);
  page_->column().addWidget(expected_);
  addExplainCommand(*expected_, controller_->expectedTable,
                    [this](const TrailMaker& trail) { controller_->explainHandler(trail); });
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
  title_->setText(qtText(controller_->title()));
  busy_->setVisible(controller_->isBusy());
  warning_->setWarning(controller_->warning());
  figures_->setFigures(controller_->figures());
  showChoices();
  monthAdapter_->reload();
  expectedAdapter_->reload();
  months_->setPlaceholderText(
      qtText("No income recorded in " + std::to_string(controller_->chosenYear()) + "."));
  expected_->setPlaceholderText(QStringLiteral("Nothing is held."));
  fitHeight(*months_, mostIncomeRows);
  fitHeight(*expected_, mostIncomeRows);
  QString notes;
  for (const std::string& note : controller_->notes()) {
    notes += (notes.isEmpty() ? "" : "\n") + qtText(note);
  }
  notes_->setText(notes);
  notes_->setVisible(!notes.isEmpty());
}

void IncomeView::showChoices() {
  const QSignalBlocker blockYear(year_);
  const QSignalBlocker blockCurrency(currency_);
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
  currency_->clear();
  for (const Currency& currency : controller_->currencies()) {
    currency_->addItem(qtText(currency.code));
    if (currency == controller_->currency()) {
      currency_->setCurrentIndex(currency_->count() - 1);
    }
  }
  currency_->setVisible(controller_->currencies().size() > 1);
}

}  // namespace corvane::desktop
