#include "desktop/reports/coverage_view.h"

#include <QHBoxLayout>
#include <QItemSelectionModel>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

#include "desktop/controls/busy_bar.h"
#include "desktop/controls/table_view.h"
#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"
#include "desktop/reports/coverage_bar.h"
#include "desktop/reports/report_heading.h"
#include "desktop/reports/report_parts.h"
#include "presentation/coverage/coverage_tables.h"

namespace corvane::desktop {
namespace {

constexpr int mostLines = 16;
constexpr int mostStretches = 12;
constexpr int widestStretches = 900;
constexpr int fetchSteps = 1000;
constexpr int progressWidth = 160;

}  // namespace

CoverageView::CoverageView(std::shared_ptr<CoverageViewController> controller, QWidget* parent)
    : QWidget(parent),
      controller_(std::move(controller)),
      busy_(makeBusyBar(QStringLiteral("Looking at what is kept"))),
      heading_(new ReportHeading(busy_)),
      progress_(new QProgressBar),
      fetch_(new QPushButton),
      notice_(new QLabel),
      page_(new ReportPage),
      figures_(new FiguresRow),
      lineAdapter_(new TableModelAdapter(controller_->table, this)),
      stretchAdapter_(new TableModelAdapter(controller_->stretches, this)),
      lines_(new TableView(QStringLiteral("Coverage by equity"))),
      stretches_(new TableView(QStringLiteral("Stretches of days"))) {
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, spacing::narrow, 0, 0);
  column->setSpacing(spacing::narrow);
  addChoices();
  column->addWidget(heading_);
  column->addWidget(notice_);
  column->addWidget(page_, 1);
  page_->column().addWidget(figures_);
  addTables();
  page_->column().addStretch(1);
  changes_ = subscribe(controller_->changeHandler, [this] { showState(); });
  lineChanges_ = subscribe(controller_->table.changeHandler, [this] { showLines(); });
  stretchChanges_ = subscribe(controller_->stretches.changeHandler, [this] { showStretches(); });
  showLines();
  showStretches();
  showState();
}

void CoverageView::addChoices() {
  notice_->setWordWrap(true);
  notice_->setTextFormat(Qt::PlainText);
  notice_->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  progress_->setRange(0, fetchSteps);
  progress_->setFixedWidth(progressWidth);
  progress_->setAccessibleName(QStringLiteral("Fetching what is missing"));
  heading_->choices().addWidget(progress_);
  heading_->choices().addWidget(fetch_);
  // One button for both, so that the keyboard stays where it is.
  connect(fetch_, &QPushButton::clicked, this, [this] {
    if (controller_->isFetching()) {
      controller_->cancelAction();
    } else {
      controller_->fetchAction();
    }
  });
}

void CoverageView::addTables() {
  lines_->setObjectName(QStringLiteral("coverage"));
  lines_->setTable(lineAdapter_, controller_->table);
  lines_->setSelectionMode(QAbstractItemView::SingleSelection);
  lines_->setItemDelegateForColumn(lines_->columnWithIdentifier(coverageBarColumn),
                                   new CoverageBarDelegate(*controller_, this));
  page_->column().addWidget(new CoverageLegend);
  page_->column().addWidget(lines_);
  stretchHeading_ = page_->addHeading(QString());
  stretches_->setObjectName(QStringLiteral("coverageStretches"));
  stretches_->setTable(stretchAdapter_, controller_->stretches);
  stretches_->setMaximumWidth(widestStretches);
  page_->column().addWidget(stretches_);
  connect(lines_->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
          [this] { chooseCurrent(); });
  connect(lines_, &QTableView::activated, this, [this](const QModelIndex& index) {
    controller_->openRow(static_cast<std::size_t>(index.row()));
  });
}

void CoverageView::chooseCurrent() {
  const QModelIndex current = lines_->currentIndex();
  if (!isShowing_ && current.isValid()) {
    controller_->chooseRow(static_cast<std::size_t>(current.row()));
  }
}

void CoverageView::showState() {
  heading_->setTitle(qtText(controller_->title()));
  const bool isFetching = controller_->isFetching();
  busy_->setVisible(controller_->isBusy() && !isFetching);
  progress_->setVisible(isFetching);
  progress_->setValue(static_cast<int>(controller_->progress() * fetchSteps));
  fetch_->setText(isFetching ? QStringLiteral("&Cancel")
                             : QStringLiteral("&Fetch What Is Missing"));
  fetch_->setEnabled(isFetching || controller_->canFetch());
  notice_->setText(qtText(controller_->notice()));
  notice_->setVisible(!controller_->notice().empty());
  figures_->setFigures(controller_->figures());
  lines_->setPlaceholderText(qtText(controller_->message()));
  const auto row = controller_->chosenRow();
  stretchHeading_->setText(
      row ? QStringLiteral("Days of ") +
                qtText(controller_->table.records()[*row].coverage.equity->symbol)
          : QString());
  stretchHeading_->setVisible(row.has_value());
  stretches_->setVisible(row.has_value());
}

void CoverageView::showLines() {
  isShowing_ = true;
  lineAdapter_->reload();
  lines_->chooseRow(controller_->chosenRow());
  isShowing_ = false;
  fitHeight(*lines_, mostLines);
}

void CoverageView::showStretches() {
  stretchAdapter_->reload();
  fitHeight(*stretches_, mostStretches);
}

}  // namespace corvane::desktop
