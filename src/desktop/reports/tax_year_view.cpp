#include "desktop/reports/tax_year_view.h"

#include <QAction>
#include <QComboBox>
#include <QFrame>
#include <QHBoxLayout>
#include <QItemSelectionModel>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>
#include <algorithm>

#include "desktop/controls/busy_bar.h"
#include "desktop/controls/table_view.h"
#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"
#include "desktop/reports/report_heading.h"
#include "desktop/reports/report_parts.h"
#include "desktop/reports/tax_roles_dialog.h"

namespace corvane::desktop {
namespace {

constexpr int mostTaxRows = 16;

}  // namespace

TaxYearView::TaxYearView(std::shared_ptr<TaxYearViewController> controller, QWidget* parent)
    : QWidget(parent),
      controller_(std::move(controller)),
      year_(new QComboBox),
      person_(new QComboBox),
      busy_(makeBusyBar(QStringLiteral("Computing the tax year"))),
      heading_(new ReportHeading(busy_)),
      bannerText_(new QLabel),
      banner_(makeBanner()),
      page_(new ReportPage),
      figures_(new FiguresRow) {
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, spacing::narrow, 0, 0);
  column->setSpacing(spacing::narrow);
  addChoices();
  column->addWidget(heading_);
  column->addWidget(banner_);
  column->addWidget(page_, 1);
  figures_->explain = [this](const ReportFigure& figure) {
    controller_->explainHandler(figure.explain);
  };
  page_->column().addWidget(figures_);
  page_->addHeading(QStringLiteral("Disposals"));
  TableView* disposals =
      addTable(QStringLiteral("Disposals"), QStringLiteral("taxDisposals"), controller_->disposals);
  page_->addHeading(QStringLiteral("Totals"));
  addTable(QStringLiteral("Totals"), QStringLiteral("taxTotals"), controller_->totals);
  page_->addHeading(QStringLiteral("Income"));
  addTable(QStringLiteral("Income"), QStringLiteral("taxIncome"), controller_->income);
  page_->addHeading(
      QStringLiteral("To check"),
      QStringLiteral("Deemed gains, and what a person has to look at: it is not computed"));
  TableView* check =
      addTable(QStringLiteral("To check"), QStringLiteral("taxToCheck"), controller_->toCheck);
  page_->addHeading(QStringLiteral("Cost base at the end of the year"));
  addTable(QStringLiteral("Cost base at the end of the year"), QStringLiteral("taxCosts"),
           controller_->costs);
  footnote_ = page_->addNote();
  page_->column().addStretch(1);

  connectTables(*disposals, *check);
  changes_ = subscribe(controller_->changeHandler, [this] { showState(); });
  showState();
}

void TaxYearView::connectTables(TableView& disposals, TableView& check) {
  auto* adjustment = new QAction(QStringLiteral("Record Adjustment…"), &disposals);
  disposals.addAction(adjustment);
  connect(adjustment, &QAction::triggered, this, [this, &disposals] {
    const int row = disposals.currentIndex().row();
    controller_->recordAdjustmentAction(static_cast<std::size_t>(std::max(row, 0)));
  });
  connect(disposals.selectionModel(), &QItemSelectionModel::currentRowChanged, adjustment,
          [this, adjustment](const QModelIndex& current) {
            adjustment->setEnabled(
                current.isValid() &&
                controller_->canRecordAdjustment(static_cast<std::size_t>(current.row())));
          });
  adjustment->setEnabled(false);
  connect(&disposals, &QTableView::activated, this, [this](const QModelIndex& index) {
    controller_->openDisposal(static_cast<std::size_t>(index.row()));
  });
  connect(&check, &QTableView::activated, this, [this](const QModelIndex& index) {
    controller_->openCheck(static_cast<std::size_t>(index.row()));
  });
}

