#include "desktop/portfolio/holdings_tab.h"

#include <QLabel>
#include <QSplitter>
#include <QVBoxLayout>

#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"
#include "desktop/portfolio/pie_chart_widget.h"
#include "desktop/portfolio/table_view.h"

namespace corvane::desktop {

HoldingsTab::HoldingsTab(std::shared_ptr<PortfolioHoldingsViewController> controller,
                         QWidget* parent)
    : QWidget(parent),
      controller_(std::move(controller)),
      title_(new QLabel),
      adapter_(new TableModelAdapter(*controller_, this)),
      table_(new TableView(QStringLiteral("Holdings"))),
      pie_(new PieChartWidget(QStringLiteral("Holdings by market value"))) {
  title_->setFont(theme::font(1, QFont::DemiBold));
  table_->setTable(adapter_, *controller_);

  auto* split = new QSplitter(Qt::Horizontal);
  split->setHandleWidth(1);
  split->addWidget(table_);
  split->addWidget(pie_);
  split->setStretchFactor(0, 1);
  split->setCollapsible(0, false);
  split->setSizes({10000, pie_->sizeHint().width()});

  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, spacing::narrow, 0, 0);
  column->setSpacing(spacing::narrow);
  column->addWidget(title_);
  column->addWidget(split, 1);
  controller_->changeHandler = [this] { showState(); };
  showState();
}

HoldingsTab::~HoldingsTab() {
  controller_->changeHandler = [] {};
}

void HoldingsTab::showState() {
  title_->setText(qtText(controller_->title()));
  adapter_->reload();
  table_->setPlaceholderText(qtText(controller_->pie().noDataText));
  pie_->setPie(controller_->pie());
}

}  // namespace corvane::desktop
