// The sheet that says whose the portfolios of a workspace are, and what its tax year goes by.
#pragma once

#include <QDialog>
#include <memory>

#include "presentation/taxes/tax_roles_form.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QVBoxLayout;

namespace corvane::desktop {

/// Shows a TaxRolesForm and applies it.
class TaxRolesDialog : public QDialog {
  Q_OBJECT

 public:
  static void open(QWidget* parent, std::unique_ptr<TaxRolesForm> form);

  explicit TaxRolesDialog(std::unique_ptr<TaxRolesForm> form, QWidget* parent = nullptr);

  void accept() override;

 private:
  void addRules(QVBoxLayout& column);
  void addPortfolios(QVBoxLayout& column);
  void showProblem();

  std::unique_ptr<TaxRolesForm> form_;
  QLabel* problem_;
  QPushButton* apply_;
};

}  // namespace corvane::desktop
