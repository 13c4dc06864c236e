// The line above the table of transactions: how many there are, and the field to find some of them.
#pragma once

#include <QWidget>
#include <functional>
#include <memory>

#include "presentation/transactions/portfolio_transactions_view_controller.h"

class QLabel;
class QLineEdit;
class QPushButton;

namespace corvane::desktop {

/// What is typed narrows the table at once. Escape shows all rows again and, like Return and Down,
/// goes to the table.
class FindRow : public QWidget {
 public:
  explicit FindRow(std::shared_ptr<PortfolioTransactionsViewController> controller,
                   QWidget* parent = nullptr);

  /// Called when the keyboard is to go to the table.
  std::function<void()> leaveHandler = [] {};

  /// Puts the keyboard into the field, for other words.
  void startFinding();
  /// Shows what the controller has.
  void refresh();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  std::shared_ptr<PortfolioTransactionsViewController> controller_;
  QLabel* title_;
  QLabel* hiddenEdits_;
  QPushButton* showHiddenEdits_;
  QLineEdit* field_;
};

}  // namespace corvane::desktop
