#include "desktop/portfolio/gains_tab.h"

#include <QLabel>
#include <QVBoxLayout>

#include "desktop/controls/table_view.h"
#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"

namespace corvane::desktop {

GainsTab::GainsTab(std::shared_ptr<PortfolioGainLossViewController> controller, QWidget* parent)
    : QWidget(parent),
      controller_(std::move(controller)),
      title_(new QLabel),
      adapter_(new TableModelAdapter(*controller_, this)),
      table_(new TableView(QStringLiteral("Realized gains and losses"))) {
  title_->setFont(theme::font(1, QFont::DemiBold));
  title_->setWordWrap(true);
  table_->setObjectName(QStringLiteral("gains"));
  table_->setTable(adapter_, *controller_);
  table_->setPlaceholderText(QStringLiteral("Nothing was bought or sold in these days."));

  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, spacing::narrow, 0, 0);
  column->setSpacing(spacing::narrow);
  column->addWidget(title_);
  column->addWidget(table_, 1);
  // Return or a double click.
  connect(table_, &QTableView::activated, this, [this](const QModelIndex& index) {
    controller_->openRow(static_cast<std::size_t>(index.row()));
  });
  changes_ = subscribe(controller_->changeHandler, [this] { showState(); });
  showState();
}

void GainsTab::showState() {
  title_->setText(qtText(controller_->title()));
  adapter_->reload();
}

}  // namespace corvane::desktop
