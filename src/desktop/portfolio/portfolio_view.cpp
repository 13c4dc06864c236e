#include "desktop/portfolio/portfolio_view.h"

#include <QAction>
#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSplitter>
#include <QTabBar>
#include <QTabWidget>
#include <QVBoxLayout>
#include <map>

#include "desktop/charts/chart_widget.h"
#include "desktop/controls/dates_picker_view.h"
#include "desktop/controls/first_steps.h"
#include "desktop/look/attributed_text_view.h"
#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"
#include "desktop/portfolio/edit_portfolio_dialog.h"
#include "desktop/portfolio/gains_tab.h"
#include "desktop/portfolio/holdings_tab.h"
#include "desktop/reports/income_view.h"
#include "desktop/reports/returns_view.h"
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
      transactions_(new TransactionsTab(controller_->transactions)),
      split_(new QSplitter(Qt::Vertical)) {
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
  tabs_->setAccessibleName(QStringLiteral("Parts of the portfolio"));
  const std::map<const PortfolioTab*, QWidget*> views = {
      {controller_->holdings.get(), new HoldingsTab(controller_->holdings)},
      {controller_->transactions.get(), transactions_},
      {controller_->gains.get(), new GainsTab(controller_->gains)},
      {controller_->returns.get(), new ReturnsView(controller_->returns)},
      {controller_->income.get(), new IncomeView(controller_->income)}};
  for (const PortfolioTab* tab : controller_->tabs) {
    tabs_->addTab(views.at(tab), qtText(tab->tabTitle()));
  }
  tabs_->setCurrentIndex(static_cast<int>(controller_->selectedTabIndex()));

  split_->setHandleWidth(1);
  split_->setChildrenCollapsible(false);
  split_->addWidget(upper);
  split_->addWidget(tabs_);
  split_->setStretchFactor(0, 1);
  split_->setStretchFactor(1, 1);
  split_->setSizes(sharedHeights_);
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(spacing::wide, spacing::wide, spacing::wide, spacing::narrow);
  column->addWidget(split_);

  connect(tabs_, &QTabWidget::currentChanged, this, [this](int index) {
    controller_->selectTab(static_cast<std::size_t>(index));
    giveChartItsPlace();
  });
  connect(newTransaction_, &QPushButton::clicked, this,
          [this] { controller_->createTransactionAction(); });
  connect(details_, &QPushButton::clicked, this, [this] { controller_->editPortfolioAction(); });
  connect(asset_, &QComboBox::activated, this,
          [this](int index) { controller_->chooseAsset(static_cast<std::size_t>(index)); });
  changes_ = subscribe(controller_->changeHandler, [this] { update(); });
  segues_ = subscribe(controller_->performSegue, [this](const auto& segue) { perform(segue); });
  update();
}

/// A tab with charts of its own has all of the place below the days, and so have the first steps of
/// a portfolio without rows.
void PortfolioView::giveChartItsPlace() {
  const bool isNew = !firstSteps_->isHidden();
  const bool hasOwnChart = !isNew && controller_->selectedTab().hasOwnChart();
  QWidget* upper = chart_->parentWidget();
  if (hasOwnChart && !chart_->isHidden()) {
    sharedHeights_ = split_->sizes();
  }
  const bool comesBack = !hasOwnChart && !isNew && chart_->isHidden();
  chart_->setVisible(!hasOwnChart && !isNew);
  warning_->setVisible(!hasOwnChart && !controller_->warning().empty());
  assetRow_->setVisible(!hasOwnChart);
  // Of a splitter's parts no one asks how many lines they make of their width.
  const int breadth = width() - 2 * spacing::wide;
  const QLayout& lines = *upper->layout();
  upper->setMinimumHeight(lines.totalMinimumHeightForWidth(breadth));
  upper->setMaximumHeight(hasOwnChart ? lines.totalHeightForWidth(breadth) : QWIDGETSIZE_MAX);
  if (comesBack) {
    split_->setSizes(sharedHeights_);
  }
}

void PortfolioView::findTransactions() {
  tabs_->setCurrentWidget(transactions_);
  transactions_->startFinding();
}

