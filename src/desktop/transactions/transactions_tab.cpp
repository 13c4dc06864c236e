#include "desktop/transactions/transactions_tab.h"

#include <QAction>
#include <QItemSelection>
#include <QScrollBar>
#include <QVBoxLayout>

#include "desktop/controls/explain_command.h"
#include "desktop/controls/first_steps.h"
#include "desktop/controls/frozen_columns.h"
#include "desktop/controls/table_view.h"
#include "desktop/look/qt_text.h"
#include "desktop/look/row_mime.h"
#include "desktop/look/theme.h"
#include "desktop/transactions/edit_bulk_transactions_dialog.h"
#include "desktop/transactions/edit_transaction_dialog.h"
#include "desktop/transactions/find_row.h"
#include "platform/overloaded.h"

namespace corvane::desktop {
namespace {

/// The date and the name, without which a row says nothing.
constexpr int frozenColumns = 2;

}  // namespace

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
      find_(new FindRow(controller_)),
      adapter_(new TransactionsAdapter(*controller_, this)),
      table_(new TableView(QStringLiteral("Transactions"))),
      nothingFound_(new FirstSteps) {
  table_->setObjectName(QStringLiteral("transactions"));
  table_->setTable(adapter_, *controller_);
  table_->setPlaceholderText(QStringLiteral("No transactions in these days."));
  table_->setDragEnabled(true);
  table_->setAcceptDrops(true);
  table_->setDropIndicatorShown(true);
  table_->setDragDropMode(QAbstractItemView::InternalMove);
  table_->setDragDropOverwriteMode(false);
  table_->setContextMenuPolicy(Qt::ActionsContextMenu);
  new FrozenColumns(*table_, frozenColumns);
  using Controller = PortfolioTransactionsViewController;
  modify_ = addCommand({}, {Qt::Key_Return, Qt::Key_Enter}, &Controller::modifyTransactionAction);
  duplicate_ = addCommand(QStringLiteral("Duplicate Transaction"), {Qt::CTRL | Qt::Key_D},
                          &Controller::duplicateTransactionAction);
  delete_ = addCommand({}, {QKeySequence::Delete}, &Controller::deleteTransactionAction);
  moveUp_ =
      addCommand(QStringLiteral("Move Up"), {Qt::ALT | Qt::Key_Up}, &Controller::moveUpAction);
  moveDown_ = addCommand(QStringLiteral("Move Down"), {Qt::ALT | Qt::Key_Down},
                         &Controller::moveDownAction);
  openEquity_ = addCommand(QStringLiteral("Show Equity"),
                           {Qt::CTRL | Qt::Key_Return, Qt::CTRL | Qt::Key_Enter},
                           &Controller::openEquityAction);
  addExplainCommand(*table_, *controller_,
                    [this](const TrailMaker& trail) { controller_->explainHandler(trail); });
  for (QAction* move : {moveUp_, moveDown_}) {
    move->setToolTip(QStringLiteral("Among the transactions of one settlement date"));
  }
  connect(table_, &QTableView::doubleClicked, this,
          [this] { controller_->modifyTransactionAction(); });
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

  keepEndInView();

  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, spacing::narrow, 0, 0);
  column->setSpacing(spacing::narrow);
  column->addWidget(find_);
  column->addWidget(table_, 1);
  column->addWidget(nothingFound_, 1);
  find_->leaveHandler = [this] { goToTable(); };
  auto* showAll = new QAction(this);
  connect(showAll, &QAction::triggered, this, [this] {
    controller_->setFindText("");
    goToTable();
  });
  nothingFound_->addStep(showAll, QStringLiteral("Show All Transactions"));
  changes_ = subscribe(controller_->changeHandler, [this](const auto& change) { update(change); });
  segues_ = subscribe(controller_->performSegue, [this](const auto& segue) { perform(segue); });
  update({.columnsChanged = true, .selectionChanged = true, .showsNewestRows = true});
}

/// A table is filled before it is shown and has its size, which must not hide what it was opened
/// at.
void TransactionsTab::keepEndInView() {
  QScrollBar* bar = table_->verticalScrollBar();
  connect(bar, &QScrollBar::rangeChanged, this, [this, bar](int, int maximum) {
    if (staysAtEnd_) {
      bar->setValue(maximum);
    }
  });
  connect(bar, &QScrollBar::valueChanged, this, [this, bar](int value) {
    if (bar->maximum() > 0) {
      staysAtEnd_ = value == bar->maximum();
    }
  });
}

