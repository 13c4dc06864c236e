#include "desktop/equity/equity_view.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QTabBar>
#include <QTabWidget>
#include <QVBoxLayout>

#include "desktop/equity/history_tab.h"
#include "desktop/equity/overview_tab.h"
#include "desktop/look/attributed_text_view.h"
#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"

namespace corvane::desktop {

EquityView::EquityView(std::shared_ptr<EquityViewController> controller, QWidget* parent)
    : QWidget(parent),
      controller_(std::move(controller)),
      symbol_(new QLabel),
      name_(new QLabel),
      price_(new QLabel),
      summary_(new AttributedLabel),
      watch_(new QPushButton(QStringLiteral("Add to &Watchlist"))),
      tabs_(new QTabWidget) {
  tabs_->setDocumentMode(true);
  tabs_->tabBar()->setDrawBase(false);
  tabs_->setAccessibleName(QStringLiteral("Views of the equity"));
  tabs_->addTab(new OverviewTab(controller_->overview), QStringLiteral("Overview"));
  tabs_->addTab(new HistoryTab(controller_->history), QStringLiteral("History"));

  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(spacing::wide, spacing::wide, spacing::wide, spacing::narrow);
  column->setSpacing(spacing::narrow);
  column->addWidget(makeHeading());
  column->addWidget(tabs_, 1);

  connect(tabs_, &QTabWidget::currentChanged, this,
          [this](int index) { controller_->selectTab(static_cast<std::size_t>(index)); });
  connect(watch_, &QPushButton::clicked, this, [this] { controller_->addToWatchlistAction(); });
  changes_ = subscribe(controller_->changeHandler, [this] { update(); });
  update();
}

void EquityView::addTab(QWidget* tab, const QString& title) {
  tabs_->addTab(tab, title);
  update();
}

QWidget* EquityView::makeHeading() {
  symbol_->setFont(theme::font(1.15, QFont::DemiBold));
  name_->setFont(theme::font(1.15));
  name_->setForegroundRole(QPalette::PlaceholderText);
  // A long name is cut rather than the window made wider; the whole of it is in the tooltip.
  name_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
  price_->setFont(theme::font(2, QFont::DemiBold));
  for (QLabel* label : {symbol_, name_, price_}) {
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    label->setTextFormat(Qt::PlainText);
    // A name that is written from right to left stands where all others do.
    label->setAlignment(Qt::AlignLeft | Qt::AlignVCenter | Qt::AlignAbsolute);
  }
  summary_->setWordWrap(true);

  auto* title = new QHBoxLayout;
  title->setSpacing(spacing::narrow);
  title->addWidget(symbol_);
  title->addWidget(name_, 1);
  auto* texts = new QVBoxLayout;
  texts->setSpacing(0);
  texts->addLayout(title);
  texts->addWidget(price_);
  texts->addWidget(summary_);

  auto* heading = new QWidget;
  auto* row = new QHBoxLayout(heading);
  row->setContentsMargins(0, 0, 0, 0);
  row->addLayout(texts, 1);
  row->addWidget(watch_);
  row->setAlignment(watch_, Qt::AlignTop);
  return heading;
}

void EquityView::update() {
  const EquityHeading& heading = controller_->heading();
  symbol_->setText(qtText(heading.symbol));
  name_->setText(qtText(heading.name));
  name_->setToolTip(qtText(heading.name));
  // Without a price the line stays, so that nothing moves when it comes.
  price_->setText(heading.price.empty() ? QStringLiteral("—") : qtText(heading.price));
  price_->setAccessibleName(heading.price.empty() ? QStringLiteral("No price")
                                                  : qtText(heading.price));
  summary_->setAttributedText(heading.summary);
  summary_->setVisible(!heading.summary.isEmpty());
  watch_->setVisible(!controller_->isWatchlistButtonHidden());
  tabs_->setCurrentIndex(static_cast<int>(controller_->selectedTabIndex()));
}

}  // namespace corvane::desktop
