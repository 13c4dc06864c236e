// The tab of a portfolio's transactions.
#pragma once

#include <QWidget>
#include <memory>

#include "platform/async/subscription.h"
#include "presentation/transactions/portfolio_transactions_view_controller.h"

class QAction;
class QLabel;

namespace corvane::desktop {

class TableView;
class TransactionsAdapter;

/// A title and the table of transactions, in which rows are changed, deleted and reordered.
class TransactionsTab : public QWidget {
 public:
  explicit TransactionsTab(std::shared_ptr<PortfolioTransactionsViewController> controller,
                           QWidget* parent = nullptr);

  /// The commands for the selected rows, for the menu of the window as well.
  [[nodiscard]] QAction* deleteAction() const { return delete_; }

 private:
  void update(const PortfolioTransactionsViewController::Update& update);
  void showSelection();
  void updateActions();

  std::shared_ptr<PortfolioTransactionsViewController> controller_;
  QLabel* title_;
  TransactionsAdapter* adapter_;
  TableView* table_;
  QAction* delete_;
  bool isShowingSelection_ = false;
  Subscription changes_;
};

}  // namespace corvane::desktop