QAction* TransactionsTab::addCommand(const QString& text, const QList<QKeySequence>& shortcuts,
                                     void (PortfolioTransactionsViewController::*command)()) {
  auto* action = new QAction(text, this);
  action->setShortcuts(shortcuts);
  // Only while the table has the keyboard: the same keys mean other things elsewhere.
  action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
  table_->addAction(action);
  connect(action, &QAction::triggered, this, [this, command] { ((*controller_).*command)(); });
  return action;
}

void TransactionsTab::addToContextMenu(const std::vector<QAction*>& commands) {
  auto* separator = new QAction(this);
  separator->setSeparator(true);
  table_->addAction(separator);
  for (QAction* command : commands) {
    table_->addAction(command);
  }
}

void TransactionsTab::perform(const PortfolioTransactionsViewController::Segue& segue) {
  using Controller = PortfolioTransactionsViewController;
  std::visit(
      Overloaded{
          [this](const Controller::EditTransaction& one) { openForm(one.transaction); },
          [this](const Controller::EditBulkTransactions& many) { openForm(many.transactions); }},
      segue);
}

void TransactionsTab::openForm(const TransactionPointer& transaction) {
  EditTransactionDialog::open(
      this, controller_->makeEditTransactionForm(transaction),
      [this, transaction](const EditTransactionViewController::Placement& placement) {
        return controller_->modify(transaction, placement.order);
      });
}

void TransactionsTab::openForm(const std::vector<TransactionPointer>& transactions) {
  EditBulkTransactionsDialog::open(this, controller_->makeEditBulkTransactionsForm(transactions),
                                   [this, transactions](const BulkRevision& revision) {
                                     return controller_->modify(transactions, revision);
                                   });
}

void TransactionsTab::update(const PortfolioTransactionsViewController::Update& update) {
  find_->refresh();
  if (update.columnsChanged) {
    table_->showColumns();
  }
  if (update.rowsChanged) {
    showRows(update.isSearch);
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
  if (update.showsNewestRows && controller_->selectedRows().empty()) {
    staysAtEnd_ = true;
    table_->scrollToBottom();
  }
  showWhatWasNotFound();
  updateActions();
}

void TransactionsTab::showRows(bool isSearch) {
  isShowingSelection_ = true;
  if (isSearch) {
    table_->keepingWidths([this] { adapter_->reload(); });
  } else {
    adapter_->reload();
  }
  isShowingSelection_ = false;
}

/// In place of a table without rows.
void TransactionsTab::showWhatWasNotFound() {
  const QString text = qtText(controller_->nothingFoundText());
  const bool hadFocus = table_->hasFocus();
  nothingFound_->setMessage(text);
  table_->setVisible(text.isEmpty());
  nothingFound_->setVisible(!text.isEmpty());
  if (hadFocus && !text.isEmpty()) {
    find_->startFinding();
  }
}

void TransactionsTab::startFinding() {
  find_->startFinding();
}

/// To the rows that are selected, or to the newest one.
void TransactionsTab::goToTable() {
  if (table_->isHidden()) {
    return;
  }
  // A table without a current row that gets the keyboard begins with its first one.
  if (!table_->currentIndex().isValid() && adapter_->rowCount() > 0) {
    table_->selectionModel()->setCurrentIndex(adapter_->index(adapter_->rowCount() - 1, 0),
                                              QItemSelectionModel::NoUpdate);
  }
  table_->setFocus(Qt::OtherFocusReason);
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
  modify_->setText(qtText(controller_->modifyMenuTitle()));
  modify_->setEnabled(controller_->canModifyAndDelete());
  duplicate_->setEnabled(controller_->canDuplicate());
  delete_->setText(qtText(controller_->deleteMenuTitle()));
  delete_->setEnabled(controller_->canModifyAndDelete());
  moveUp_->setEnabled(controller_->canMoveUp());
  moveDown_->setEnabled(controller_->canMoveDown());
  openEquity_->setEnabled(controller_->canOpenEquity());
}

}  // namespace corvane::desktop
