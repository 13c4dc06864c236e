#include "desktop/portfolio/holdings_tab.h"

#include <QAction>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>
#include <algorithm>

#include "desktop/charts/pie_chart_widget.h"
#include "desktop/controls/explain_command.h"
#include "desktop/controls/table_view.h"
#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"

namespace corvane::desktop {
namespace {

constexpr int leastPieWidth = 172;
constexpr int mostPieWidth = 360;
constexpr int lettersOfSymbol = 9;  // in a small window
constexpr int lettersOfNameBesidePie = 15;

}  // namespace

HoldingsTab::HoldingsTab(std::shared_ptr<PortfolioHoldingsViewController> controller,
                         QWidget* parent)
    : QWidget(parent),
      controller_(std::move(controller)),
      title_(new QLabel),
      adapter_(new TableModelAdapter(*controller_, this)),
      table_(new TableView(QStringLiteral("Holdings"))),
      pie_(new PieChartWidget(QStringLiteral("Holdings by market value"))) {
  title_->setFont(theme::font(1, QFont::DemiBold));
  table_->setObjectName(QStringLiteral("holdings"));
  // In a small window the symbols are enough; the whole names are in the tooltips.
  table_->setLeastStretchedWidth(theme::widthOfLetters(lettersOfSymbol));
  table_->setTable(adapter_, *controller_);

  auto* row = new QHBoxLayout;
  row->setSpacing(spacing::narrow);
  row->addWidget(table_, 1);
  row->addWidget(pie_);

  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, spacing::narrow, 0, 0);
  column->setSpacing(spacing::narrow);
  column->addWidget(title_);
  column->addLayout(row, 1);
  // Return or a double click.
  connect(table_, &QTableView::activated, this, [this](const QModelIndex& index) {
    controller_->openRow(static_cast<std::size_t>(index.row()));
  });
  auto* returns = new QAction(QStringLiteral("Show Returns"), table_);
  connect(returns, &QAction::triggered, this, [this] {
    controller_->showReturns(static_cast<std::size_t>(std::max(table_->currentIndex().row(), 0)));
  });
  table_->addAction(returns);
  addExplainCommand(*table_, *controller_,
                    [this](const TrailMaker& trail) { controller_->explainHandler(trail); });
  changes_ = subscribe(controller_->changeHandler, [this] { showState(); });
  showState();
}

void HoldingsTab::showState() {
  title_->setText(qtText(controller_->title()));
  adapter_->reload();
  table_->setPlaceholderText(qtText(controller_->pie().noDataText));
  pie_->setPie(controller_->pie());
  shareWidth();
}

void HoldingsTab::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  shareWidth();
}

/// The table has what it needs first. Where the pie would push columns of money out of sight, it
/// gives way as a whole: its shares can be read off the market values.
void HoldingsTab::shareWidth() {
  const int beside = width() - spacing::narrow;
  const int wanted =
      table_->leastWidth() + theme::widthOfLetters(lettersOfNameBesidePie - lettersOfSymbol);
  pie_->setVisible(!controller_->pie().slices.empty() && beside - wanted >= leastPieWidth);
  pie_->setFixedWidth(std::clamp(beside - table_->neededWidth(), leastPieWidth, mostPieWidth));
}

}  // namespace corvane::desktop
