#include "desktop/portfolio/portfolio_view.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSplitter>
#include <QTabBar>
#include <QTabWidget>
#include <QVBoxLayout>

#include "desktop/charts/chart_widget.h"
#include "desktop/controls/dates_picker_view.h"
#include "desktop/controls/first_steps.h"
#include "desktop/look/attributed_text_view.h"
#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"
#include "desktop/portfolio/edit_portfolio_dialog.h"
#include "desktop/portfolio/gains_tab.h"
#include "desktop/portfolio/holdings_tab.h"
#include "desktop/transactions/edit_transaction_dialog.h"
#include "desktop/transactions/transactions_tab.h"
#include "platform/overloaded.h"

namespace corvane::desktop {

PortfolioView::PortfolioView(std::shared_ptr<PortfolioViewController> controller, QWidget* parent)
    : QWidget(parent),
      controller_(std::move(controller)),
      name_(new QLabel),
      value_(new QLabel),
      summary_(new AttributedLabel),
      newTransaction_(new QPushButton(QStringLiteral("New Transaction…"))),
      details_(new QPushButton(QStringLiteral("Details…"))),
      asset_(new QComboBox),
      fetching_(new QProgressBar),
      chart_(new ChartWidget(controller_->chart, QStringLiteral("Performance"))),
      selectors_(makeSelectors()),
      firstSteps_(new FirstSteps),
      warning_(new QLabel),
      tabs_(new QTabWidget),
      transactions_(new TransactionsTab(controller_->transactions)) {
  firstSteps_->setMessage(QStringLiteral("Nothing has been recorded in this portfolio yet."));
  warning_->setWordWrap(true);
  warning_->setContentsMargins(0, 0, 0, spacing::narrow);

  auto* upper = new QWidget;
  auto* upperColumn = new QVBoxLayout(upper);
  upperColumn->setContentsMargins(0, 0, 0, 0);
  upperColumn->setSpacing(spacing::narrow);
  upperColumn->addWidget(makeHeading());
  upperColumn->addWidget(selectors_);
  upperColumn->addWidget(chart_, 1);
  upperColumn->addWidget(firstSteps_, 1);
  upperColumn->addWidget(warning_);

  tabs_->setDocumentMode(true);
  tabs_->tabBar()->setDrawBase(false);
  tabs_->setAccessibleName(QStringLiteral("Holdings, transactions and gains"));
  tabs_->addTab(new HoldingsTab(controller_->holdings), QStringLiteral("Holdings"));
  tabs_->addTab(transactions_, QStringLiteral("Transactions"));
  tabs_->addTab(new GainsTab(controller_->gains), QStringLiteral("Gains"));
  tabs_->setCurrentIndex(static_cast<int>(controller_->selectedTabIndex()));

  auto* split = new QSplitter(Qt::Vertical);
  split->setHandleWidth(1);
  split->setChildrenCollapsible(false);
  split->addWidget(upper);
  split->addWidget(tabs_);
  split->setStretchFactor(0, 1);
  split->setStretchFactor(1, 1);
  split->setSizes({390, 350});
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(spacing::wide, spacing::wide, spacing::wide, spacing::narrow);
  column->addWidget(split);

  connect(tabs_, &QTabWidget::currentChanged, this,
          [this](int index) { controller_->selectTab(static_cast<std::size_t>(index)); });
  connect(newTransaction_, &QPushButton::clicked, this,
          [this] { controller_->createTransactionAction(); });
  connect(details_, &QPushButton::clicked, this, [this] { controller_->editPortfolioAction(); });
  connect(asset_, &QComboBox::activated, this,
          [this](int index) { controller_->chooseAsset(static_cast<std::size_t>(index)); });
  changes_ = subscribe(controller_->changeHandler, [this] { update(); });
  segues_ = subscribe(controller_->performSegue, [this](const auto& segue) { perform(segue); });
  update();
}

QWidget* PortfolioView::makeHeading() {
  name_->setFont(theme::font(1.15, QFont::DemiBold));
  name_->setForegroundRole(QPalette::WindowText);
  value_->setFont(theme::font(2, QFont::DemiBold));
  for (QLabel* label : {name_, value_}) {
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    label->setTextFormat(Qt::PlainText);
    // A name that is written from right to left stands where all others do.
    label->setAlignment(Qt::AlignLeft | Qt::AlignVCenter | Qt::AlignAbsolute);
  }
  summary_->setWordWrap(true);

  auto* texts = new QVBoxLayout;
  texts->setSpacing(0);
  texts->addWidget(name_);
  texts->addWidget(value_);
  texts->addWidget(summary_);
  auto* buttons = new QHBoxLayout;
  buttons->setSpacing(spacing::narrow);
  newTransaction_->setToolTip(QStringLiteral("Record what happened in this portfolio (Ctrl+T)"));
  buttons->addWidget(newTransaction_);
  buttons->addWidget(details_);

  auto* heading = new QWidget;
  auto* row = new QHBoxLayout(heading);
  row->setContentsMargins(0, 0, 0, 0);
  row->addLayout(texts, 1);
  row->addLayout(buttons);
  row->setAlignment(buttons, Qt::AlignTop);
  return heading;
}

QWidget* PortfolioView::makeSelectors() {
  asset_->setAccessibleName(QStringLiteral("Asset"));
  asset_->setToolTip(QStringLiteral("What the chart shows"));
  asset_->setSizeAdjustPolicy(QComboBox::AdjustToContents);
  asset_->setMinimumContentsLength(8);
  fetching_->setRange(0, 0);
  fetching_->setTextVisible(false);
  fetching_->setFixedSize(72, 6);
  fetching_->setAccessibleName(QStringLiteral("Fetching prices"));
  // The place stays, so that nothing moves when a fetch begins or ends.
  QSizePolicy policy = fetching_->sizePolicy();
  policy.setRetainSizeWhenHidden(true);
  fetching_->setSizePolicy(policy);

  auto* selectors = new QWidget;
  auto* row = new QHBoxLayout(selectors);
  row->setContentsMargins(0, spacing::tight, 0, 0);
  row->setSpacing(spacing::narrow);
  row->addWidget(new DatesPickerView(controller_->datesPicker));
  row->addWidget(fetching_);
  row->addStretch(1);
  auto* label = new QLabel(QStringLiteral("A&sset:"));
  label->setBuddy(asset_);
  row->addWidget(label);
  row->addWidget(asset_);
  return selectors;
}

void PortfolioView::update() {
  const PortfolioViewController::Heading& heading = controller_->heading();
  name_->setText(qtText(heading.name));
  value_->setText(qtText(heading.value));
  summary_->setAttributedText(heading.summary);
  summary_->setVisible(!heading.summary.isEmpty());
  newTransaction_->setEnabled(controller_->canCreateTransaction());
  details_->setEnabled(controller_->canEditPortfolio());
  fetching_->setVisible(controller_->isFetching());
  const PortfolioPointer& portfolio = controller_->currentData().portfolio;
  const bool isNew = portfolio != nullptr && portfolio->transactions().empty();
  firstSteps_->setVisible(isNew);
  chart_->setVisible(!isNew);
  selectors_->setVisible(!isNew);
  tabs_->setVisible(!isNew);
  warning_->setText(qtText(controller_->warning()));
  warning_->setVisible(!controller_->warning().empty());
  updateAssets();
}

void PortfolioView::updateAssets() {
  const QSignalBlocker block(asset_);
  asset_->clear();
  for (const auto& item : controller_->assetMenu()) {
    if (item.isSeparator) {
      asset_->insertSeparator(asset_->count());
    } else {
      asset_->addItem(qtText(item.title));
    }
  }
  asset_->setCurrentIndex(static_cast<int>(controller_->selectedAssetIndex()));
}

void PortfolioView::perform(const PortfolioViewController::Segue& segue) {
  std::visit(Overloaded{[this](const PortfolioViewController::EditPortfolio&) {
                          EditPortfolioDialog::open(this, controller_->makeEditPortfolioForm());
                        },
                        [this](const PortfolioViewController::CreateTransaction& create) {
                          openForm(create);
                        }},
             segue);
}

void PortfolioView::openForm(const PortfolioViewController::CreateTransaction& segue) {
  EditTransactionDialog::open(this, controller_->makeCreateTransactionForm(segue),
                              [this](const EditTransactionViewController::Placement& placement) {
                                return controller_->placeOrder(placement.order,
                                                               placement.portfolio);
                              });
}

}  // namespace corvane::desktop
