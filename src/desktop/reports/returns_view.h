// The report of what investments have returned, as a tab of a portfolio and for a workspace.
#pragma once

#include <memory>

#include "desktop/reports/report_view.h"
#include "presentation/reports/returns_view_controller.h"

class QComboBox;
class QLabel;

namespace corvane::desktop {

class TableModelAdapter;
class TableView;

/// Shows a ReturnsViewController: choices, figures, the chart of the index and that of drawdowns,
/// months, equities, and what leads from the opening to the closing value.
class ReturnsView : public ReportView {
  Q_OBJECT

 public:
  explicit ReturnsView(std::shared_ptr<ReturnsViewController> controller,
                       QWidget* parent = nullptr);

 protected:
  void showState() override;

 private:
  void addChoices();
  void addTables();
  TableView* addTable(TableModelAdapter* adapter, const TableModel& model, const QString& name,
                      const QString& objectName);
  void showChoices();
  void showTables();

  std::shared_ptr<ReturnsViewController> controller_;
  QComboBox* equity_;
  TableModelAdapter* monthAdapter_;
  TableModelAdapter* equityAdapter_;
  TableModelAdapter* reconciliationAdapter_;
  TableView* months_;
  QLabel* equitiesHeading_;
  TableView* equities_;
  TableView* reconciliation_;
};

}  // namespace corvane::desktop
