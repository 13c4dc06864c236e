// The report of what investments have paid, as a tab of a portfolio and for a workspace.
#pragma once

#include <memory>
#include <vector>

#include "desktop/reports/report_view.h"
#include "presentation/reports/income_view_controller.h"

class QCheckBox;
class QComboBox;

namespace corvane::desktop {

class TableModelAdapter;
class TableView;

/// Shows an IncomeViewController: choices, figures, the bars of the months, the months of a year by
/// equity, and yields with what is expected.
class IncomeView : public ReportView {
  Q_OBJECT

 public:
  explicit IncomeView(std::shared_ptr<IncomeViewController> controller, QWidget* parent = nullptr);

 protected:
  void showState() override;

 private:
  [[nodiscard]] QWidget* makeKinds();
  void addTables();
  void showChoices();

  std::shared_ptr<IncomeViewController> controller_;
  QComboBox* year_;
  QCheckBox* byYear_;
  std::vector<QCheckBox*> kinds_;
  TableModelAdapter* monthAdapter_;
  TableModelAdapter* expectedAdapter_;
  TableView* months_;
  TableView* expected_;
};

}  // namespace corvane::desktop
