// The tab that lists the rows of a ledger, and lets the user change, delete and reorder them.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "ledger/transaction/order.h"
#include "presentation/controls/table_model.h"
#include "presentation/screen/current_portfolio_having.h"
#include "presentation/screen/screen_surroundings.h"
#include "presentation/transactions/edit_bulk_transactions_view_controller.h"
#include "presentation/transactions/edit_transaction_view_controller.h"
#include "presentation/transactions/transaction_finder.h"

namespace corvane {

/// The transactions table. Rows are those of the chosen days in ledger order; their texts are made
/// when they are asked for. Edits go through the portfolio's manager; what it refuses is shown on
/// the window. Held by shared pointer only. Main queue only.
class PortfolioTransactionsViewController : public PortfolioTab, public TableModel {
 public:
  /// What has changed in the table.
  struct Update {
    /// Whether rows came, went or moved; their selection then has to be shown anew too.
    bool rowsChanged = true;
    /// Rows whose texts have changed, by their place in the table as it is now; the other rows
    /// that stayed need not be drawn again.
    std::vector<std::size_t> reloadedRows = {};
    bool columnsChanged = false;
    /// Whether the rows are others only because something else is looked for: columns keep their
    /// widths then, so that nothing jumps while somebody types.
    bool isSearch = false;
    bool selectionChanged = false;
    /// Whether the table has just been opened on these rows and is to show the newest of them.
    bool showsNewestRows = false;
  };

  /// The form for one row.
  struct EditTransaction {
    static constexpr std::string_view identifier = "EditTransaction";
    TransactionPointer transaction;
  };
  /// The form for several rows.
  struct EditBulkTransactions {
    static constexpr std::string_view identifier = "EditBulkTransactions";
    std::vector<TransactionPointer> transactions;
  };
  /// What this screen asks its window to open.
  using Segue = std::variant<EditTransaction, EditBulkTransactions>;

  /// The type under which dragged rows carry their place in the table, a whole number.
  static constexpr std::string_view transactionIndexPasteboardType =
      "ca.orlend.Corvane.PortfolioTransactionsViewController.transactionIndex";

  explicit PortfolioTransactionsViewController(ScreenSurroundings surroundings);

  /// Called when there is something new to draw.
  std::function<void(const Update&)> changeHandler = [](const Update&) {};
  std::function<void(const Segue&)> performSegue = [](const Segue&) {};

  [[nodiscard]] const PortfolioDataSlice& currentData() const override { return currentData_; }
  void setCurrentData(PortfolioDataSlice data,
                      const std::optional<TransactionChanges>& changes) override;
  [[nodiscard]] std::string_view tabTitle() const override { return "Transactions"; }
  [[nodiscard]] std::shared_ptr<PortfolioExporter> makeExporter() const override;

  // Finding. Of the rows of the chosen days, those are shown that have all words that are looked
  // for; see TransactionFinder. Commands and exports mean what is shown. Another portfolio is shown
  // whole.

  /// What is looked for, as it was typed.
  [[nodiscard]] const std::string& findText() const { return findText_; }
  /// Shows the rows with the words of `text`; all without words. Rows that are hidden by it are
  /// not selected any more. Words that hid what was just entered select that when they go.
  void setFindText(std::string text);
  [[nodiscard]] bool isFinding() const { return found_.has_value(); }
  /// Whether the chosen days have rows to look through.
  [[nodiscard]] bool canFind() const { return !rowsOfDays().empty(); }
  /// What to say in place of the table where nothing was found; empty where something is shown.
  [[nodiscard]] std::string nothingFoundText() const;
  /// Says that rows which were just recorded or changed lack the words and are hidden; empty where
  /// none is.
  [[nodiscard]] std::string hiddenEditsText() const;

  /// How many of the ledger's rows are shown; empty without data.
  [[nodiscard]] std::string title() const;

  [[nodiscard]] const std::vector<TableColumn>& columns() const override { return columns_; }
  [[nodiscard]] std::size_t numberOfRows() const override;
  [[nodiscard]] AttributedText cell(std::size_t row, std::size_t column) const override;
  [[nodiscard]] TrailMaker trailOf(std::size_t row, std::size_t column) const override;
  [[nodiscard]] const TransactionPointer& transaction(std::size_t row) const;

  /// Places of the selected rows, ascending.
  [[nodiscard]] const std::vector<std::size_t>& selectedRows() const { return selectedRows_; }
  void setSelectedRows(std::vector<std::size_t> rows);
  [[nodiscard]] std::vector<TransactionPointer> selectedTransactions() const;
  /// Selects the row of `transaction` alone, where the chosen days have it, and brings it into
  /// view; what is looked for ends where it hides the row.
  void showTransaction(const TransactionPointer& transaction);

