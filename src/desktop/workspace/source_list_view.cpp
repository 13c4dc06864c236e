#include "desktop/workspace/source_list_view.h"

#include <QAction>
#include <QHBoxLayout>
#include <QItemSelection>
#include <QLabel>
#include <QListWidget>
#include <QPainter>
#include <QPushButton>
#include <QStyledItemDelegate>
#include <QVBoxLayout>
#include <algorithm>

#include "desktop/controls/equity_combo_box_view.h"
#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"
#include "desktop/workspace/source_list.h"
#include "desktop/workspace/source_row_delegate.h"

namespace corvane::desktop {
namespace {

constexpr int lettersOfWidth = 34;
constexpr int mostPortfoliosShown = 6;  // before the list of portfolios scrolls

/// The title of a report, on the same ground as the rows of the lists above it.
class ReportRowDelegate : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

  void paint(QPainter* painter, const QStyleOptionViewItem& option,
             const QModelIndex& index) const override {
    painter->save();
    drawRowGround(*painter, option);
    painter->setPen(option.palette.color(option.state.testFlag(QStyle::State_Selected)
                                             ? QPalette::HighlightedText
                                             : QPalette::Text));
    painter->setFont(option.font);
    painter->drawText(option.rect.adjusted(spacing::wide, 0, -spacing::wide, 0),
                      Qt::AlignLeft | Qt::AlignVCenter, index.data().toString());
    painter->restore();
  }
};

std::vector<std::size_t> selectedRows(const QListView& view) {
  std::vector<std::size_t> rows;
  for (const QModelIndex& index : view.selectionModel()->selectedIndexes()) {
    rows.push_back(static_cast<std::size_t>(index.row()));
  }
  std::ranges::sort(rows);
  return rows;
}

void select(QListView& view, const std::vector<std::size_t>& rows) {
  QItemSelection selection;
  for (const std::size_t row : rows) {
    const QModelIndex index = view.model()->index(static_cast<int>(row), 0);
    selection.select(index, index);
  }
  view.selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
  if (rows.size() == 1) {
    const QModelIndex index = view.model()->index(static_cast<int>(rows.front()), 0);
    view.selectionModel()->setCurrentIndex(index, QItemSelectionModel::NoUpdate);
    view.scrollTo(index);
  }
}

}  // namespace

SourceView::SourceView(std::shared_ptr<MainSplitViewController> frame, QWidget* parent)
    : QWidget(parent),
      frame_(std::move(frame)),
      controller_(*frame_->masterSourceViewController),
      watchlist_(new WatchlistModel(controller_, this)),
      portfolios_(new PortfolioListModel(controller_, this)),
      watchlistView_(new SourceListView(QStringLiteral("Watchlist"), {})),
      portfolioView_(
          new SourceListView(QStringLiteral("Portfolios"), QStringLiteral("No portfolios yet."))),
      reports_(new QListWidget),
      emptyWatchlist_(new QWidget),
      newPortfolio_(new QPushButton(QStringLiteral("New…"))),
      search_(new EquityComboBoxView(controller_.equityComboBox, QStringLiteral("Search"))),
      add_(new QPushButton(QStringLiteral("Add"))),
      priceStatus_(new QLabel),
      remove_(new QAction(QStringLiteral("Remove from Watchlist"), this)),
      moveUp_(new QAction(QStringLiteral("Move Up in Watchlist"), this)),
      moveDown_(new QAction(QStringLiteral("Move Down in Watchlist"), this)) {
  portfolioView_->setModel(portfolios_);
  portfolioView_->setItemDelegate(new SourceRowDelegate(controller_, true, this));
  watchlistView_->setModel(watchlist_);
  watchlistView_->setItemDelegate(new SourceRowDelegate(controller_, false, this));
  watchlistView_->setSelectionMode(QAbstractItemView::ExtendedSelection);
  watchlistView_->setDragDropMode(QAbstractItemView::InternalMove);
  watchlistView_->setDragDropOverwriteMode(false);
  watchlistView_->setContextMenuPolicy(Qt::ActionsContextMenu);
  remove_->setShortcut(QKeySequence::Delete);
  moveUp_->setShortcut(Qt::ALT | Qt::Key_Up);
  moveDown_->setShortcut(Qt::ALT | Qt::Key_Down);
  for (QAction* action : {moveUp_, moveDown_, remove_}) {
    action->setShortcutContext(Qt::WidgetShortcut);
    watchlistView_->addAction(action);
  }
  newPortfolio_->setAccessibleName(QStringLiteral("New portfolio"));
  newPortfolio_->setMaximumWidth(
      newPortfolio_->fontMetrics().horizontalAdvance(newPortfolio_->text()) + 2 * spacing::medium);

  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, spacing::medium, 0, spacing::narrow);
  column->setSpacing(spacing::tight);
  addSearchBox(column);
  addHeading(column, QStringLiteral("Portfolios"), newPortfolio_);
  column->addWidget(portfolioView_);
  column->addSpacing(spacing::medium);
  addHeading(column, QStringLiteral("Watchlist"), nullptr);
  addWatchlist(column);
  addReports(column);
  addPriceStatus(column);

  connect(newPortfolio_, &QPushButton::clicked, this, [this] { frame_->createPortfolioAction(); });
  connect(add_, &QPushButton::clicked, this, [this] { controller_.addToWatchlistAction(); });
  connect(remove_, &QAction::triggered, this, [this] { controller_.removeSelectedAction(); });
  connect(moveUp_, &QAction::triggered, this, [this] { controller_.moveSelectionUp(); });
  connect(moveDown_, &QAction::triggered, this, [this] { controller_.moveSelectionDown(); });
  connect(watchlistView_->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
    if (!isShowingSelection_) {
      controller_.selectWatchlistRows(selectedRows(*watchlistView_));
      showSelection();
    }
  });
  connect(portfolioView_->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
    if (!isShowingSelection_) {
      const auto rows = selectedRows(*portfolioView_);
      controller_.selectPortfolioRow(rows.empty() ? std::nullopt : std::optional(rows.front()));
      showSelection();
    }
  });
  changes_ = subscribe(controller_.changeHandler, [this](const auto& change) { update(change); });
  update({.watchlistRowsChanged = true, .portfolioRowsChanged = true});
}

