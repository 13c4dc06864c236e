#include "desktop/portfolio/transactions_tab.h"

#include <QAction>
#include <QItemSelection>
#include <QLabel>
#include <QVBoxLayout>

#include "desktop/controls/table_view.h"
#include "desktop/look/qt_text.h"
#include "desktop/look/row_mime.h"
#include "desktop/look/theme.h"

namespace corvane::desktop {

/// Rows that can be dragged to where the controller allows it.
class TransactionsAdapter : public TableModelAdapter {
 public:
  TransactionsAdapter(PortfolioTransactionsViewController& controller, QObject* parent)
      : TableModelAdapter(controller, parent), controller_(controller) {}

  [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override {
    return index.isValid() ? TableModelAdapter::flags(index) | Qt::ItemIsDragEnabled
                           : Qt::ItemFlags(Qt::ItemIsDropEnabled);
  }
  [[nodiscard]] Qt::DropActions supportedDropActions() const override { return Qt::MoveAction; }
  [[nodiscard]] QStringList mimeTypes() const override { return {type()}; }
  [[nodiscard]] QMimeData* mimeData(const QModelIndexList& indexes) const override {
    std::vector<std::size_t> rows;
    for (const QModelIndex& index : indexes) {
      rows.push_back(static_cast<std::size_t>(index.row()));
    }
    std::ranges::sort(rows);
    rows.erase(std::ranges::unique(rows).begin(), rows.end());
    return mimeDataOfRows(type(), std::move(rows));
  }
  [[nodiscard]] bool canDropMimeData(const QMimeData* data, Qt::DropAction /*action*/, int row,
                                     int /*column*/, const QModelIndex& parent) const override {
    return !parent.isValid() && row >= 0 &&
           controller_.validateDrop(rowsOfMimeData(type(), *data), static_cast<std::size_t>(row));
  }
  bool dropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                    const QModelIndex& parent) override {
    if (canDropMimeData(data, action, row, column, parent)) {
      controller_.acceptDrop(rowsOfMimeData(type(), *data), static_cast<std::size_t>(row));
    }
    // The ledger has moved the rows already; the view must not remove any.
    return false;
  }

 private:
  static QString type() {
    return qtText(PortfolioTransactionsViewController::transactionIndexPasteboardType);
  }

  PortfolioTransactionsViewController& controller_;
};

TransactionsTab::TransactionsTab(std::shared_ptr<PortfolioTransactionsViewController> controller,
                                 QWidget* parent)
    : QWidget(parent),
      controller_(std::move(controller)),
      title_(new QLabel),
      adapter_(new TransactionsAdapter(*controller_, this)),
      table_(new TableView(QStringLiteral("Transactions"))),
      delete_(new QAction(this)) {
  title_->setFont(theme::font(1, QFont::DemiBold));
  table_->setTable(adapter_, *controller_);
  table_->setPlaceholderText(QStringLiteral("No transactions in these days."));
  table_->setDragEnabled(true);
  table_->setAcceptDrops(true);
  table_->setDropIndicatorShown(true);
  table_->setDragDropMode(QAbstractItemView::InternalMove);
  table_->setDragDropOverwriteMode(false);
  table_->setContextMenuPolicy(Qt::ActionsContextMenu);
  delete_->setShortcut(QKeySequence::Delete);
  delete_->setShortcutContext(Qt::WidgetWithChildrenShortcut);
  table_->addAction(delete_);
  connect(delete_, &QAction::triggered, this, [this] { controller_->deleteTransactionAction(); });
  connect(table_->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
    if (isShowingSelection_) {
      return;
    }
    std::vector<std::size_t> rows;
    for (const QModelIndex& index : table_->selectionModel()->selectedRows()) {
      rows.push_back(static_cast<std::size_t>(index.row()));
    }
    controller_->setSelectedRows(std::move(rows));
    updateActions();
  });

  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, spacing::narrow, 0, 0);
  column->setSpacing(spacing::narrow);
  column->addWidget(title_);
  column->addWidget(table_, 1);
  changes_ = subscribe(controller_->changeHandler, [this](const auto& change) { update(change); });
  update({.columnsChanged = true, .selectionChanged = true});
}

void TransactionsTab::update(const PortfolioTransactionsViewController::Update& update) {
  title_->setText(qtText(controller_->title()));
  if (update.columnsChanged) {
    for (std::size_t i = 0; i < controller_->columns().size(); ++i) {
      table_->setColumnHidden(static_cast<int>(i), controller_->columns()[i].isHidden);
    }
  }
  if (update.rowsChanged) {
    isShowingSelection_ = true;
    adapter_->reload();
    isShowingSelection_ = false;
  } else if (!update.reloadedRows.empty()) {
    const auto last = static_cast<int>(controller_->columns().size()) - 1;
    for (const std::size_t row : update.reloadedRows) {
      emit adapter_->dataChanged(adapter_->index(static_cast<int>(row), 0),
                                 adapter_->index(static_cast<int>(row), last));
    }
  }
  if (update.rowsChanged || update.selectionChanged) {
    showSelection();
  }
  updateActions();
}

void TransactionsTab::showSelection() {
  isShowingSelection_ = true;
  QItemSelection selection;
  const int last = adapter_->columnCount() - 1;
  for (const std::size_t row : controller_->selectedRows()) {
    const int place = static_cast<int>(row);
    selection.select(adapter_->index(place, 0), adapter_->index(place, last));
  }
  table_->selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
  if (!controller_->selectedRows().empty()) {
    table_->scrollTo(adapter_->index(static_cast<int>(controller_->selectedRows().back()), 0));
  }
  isShowingSelection_ = false;
}

void TransactionsTab::updateActions() {
  delete_->setText(qtText(controller_->deleteMenuTitle()));
  delete_->setEnabled(controller_->canModifyAndDelete());
}

}  // namespace corvane::desktop
