// The sheet for a portfolio's name, currency and settings.
#pragma once

#include <QDialog>
#include <memory>

#include "presentation/portfolio/edit_portfolio_view_controller.h"

class QCheckBox;
class QComboBox;
class QLineEdit;
class QPushButton;

namespace corvane::desktop {

/// Shows an EditPortfolioViewController, which decides everything.
class EditPortfolioDialog : public QDialog {
  Q_OBJECT

 public:
  /// Opens `form`, which is ready to be loaded, on `parent`, and returns. Null where there is none.
  static EditPortfolioDialog* open(QWidget* parent,
                                   std::unique_ptr<EditPortfolioViewController> form);

  /// Closing the window by other means is a click on Cancel.
  void reject() override;

 private:
  EditPortfolioDialog(QWidget* parent, std::unique_ptr<EditPortfolioViewController> form);
  void layOut();
  void readFields();
  void showState();

  std::unique_ptr<EditPortfolioViewController> form_;
  QLineEdit* name_;
  QComboBox* currency_;
  QCheckBox* trackCashAccounts_;
  QCheckBox* allowNegativeBalances_;
  QCheckBox* populateRandomly_;
  QPushButton* go_;
  QPushButton* cancel_;
};

}  // namespace corvane::desktop
