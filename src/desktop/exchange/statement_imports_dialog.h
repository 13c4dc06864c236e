// The window with the imports of a portfolio.
#pragma once

#include <QDialog>
#include <memory>
#include <optional>

#include "presentation/portfolio/statement_imports_controller.h"

class QPushButton;

namespace corvane::desktop {

class TableModelAdapter;
class TableView;

/// Shows a StatementImportsController.
class StatementImportsDialog : public QDialog {
  Q_OBJECT

 public:
  StatementImportsDialog(std::unique_ptr<StatementImportsController> imports, QWidget* parent);
  ~StatementImportsDialog() override;

 private:
  void showState();
  [[nodiscard]] std::optional<std::size_t> selectedRow() const;

  std::unique_ptr<StatementImportsController> imports_;
  TableView* table_;
  TableModelAdapter* rows_;
  QPushButton* takeBack_;
};

}  // namespace corvane::desktop