void SourceView::addSearchBox(QVBoxLayout* column) {
  add_->setAccessibleName(QStringLiteral("Add to watchlist"));
  add_->setToolTip(QStringLiteral("Add the equity that was found to the watchlist"));
  add_->setMaximumWidth(add_->fontMetrics().horizontalAdvance(add_->text()) + 2 * spacing::medium);
  auto* row = new QHBoxLayout;
  row->setContentsMargins(spacing::wide, 0, spacing::wide, spacing::narrow);
  row->setSpacing(spacing::tight);
  row->addWidget(search_, 1);
  row->addWidget(add_);
  column->addLayout(row);
}

void SourceView::addReports(QVBoxLayout* column) {
  reports_->setAccessibleName(QStringLiteral("Reports"));
  reports_->setFrameShape(QFrame::NoFrame);
  reports_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  reports_->viewport()->setAutoFillBackground(false);
  reports_->setItemDelegate(new ReportRowDelegate(reports_));
  for (const WorkspaceReports::Entry& entry : WorkspaceReports::entries) {
    auto* item = new QListWidgetItem(qtText(entry.title), reports_);
    item->setSizeHint({0, fontMetrics().height() + spacing::medium});
  }
  column->addSpacing(spacing::medium);
  addHeading(column, QStringLiteral("Reports"), nullptr);
  column->addWidget(reports_);
  connect(reports_, &QListWidget::itemSelectionChanged, this, [this] {
    const int row = reports_->selectedItems().isEmpty() ? -1 : reports_->currentRow();
    if (!isShowingSelection_ && row >= 0) {
      frame_->showReport(WorkspaceReports::entries.at(static_cast<std::size_t>(row)).report);
    }
  });
}

void SourceView::showReportSelection() {
  isShowingSelection_ = true;
  const auto shown = frame_->reports->shown();
  reports_->clearSelection();
  for (int row = 0; row < reports_->count(); ++row) {
    if (shown == WorkspaceReports::entries.at(static_cast<std::size_t>(row)).report) {
      reports_->setCurrentRow(row);
    }
  }
  isShowingSelection_ = false;
}

/// The list, or in its place what to do to have one.
void SourceView::addWatchlist(QVBoxLayout* column) {
  auto* hint = new QLabel(QStringLiteral("Search for an equity and add it to follow its price."));
  hint->setWordWrap(true);
  hint->setForegroundRole(QPalette::PlaceholderText);
  auto* find = new QPushButton(QStringLiteral("Find an Equity"));
  connect(find, &QPushButton::clicked, this, &SourceView::startSearch);
  auto* steps = new QVBoxLayout(emptyWatchlist_);
  steps->setContentsMargins(spacing::wide, spacing::narrow, spacing::wide, 0);
  steps->setSpacing(spacing::narrow);
  steps->addWidget(hint);
  steps->addWidget(find, 0, Qt::AlignLeft);
  steps->addStretch(1);
  // What is around it is not to be drawn over each other in a small window with large letters.
  watchlistView_->setMinimumHeight(2 * fontMetrics().height());
  column->addWidget(watchlistView_, 1);
  column->addWidget(emptyWatchlist_, 1);
}

QSize SourceView::sizeHint() const {
  // Large letters leave the screen beside it two thirds of the window.
  const int most = std::max(minimumWidth(), window()->width() / 3);
  return {std::min(theme::widthOfLetters(lettersOfWidth), most), 600};
}

void SourceView::startSearch() {
  search_->startEditing();
}

