// The tab of a portfolio's transactions.
#pragma once

#include <QWidget>
#include <memory>
#include <vector>

#include "platform/async/subscription.h"
#include "presentation/transactions/portfolio_transactions_view_controller.h"

class QAction;

namespace corvane::desktop {

class FindRow;
class FirstSteps;
class TableView;
class TransactionsAdapter;

/// A line with a field to find transactions, and their table, in which rows are changed, deleted
/// and reordered. The table stays in the order of the ledger: in another one the balances beside
/// the rows would make no sense.
class TransactionsTab : public QWidget {
 public:
  explicit TransactionsTab(std::shared_ptr<PortfolioTransactionsViewController> controller,
                           QWidget* parent = nullptr);

  /// The commands for the selected rows, for the menu of the window as well.
  [[nodiscard]] std::vector<QAction*> commands() const {
    return {modify_, duplicate_, delete_, moveUp_, moveDown_, openEquity_};
  }
  /// Puts the keyboard into the field to find transactions.
  void startFinding();
  /// Adds commands of the window to the menu of the table.
  void addToContextMenu(const std::vector<QAction*>& commands);

 private:
  QAction* addCommand(const QString& text, const QList<QKeySequence>& shortcuts,
                      void (PortfolioTransactionsViewController::*command)());
  void openForm(const TransactionPointer& transaction);
  void openForm(const std::vector<TransactionPointer>& transactions);
  void perform(const PortfolioTransactionsViewController::Segue& segue);
  void update(const PortfolioTransactionsViewController::Update& update);
  void keepEndInView();
  void showSelection();
  void showRows(bool isSearch);
  void showWhatWasNotFound();
  void goToTable();
  void updateActions();

  std::shared_ptr<PortfolioTransactionsViewController> controller_;
  FindRow* find_;
  TransactionsAdapter* adapter_;
  TableView* table_;
  FirstSteps* nothingFound_;
  QAction* modify_;
  QAction* duplicate_;
  QAction* delete_;
  QAction* moveUp_;
  QAction* moveDown_;
  QAction* openEquity_;
  bool isShowingSelection_ = false;
  /// Whether the newest rows stay in view when the table gets more or less room.
  bool staysAtEnd_ = false;
  Subscription changes_;
  Subscription segues_;
};

}  // namespace corvane::desktop
