#include "presentation/transactions/portfolio_transactions_view_controller.h"

#include <algorithm>
#include <cassert>
#include <utility>

#include "exchange/exports/portfolio_transactions_exporter.h"
#include "ledger/portfolio/portfolio_manager_error.h"
#include "platform/text/unicode/isolation.h"
#include "presentation/transactions/transaction_text.h"
#include "reports/trail/ledger_trails.h"

namespace corvane {
namespace {

std::string countedTransactions(const char* verb, std::size_t count) {
  const std::string start = std::string(verb) + " ";
  return count == 1 ? start + "Transaction" : start + std::to_string(count) + " Transactions";
}

bool contains(const std::optional<TransactionSet>& set, const TransactionPointer& row) {
  return set && set->contains(row);
}

}  // namespace

PortfolioTransactionsViewController::PortfolioTransactionsViewController(
    ScreenSurroundings surroundings)
    : surroundings_(std::move(surroundings)), columns_(transactionColumns()) {}

void PortfolioTransactionsViewController::setCurrentData(
    PortfolioDataSlice data, const std::optional<TransactionChanges>& changes) {
  finder_ = nullptr;  // It looks at the rows that go.
  const PortfolioDataSlice before = std::exchange(currentData_, std::move(data));
  const auto foundBefore = std::move(found_);
  static const std::vector<TransactionPointer> none;
  const auto& formerRows = foundBefore           ? *foundBefore
                           : before.transactions ? *before.transactions
                                                 : none;
  if (before.portfolio != currentData_.portfolio) {
    findText_.clear();
    hiddenEdits_.clear();
  }
  find();
  if (changes) {
    noteHiddenEdits(*changes);
  }
  Update update{.rowsChanged = formerRows != rows()};
  update.columnsChanged = showCashColumn();
  update.showsNewestRows =
      !rows().empty() && (formerRows.empty() || before.portfolio != currentData_.portfolio);

  const std::vector<std::size_t> formerSelection = selectedRows_;
  TransactionSet selected;
  if (!changes) {
    for (const std::size_t row : selectedRows_) {
      selected.insert(formerRows[row]);
    }
  }
  if (changes || (update.rowsChanged && !selected.empty())) {
    selectedRows_.clear();
    for (std::size_t i = 0; i < rows().size(); ++i) {
      const TransactionPointer& row = rows()[i];
      const bool isEdited =
          changes && (contains(changes->inserted, row) || contains(changes->deleted, row) ||
                      contains(changes->modified, row));
      if (isEdited || selected.contains(row)) {
        selectedRows_.push_back(i);
      }
      if (changes && (contains(changes->inserted, row) || contains(changes->modified, row) ||
                      contains(changes->recalculated, row))) {
        update.reloadedRows.push_back(i);
      }
    }
  }
  update.selectionChanged = update.rowsChanged || selectedRows_ != formerSelection;
  changeHandler(update);
}

void PortfolioTransactionsViewController::setFindText(std::string text) {
  if (text == findText_) {
    return;
  }
  findText_ = std::move(text);
  TransactionSet selected;
  for (const std::size_t row : selectedRows_) {
    selected.insert(transaction(row));
  }
  const auto former = std::move(found_);
  find();
  if (found_ == former) {
    changeHandler({.rowsChanged = false, .isSearch = true});
    return;
  }
  if (!isFinding() && !hiddenEdits_.empty()) {
    selected = std::exchange(hiddenEdits_, {});
  }
  selectedRows_.clear();
  for (std::size_t i = 0; i < rows().size() && !(selected.empty() && hiddenEdits_.empty()); ++i) {
    hiddenEdits_.erase(rows()[i]);
    if (selected.contains(rows()[i])) {
      selectedRows_.push_back(i);
    }
  }
  changeHandler({.isSearch = true, .selectionChanged = true, .showsNewestRows = true});
}

/// Looks through the rows for the words that are there at the moment.
void PortfolioTransactionsViewController::find() {
  found_.reset();
  if (!TransactionFinder::hasWords(findText_)) {
    return;
  }
  const auto& all = rowsOfDays();
  if (finder_ == nullptr && currentData_.portfolio != nullptr) {
    const auto keeper = manager();
    finder_ = std::make_unique<TransactionFinder>(
        all, currentData_.portfolio->primaryCurrency(),
        keeper == nullptr ? Calendar::current() : keeper->calendar,
        currentData_.portfolio->usesCashAccounts);
  }
  found_.emplace();
  if (finder_ != nullptr) {
    const auto& places = finder_->places(findText_);
    found_->reserve(places.size());
    for (const std::uint32_t place : places) {
      found_->push_back(all[place]);
    }
  }
}

void PortfolioTransactionsViewController::noteHiddenEdits(const TransactionChanges& changes) {
  hiddenEdits_.clear();
  if (!isFinding()) {
    return;
  }
  for (const TransactionPointer& row : rowsOfDays()) {
    if (contains(changes.inserted, row) || contains(changes.modified, row)) {
      hiddenEdits_.insert(row);
    }
  }
  for (const TransactionPointer& shown : rows()) {
    hiddenEdits_.erase(shown);
  }
}

std::string PortfolioTransactionsViewController::nothingFoundText() const {
  if (!isFinding() || !rows().empty() || rowsOfDays().empty()) {
    return "";
  }
  const bool isWholeLedger = rowsOfDays().size() == currentData_.portfolio->transactions().size();
  return std::string(isWholeLedger ? "No transaction has “"
                                   : "No transaction in these days has “") +
         isolatedName(findText_) + "”.";
}

std::string PortfolioTransactionsViewController::hiddenEditsText() const {
  const std::size_t count = hiddenEdits_.size();
  return count == 0   ? ""
         : count == 1 ? "The transaction just entered is hidden."
                      : std::to_string(count) + " transactions just entered are hidden.";
}

std::string PortfolioTransactionsViewController::title() const {
  if (currentData_.portfolio == nullptr || !currentData_.transactions) {
    return "";
  }
  const std::string all = std::to_string(currentData_.portfolio->transactions().size());
  return showsWholeLedger()
             ? "All " + all + " transactions"
             : "Showing " + std::to_string(rows().size()) + " of " + all + " transactions";
}

std::size_t PortfolioTransactionsViewController::numberOfRows() const {
  return rows().size();
}

AttributedText PortfolioTransactionsViewController::cell(std::size_t row,
                                                         std::size_t column) const {
  const auto keeper = manager();
  return transactionText(*transaction(row), column, currentData_.portfolio->primaryCurrency(),
                         keeper == nullptr ? Calendar::current() : keeper->calendar);
}

/// Of the cost base and the capital gain of a row.
TrailMaker PortfolioTransactionsViewController::trailOf(std::size_t row, std::size_t column) const {
  const std::string_view figure = columns_.at(column).identifier;
  const TransactionPointer& shown = transaction(row);
  const bool isGain = figure == "capitalGain" && shown->capitalGain();
  if (!isGain && (figure != "costBaseNet" || !shown->costBaseNet())) {
    return nullptr;
  }
  return [portfolio = currentData_.portfolio, shown, isGain,
          keeper = manager()]() -> std::optional<TrailNode> {
    const auto& rows = portfolio->transactions();
    const auto found = std::ranges::find(rows, shown);
    if (found == rows.end() || keeper == nullptr) {
      return std::nullopt;
    }
    const auto position = static_cast<std::size_t>(found - rows.begin());
    return isGain ? capitalGainTrail(*portfolio, position, keeper->calendar)
                  : costBaseTrail(*portfolio, position, keeper->calendar);
  };
}

const TransactionPointer& PortfolioTransactionsViewController::transaction(std::size_t row) const {
  return rows().at(row);
}

void PortfolioTransactionsViewController::setSelectedRows(std::vector<std::size_t> selected) {
  std::ranges::sort(selected);
  assert(selected.empty() || selected.back() < rows().size());
  selectedRows_ = std::move(selected);
}

void PortfolioTransactionsViewController::showTransaction(const TransactionPointer& shown) {
  auto found = std::ranges::find(rows(), shown);
  if (found == rows().end() && isFinding()) {
    setFindText("");
    found = std::ranges::find(rows(), shown);
  }
  if (found != rows().end()) {
    setSelectedRows({static_cast<std::size_t>(found - rows().begin())});
    changeHandler({.rowsChanged = false, .selectionChanged = true});
  }
}

std::vector<TransactionPointer> PortfolioTransactionsViewController::selectedTransactions() const {
  std::vector<TransactionPointer> selected;
  for (const std::size_t row : selectedRows_) {
    selected.push_back(transaction(row));
  }
  return selected;
}

std::string PortfolioTransactionsViewController::modifyMenuTitle() const {
  return selectedRows_.size() > 1 ? "Modify Transactions…" : "Modify Transaction…";
}

std::string PortfolioTransactionsViewController::deleteMenuTitle() const {
  return selectedRows_.size() > 1 ? "Delete Transactions" : "Delete Transaction";
}

void PortfolioTransactionsViewController::setReceivesCommands(bool receivesCommands) {
  if (std::exchange(receivesCommands_, receivesCommands) != receivesCommands) {
    changeHandler({.rowsChanged = false});
  }
}

void PortfolioTransactionsViewController::modifyTransactionAction() {
  if (!receivesCommands_) {
    return;
  }
  if (selectedRows_.size() == 1) {
    performSegue(EditTransaction{transaction(selectedRows_.front())});
  } else if (selectedRows_.size() > 1) {
    performSegue(EditBulkTransactions{selectedTransactions()});
  }
}

void PortfolioTransactionsViewController::duplicateTransactionAction() {
  if (canDuplicate()) {
    duplicateHandler(transaction(selectedRows_.front())->basic);
  }
}

bool PortfolioTransactionsViewController::canOpenEquity() const {
  return receivesCommands_ && selectedRows_.size() == 1 &&
         transaction(selectedRows_.front())->basic.equity() != nullptr;
}

void PortfolioTransactionsViewController::openEquityAction() {
  if (canOpenEquity()) {
    // The other screen may let go of the row.
    const EquityPointer equity = *transaction(selectedRows_.front())->basic.equity();
    openEquityHandler(equity);
  }
}

std::unique_ptr<EditTransactionViewController>
PortfolioTransactionsViewController::makeEditTransactionForm(
    const TransactionPointer& transaction) const {
  if (manager() == nullptr || transaction == nullptr) {
    return nullptr;
  }
  auto form = std::make_unique<EditTransactionViewController>();
  form->behaviour = EditTransactionViewController::Modify{transaction->basic,
                                                          currentData_.portfolio, transaction};
  form->presentError = surroundings_.presentError;
  form->now = surroundings_.now;
  return form;
}

std::unique_ptr<EditBulkTransactionsViewController>
PortfolioTransactionsViewController::makeEditBulkTransactionsForm(
    std::vector<TransactionPointer> transactions) const {
  if (manager() == nullptr) {
    return nullptr;
  }
  auto form = std::make_unique<EditBulkTransactionsViewController>();
  form->transactions = std::move(transactions);
  form->portfolio = currentData_.portfolio;
  return form;
}

void PortfolioTransactionsViewController::deleteTransactionAction() {
  const auto keeper = manager();
  const auto deleted = selectedTransactions();
  if (keeper == nullptr || !canModifyAndDelete()) {
    return;
  }
  // The edit makes the screen hand over new data before it returns.
  const PortfolioPointer portfolio = currentData_.portfolio;
  const bool succeeded = perform(countedTransactions("Delete", deleted.size()), [&] {
    keeper->deleteTransactions(deleted, portfolio, surroundings_.undoManager);
  });
  if (succeeded) {
    surroundings_.presentMessage("Deleted " + std::to_string(deleted.size()) +
                                 (deleted.size() == 1 ? " transaction." : " transactions."));
  }
}

bool PortfolioTransactionsViewController::modify(const TransactionPointer& transaction,
                                                 const Order& order) {
  const auto* record = std::get_if<Order::Record>(&order.kind);
  if (record == nullptr) {
    surroundings_.presentError(
        PortfolioManagerError(PortfolioManagerError::InvalidOrderType{order}));
    return false;
  }
  return revise({transaction}, {record->transaction});
}

bool PortfolioTransactionsViewController::modify(
    const std::vector<TransactionPointer>& transactions, const BulkRevision& revision) {
  std::vector<BasicTransaction> revisions;
  revisions.reserve(transactions.size());
  for (const TransactionPointer& transaction : transactions) {
    revisions.push_back(revision.applied(transaction->basic));
  }
  return revise(transactions, revisions);
}

bool PortfolioTransactionsViewController::validateDrop(const std::vector<std::size_t>& draggedRows,
                                                       std::size_t row) const {
  if (draggedRows.empty() || row > rows().size() || isFinding()) {
    return false;
  }
  const auto isDraggable = [&](std::size_t dragged) {
    return dragged < rows().size() && dragged != row && dragged + 1 != row;
  };
  if (!std::ranges::all_of(draggedRows, isDraggable)) {
    return false;
  }
  const Date date = transaction(draggedRows.front())->settlementDate();
  const auto hasDate = [&](std::size_t place) {
    return transaction(place)->settlementDate() == date;
  };
  return std::ranges::all_of(draggedRows, hasDate) &&
         ((row > 0 && hasDate(row - 1)) || (row < rows().size() && hasDate(row)));
}

bool PortfolioTransactionsViewController::acceptDrop(std::vector<std::size_t> draggedRows,
                                                     std::size_t row) {
  const auto keeper = manager();
  if (keeper == nullptr || !validateDrop(draggedRows, row)) {
    return false;
  }
  std::ranges::sort(draggedRows);
  PortfolioManager::Transactions moved;
  for (const std::size_t dragged : draggedRows) {
    moved.push_back(transaction(dragged));
  }
  const TransactionPointer anchor = row < rows().size() ? transaction(row) : rowBehindLast();
  const PortfolioPointer portfolio = currentData_.portfolio;
  return perform("Transaction Order", [&] {
    keeper->moveTransactions(moved, PortfolioManager::Anchors(moved.size(), anchor), portfolio,
                             surroundings_.undoManager);
  });
}

std::optional<std::size_t> PortfolioTransactionsViewController::placeAbove() const {
  if (!receivesCommands_ || selectedRows_.empty() || selectedRows_.front() == 0) {
    return std::nullopt;
  }
  return selectedRows_.front() - 1;
}

std::optional<std::size_t> PortfolioTransactionsViewController::placeBelow() const {
  if (!receivesCommands_ || selectedRows_.empty()) {
    return std::nullopt;
  }
  return selectedRows_.back() + 2;
}

bool PortfolioTransactionsViewController::canMoveUp() const {
  const auto place = placeAbove();
  return place && validateDrop(selectedRows_, *place) && isBesideSameDate(*place, *place + 1);
}

bool PortfolioTransactionsViewController::canMoveDown() const {
  const auto place = placeBelow();
  return place && validateDrop(selectedRows_, *place) && isBesideSameDate(*place - 1, *place - 2);
}

void PortfolioTransactionsViewController::moveUpAction() {
  if (canMoveUp()) {
    acceptDrop(selectedRows_, *placeAbove());
  }
}

void PortfolioTransactionsViewController::moveDownAction() {
  if (canMoveDown()) {
    acceptDrop(selectedRows_, *placeBelow());
  }
}

/// Whether the row that would be passed has the date of the one that passes it. A drop in front of
/// an older neighbour can be beside a row of the right date and yet behind one of another.
bool PortfolioTransactionsViewController::isBesideSameDate(std::size_t passed,
                                                           std::size_t moved) const {
  return passed < rows().size() && moved < rows().size() &&
         transaction(passed)->settlementDate() == transaction(moved)->settlementDate();
}

std::vector<TransactionPointer> PortfolioTransactionsViewController::exportedTransactions() const {
  return selectedRows_.empty() ? rows() : selectedTransactions();
}

std::string PortfolioTransactionsViewController::exportTitle() const {
  const bool hasSelection = !selectedRows_.empty();
  const std::size_t count = hasSelection ? selectedRows_.size() : rows().size();
  const bool isAll =
      currentData_.portfolio != nullptr && count == currentData_.portfolio->transactions().size();
  return std::string("Exporting") + (isAll ? " all" : "") + " " + std::to_string(count) + " " +
         (hasSelection ? "selected " : "") + (count == 1 ? "transaction." : "transactions.");
}

std::shared_ptr<PortfolioExporter> PortfolioTransactionsViewController::makeExporter() const {
  auto exporter = PortfolioTransactionsExporter::make(
      *currentData_.portfolio, exportedTransactions(), surroundings_.defaults);
  exporter->setTitleForSavePanel(exportTitle());
  return exporter;
}

const std::vector<TransactionPointer>& PortfolioTransactionsViewController::rows() const {
  return found_ ? *found_ : rowsOfDays();
}

const std::vector<TransactionPointer>& PortfolioTransactionsViewController::rowsOfDays() const {
  static const std::vector<TransactionPointer> none;
  return currentData_.transactions ? *currentData_.transactions : none;
}

std::shared_ptr<PortfolioManager> PortfolioTransactionsViewController::manager() const {
  return currentData_.portfolio == nullptr ? nullptr : currentData_.portfolio->manager.lock();
}

bool PortfolioTransactionsViewController::showsWholeLedger() const {
  return rows().size() == currentData_.portfolio->transactions().size();
}

/// The row of the ledger behind the last one shown; null where that is the last of all.
TransactionPointer PortfolioTransactionsViewController::rowBehindLast() const {
  const auto& ledger = currentData_.portfolio->transactions();
  const auto last = std::ranges::find(ledger, rows().back());
  return last == ledger.end() || last + 1 == ledger.end() ? nullptr : *(last + 1);
}

/// Shows the column of cash balances for a portfolio with cash accounts; whether that is new.
bool PortfolioTransactionsViewController::showCashColumn() {
  TableColumn& column = *std::ranges::find(columns_, netCashColumn, &TableColumn::identifier);
  const bool isHidden =
      currentData_.portfolio == nullptr || !currentData_.portfolio->usesCashAccounts;
  return std::exchange(column.isHidden, isHidden) != isHidden;
}

template <typename Edit>
bool PortfolioTransactionsViewController::perform(const std::string& actionName, Edit edit) {
  try {
    edit();
  } catch (const Error& error) {
    surroundings_.presentError(error);
    return false;
  }
  if (surroundings_.undoManager != nullptr) {
    surroundings_.undoManager->setActionName(actionName);
  }
  return true;
}

bool PortfolioTransactionsViewController::revise(
    const std::vector<TransactionPointer>& transactions,
    const std::vector<BasicTransaction>& revisions) {
  const auto keeper = manager();
  const PortfolioPointer portfolio = currentData_.portfolio;
  return keeper != nullptr && perform(countedTransactions("Modify", transactions.size()), [&] {
           keeper->reviseTransactions(transactions, revisions, std::nullopt, portfolio,
                                      surroundings_.undoManager);
         });
}

}  // namespace corvane