  // Commands for the selected rows.

  [[nodiscard]] std::string modifyMenuTitle() const;
  [[nodiscard]] std::string deleteMenuTitle() const;
  [[nodiscard]] bool canModifyAndDelete() const {
    return receivesCommands_ && !selectedRows_.empty();
  }
  [[nodiscard]] bool canDuplicate() const { return receivesCommands_ && selectedRows_.size() == 1; }

  /// A row that is selected in a tab that nobody sees must not be deleted. Commands are meant for
  /// this table until somebody says otherwise.
  void setReceivesCommands(bool receivesCommands) override;

  /// Opens the form for the selected row, or the one for many.
  void modifyTransactionAction();
  /// Opens the form for a new transaction, filled from the selected row.
  void duplicateTransactionAction();
  /// Deletes the selected rows and says how many they were.
  void deleteTransactionAction();

  /// Whether one row is selected that names an equity.
  [[nodiscard]] bool canOpenEquity() const;
  /// Shows the equity of the selected row on its own screen.
  void openEquityAction();

  /// Opens the form for a new transaction, filled from `original`.
  std::function<void(const BasicTransaction& original)> duplicateHandler =
      [](const BasicTransaction&) {};

  /// The forms of the two segues, ready to be loaded; null where a portfolio is missing.
  [[nodiscard]] std::unique_ptr<EditTransactionViewController> makeEditTransactionForm(
      const TransactionPointer& transaction) const;
  [[nodiscard]] std::unique_ptr<EditBulkTransactionsViewController> makeEditBulkTransactionsForm(
      std::vector<TransactionPointer> transactions) const;

  /// Carries out what a form has come to; whether it may close. A refusal is shown and keeps it
  /// open.
  [[nodiscard]] bool modify(const TransactionPointer& transaction, const Order& order);
  [[nodiscard]] bool modify(const std::vector<TransactionPointer>& transactions,
                            const BulkRevision& revision);

  // Reordering by drag, and by keyboard one row up or down. Not while something is looked for:
  // rows would pass others that nobody sees.

  [[nodiscard]] bool canMoveUp() const;
  [[nodiscard]] bool canMoveDown() const;
  void moveUpAction();
  void moveDownAction();

  /// Whether `draggedRows` may be dropped at `row`, which is the place in front of that row, or
  /// behind the last row where it is their number: rows of one settlement date, next to a row of
  /// the same date, and not where they are already. Not for a drop on a row.
  [[nodiscard]] bool validateDrop(const std::vector<std::size_t>& draggedRows,
                                  std::size_t row) const;
  /// Moves the rows there; whether the ledger took it.
  bool acceptDrop(std::vector<std::size_t> draggedRows, std::size_t row);

  // Export.

  static constexpr std::string_view exportConfigurationKey =
      "portfolioTransactionsExportConfiguration";
  /// The selected rows, or all that are shown.
  [[nodiscard]] std::vector<TransactionPointer> exportedTransactions() const;
  [[nodiscard]] std::string exportTitle() const;

 private:
  /// Those that are shown.
  [[nodiscard]] const std::vector<TransactionPointer>& rows() const;
  [[nodiscard]] const std::vector<TransactionPointer>& rowsOfDays() const;
  void find();
  void noteHiddenEdits(const TransactionChanges& changes);
  [[nodiscard]] std::shared_ptr<PortfolioManager> manager() const;
  [[nodiscard]] bool showsWholeLedger() const;
  [[nodiscard]] TransactionPointer rowBehindLast() const;
  bool showCashColumn();
  /// In front of which row the selected ones go when they move up, or down; none without any.
  [[nodiscard]] std::optional<std::size_t> placeAbove() const;
  [[nodiscard]] std::optional<std::size_t> placeBelow() const;
  [[nodiscard]] bool isBesideSameDate(std::size_t passed, std::size_t moved) const;
  /// Runs `edit`, names its undo step, and shows what it throws; whether it threw nothing.
  template <typename Edit>
  bool perform(const std::string& actionName, Edit edit);
  [[nodiscard]] bool revise(const std::vector<TransactionPointer>& transactions,
                            const std::vector<BasicTransaction>& revisions);

  ScreenSurroundings surroundings_;
  PortfolioDataSlice currentData_;
  std::vector<TableColumn> columns_;
  std::vector<std::size_t> selectedRows_;
  bool receivesCommands_ = true;
  std::string findText_;
  std::optional<std::vector<TransactionPointer>> found_;  ///< the rows with the words; none without
  std::unique_ptr<TransactionFinder> finder_;             ///< of the rows of the days; once needed
  TransactionSet hiddenEdits_;  ///< what the last edit has entered and the words hide
};

}  // namespace corvane