void PortfolioView::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  giveChartItsPlace();
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
  name_->setWordWrap(true);
  summary_->setWordWrap(true);

  value_->setAccessibleName(QStringLiteral("Value"));
  addExplanation(value_, QStringLiteral("Explain This Number"),
                 [this] { controller_->explainHandler(controller_->valueTrailMaker(), nullptr); });
  addExplanation(summary_, QStringLiteral("Explain Gain and Net Deposits"), [this] {
    const auto [maker, fetch] = controller_->gainTrail();
    controller_->explainHandler(maker, fetch);
  });

  fetching_->setRange(0, 0);
  fetching_->setTextVisible(false);
  fetching_->setFixedSize(72, 6);
  fetching_->setAccessibleName(QStringLiteral("Fetching prices"));
  auto* values = new QHBoxLayout;
  values->setSpacing(spacing::medium);
  values->addWidget(value_);
  values->addWidget(fetching_);
  values->addStretch(1);
  auto* buttons = new QHBoxLayout;
  buttons->setSpacing(spacing::narrow);
  newTransaction_->setToolTip(QStringLiteral("Record what happened in this portfolio (Ctrl+T)"));
  buttons->addWidget(newTransaction_);
  buttons->addWidget(details_);

  // The value is never cut, so it has the whole width.
  auto* heading = new QWidget;
  auto* lines = new QGridLayout(heading);
  lines->setContentsMargins(0, 0, 0, 0);
  lines->setHorizontalSpacing(spacing::narrow);
  lines->setVerticalSpacing(0);
  lines->setColumnStretch(0, 1);
  lines->addWidget(name_, 0, 0);
  lines->addLayout(buttons, 0, 1, Qt::AlignTop);
  lines->addLayout(values, 1, 0, 1, 2);
  lines->addWidget(summary_, 2, 0, 1, 2);
  return heading;
}

QWidget* PortfolioView::makeSelectors() {
  asset_->setAccessibleName(QStringLiteral("Asset"));
  asset_->setToolTip(QStringLiteral("What the chart shows"));
  asset_->setSizeAdjustPolicy(QComboBox::AdjustToContents);
  asset_->setMinimumContentsLength(8);
  auto* label = new QLabel(QStringLiteral("A&sset:"));
  label->setBuddy(asset_);
  assetRow_ = new QWidget;
  auto* assets = new QHBoxLayout(assetRow_);
  assets->setContentsMargins(0, 0, 0, 0);
  assets->addWidget(label);
  assets->addWidget(asset_);
  auto* dates = new DatesPickerView(controller_->datesPicker);
  dates->addAtEnd(assetRow_);

  dates->setContentsMargins(0, spacing::tight, 0, 0);
  return dates;
}

/// A command in the context menu of `label` that says how its figure came about.
void PortfolioView::addExplanation(QWidget* label, const QString& text,
                                   const std::function<void()>& explain) {
  auto* action = new QAction(text, label);
  label->addAction(action);
  label->setContextMenuPolicy(Qt::ActionsContextMenu);
  connect(action, &QAction::triggered, this, [this, explain] {
    if (controller_->currentData().portfolio != nullptr) {
      explain();
    }
  });
}

void PortfolioView::update() {
  const PortfolioHeading& heading = controller_->heading();
  name_->setText(qtText(heading.name));
  value_->setText(qtText(heading.value));
  summary_->setAttributedText(heading.summary);
  summary_->setVisible(!heading.summary.isEmpty());
  newTransaction_->setEnabled(controller_->canCreateTransaction());
  details_->setEnabled(controller_->canEditPortfolio());
  fetching_->setVisible(controller_->isFetching());
  tabs_->setCurrentIndex(static_cast<int>(controller_->selectedTabIndex()));
  const PortfolioPointer& portfolio = controller_->currentData().portfolio;
  const bool isNew = portfolio != nullptr && portfolio->transactions().empty();
  firstSteps_->setVisible(isNew);
  selectors_->setVisible(!isNew);
  tabs_->setVisible(!isNew);
  warning_->setText(qtText(controller_->warning()));
  updateAssets();
  giveChartItsPlace();
}

void PortfolioView::updateAssets() {
  const QSignalBlocker block(asset_);
  asset_->clear();
  for (const auto& item : controller_->assetMenu().items()) {
    if (item.isSeparator) {
      asset_->insertSeparator(asset_->count());
    } else {
      asset_->addItem(qtText(item.title));
    }
  }
  asset_->setCurrentIndex(static_cast<int>(controller_->assetMenu().selectedIndex()));
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