void SourceView::focusSelection() {
  for (QAbstractItemView* list : {static_cast<QAbstractItemView*>(portfolioView_),
                                  static_cast<QAbstractItemView*>(watchlistView_),
                                  static_cast<QAbstractItemView*>(reports_)}) {
    if (list->selectionModel()->hasSelection()) {
      list->setFocus(Qt::OtherFocusReason);
    }
  }
}

void SourceView::addHeading(QVBoxLayout* column, const QString& text, QWidget* button) {
  auto* label = new QLabel(text.toUpper());
  label->setAccessibleName(text);
  QFont font = theme::font(0.85, QFont::DemiBold);
  font.setLetterSpacing(QFont::PercentageSpacing, 106);
  label->setFont(font);
  label->setForegroundRole(QPalette::PlaceholderText);
  auto* row = new QHBoxLayout;
  row->setContentsMargins(spacing::wide, 0, spacing::wide, 0);
  row->addWidget(label, 1);
  if (button != nullptr) {
    row->addWidget(button);
  }
  column->addLayout(row);
}

SourceView::~SourceView() {
  // The box gives its handlers back, so it goes before what holds them.
  delete search_;
}

/// Below the lists, in as many lines as the width makes of it.
void SourceView::addPriceStatus(QVBoxLayout* column) {
  priceStatus_->setObjectName(QStringLiteral("priceStatus"));
  priceStatus_->setTextFormat(Qt::PlainText);
  priceStatus_->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  priceStatus_->setWordWrap(true);
  priceStatus_->setAlignment(Qt::AlignLeft | Qt::AlignTop);
  priceStatus_->setFont(theme::font(0.85));
  priceStatus_->setForegroundRole(QPalette::PlaceholderText);
  priceStatus_->setContentsMargins(spacing::wide, spacing::narrow, spacing::wide, 0);
  column->addWidget(priceStatus_);
}

void SourceView::showPriceStatus() {
  const QString text = qtText(controller_.priceStatus());
  priceStatus_->setVisible(!text.isEmpty());
  if (priceStatus_->text() != text) {
    priceStatus_->setText(text);
    priceStatus_->setAccessibleName(QStringLiteral("Prices: ") + text);
    fitPortfolioList();
  }
}

void SourceView::paintEvent(QPaintEvent* /*event*/) {
  QPainter(this).fillRect(rect(), theme::sidebarBackground());
}

void SourceView::update(const MasterSourceViewController::Update& update) {
  isShowingSelection_ = true;
  if (update.watchlistRowsChanged) {
    watchlist_->reload();
  } else {
    watchlist_->reloadRows(update.reloadedWatchlistRows);
  }
  if (update.portfolioRowsChanged) {
    portfolios_->reload();
    fitPortfolioList();
  } else {
    portfolios_->reloadRows(update.reloadedPortfolioRows);
  }
  isShowingSelection_ = false;
  watchlistView_->setVisible(watchlist_->rowCount() > 0);
  emptyWatchlist_->setVisible(watchlist_->rowCount() == 0);
  newPortfolio_->setEnabled(frame_->canCreatePortfolio());
  add_->setEnabled(controller_.canAddToWatchlist());
  showPriceStatus();
  showSelection();
}

void SourceView::showSelection() {
  isShowingSelection_ = true;
  select(*watchlistView_, controller_.selectedWatchlistRows());
  const auto row = controller_.selectedPortfolioRow();
  select(*portfolioView_, row ? std::vector{*row} : std::vector<std::size_t>{});
  for (QAction* action : {remove_, moveUp_, moveDown_}) {
    action->setEnabled(controller_.canRemove());
  }
  isShowingSelection_ = false;
}

/// The list has as many rows as there are. In a small window with large letters it scrolls, then
/// the prices' text is cut, and then the reports scroll, before what is below it is drawn over each
/// other.
void SourceView::fitPortfolioList() {
  QStyleOptionViewItem option;
  option.font = portfolioView_->font();
  const int row = portfolioView_->itemDelegate()->sizeHint(option, {}).height();
  int rows = std::clamp(portfolios_->rowCount(), 1, mostPortfoliosShown);
  portfolioView_->setFixedHeight(rows * row);
  priceStatus_->setMaximumHeight(QWIDGETSIZE_MAX);
  const int reportRow = reports_->item(0)->sizeHint().height();
  int reports = reports_->count();
  reports_->setFixedHeight(reports * reportRow);
  const auto excess = [this] { return layout()->minimumHeightForWidth(width()) - height(); };
  while (rows > 1 && excess() > 0) {
    portfolioView_->setFixedHeight(--rows * row);
  }
  const int missing = std::max(0, excess());
  if (missing > 0) {
    const int least = priceStatus_->fontMetrics().height() + spacing::narrow;
    priceStatus_->setMaximumHeight(
        std::max(least, priceStatus_->heightForWidth(width()) - missing));
  }
  while (reports > 1 && excess() > 0) {
    reports_->setFixedHeight(--reports * reportRow);
  }
  priceStatus_->setToolTip(missing > 0 ? priceStatus_->text() : QString());
}

void SourceView::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  fitPortfolioList();
}

}  // namespace corvane::desktop