void TaxYearView::addChoices() {
  year_->setAccessibleName(QStringLiteral("Tax year"));
  person_->setAccessibleName(QStringLiteral("Person"));
  person_->setSizeAdjustPolicy(QComboBox::AdjustToContents);
  auto* roles = new QPushButton(QStringLiteral("&Roles and Rules…"));
  roles->setToolTip(QStringLiteral("Whose the portfolios are, and what the year goes by"));
  const auto writes = [this](TaxSection section) {
    return [this, section] { exportHandler(controller_->makeExporter(section)); };
  };
  auto* exports = makeExportButton(
      {{QStringLiteral("&Disposals…"), writes(TaxSection::disposals)},
       {QStringLiteral("&Totals…"), writes(TaxSection::totals)},
       {QStringLiteral("&Income…"), writes(TaxSection::income)},
       {QStringLiteral("To &Check…"), writes(TaxSection::toCheck)},
       {QStringLiteral("Cost &Base at the End of the Year…"), writes(TaxSection::costs)}});
  for (QWidget* choice : {static_cast<QWidget*>(year_), static_cast<QWidget*>(person_),
                          static_cast<QWidget*>(roles), static_cast<QWidget*>(exports)}) {
    heading_->choices().addWidget(choice);
  }
  connect(year_, &QComboBox::activated, this, [this](int index) {
    controller_->chooseYear(controller_->years().at(static_cast<std::size_t>(index)));
  });
  connect(person_, &QComboBox::activated, this,
          [this](int index) { controller_->choosePerson(static_cast<std::size_t>(index)); });
  connect(roles, &QPushButton::clicked, this, &TaxYearView::openRoles);
}

QFrame* TaxYearView::makeBanner() {
  auto* banner = new QFrame;
  banner->setFrameShape(QFrame::StyledPanel);
  bannerText_->setWordWrap(true);
  bannerText_->setTextFormat(Qt::PlainText);
  auto* answer = new QPushButton(QStringLiteral("Say &Whose…"));
  auto* row = new QHBoxLayout(banner);
  row->setContentsMargins(spacing::narrow, spacing::tight, spacing::narrow, spacing::tight);
  row->addWidget(bannerText_, 1);
  row->addWidget(answer);
  connect(answer, &QPushButton::clicked, this, &TaxYearView::openRoles);
  return banner;
}

TableView* TaxYearView::addTable(const QString& name, const QString& objectName,
                                 const TableModel& model) {
  adapters_.push_back(new TableModelAdapter(model, this));
  tables_.push_back(
      page_->addTable(adapters_.back(), model, name, objectName,
                      [this](const TrailMaker& trail) { controller_->explainHandler(trail); }));
  return tables_.back();
}

void TaxYearView::openRoles() {
  if (auto form = controller_->makeRolesForm()) {
    TaxRolesDialog::open(this, std::move(form));
  }
}

void TaxYearView::showState() {
  heading_->setTitle(qtText(controller_->title()));
  busy_->setVisible(controller_->isBusy());
  bannerText_->setText(qtText(controller_->banner()));
  banner_->setVisible(!controller_->banner().empty());
  banner_->setAccessibleName(qtText(controller_->banner()));
  figures_->setFigures(controller_->figures());
  footnote_->setText(qtText(controller_->footnote()));
  showChoices();
  for (std::size_t i = 0; i < tables_.size(); ++i) {
    adapters_[i]->reload();
    tables_[i]->setPlaceholderText(i == 0 ? qtText(controller_->message())
                                          : QStringLiteral("Nothing in this year."));
    fitHeight(*tables_[i], mostTaxRows);
  }
}

void TaxYearView::showChoices() {
  const QSignalBlocker blockYear(year_);
  const QSignalBlocker blockPerson(person_);
  year_->clear();
  for (const int year : controller_->years()) {
    year_->addItem(qtText(controller_->yearTitle(year)));
    if (year == controller_->chosenYear()) {
      year_->setCurrentIndex(year_->count() - 1);
    }
  }
  person_->clear();
  for (const std::string& person : controller_->persons()) {
    person_->addItem(qtText(person));
  }
  person_->setCurrentIndex(static_cast<int>(controller_->chosenPerson()));
}

}  // namespace corvane::desktop
