// The report of what investments have returned, as a tab of a portfolio and for a workspace.
#pragma once

#include <QWidget>
#include <memory>

#include "platform/async/subscription.h"
#include "presentation/reports/returns_view_controller.h"

class QComboBox;
class QLabel;
class QProgressBar;
class QVBoxLayout;

namespace corvane::desktop {

class EquityComboBoxView;
class FiguresRow;
class ReportPage;
class ReportWarningBar;
class TableModelAdapter;
class TableView;

/// Shows a ReturnsViewController: choices, figures, the chart of the index and that of drawdowns,
/// months, equities, and what leads from the opening to the closing value.
class ReturnsView : public QWidget {
  Q_OBJECT

 public:
  explicit ReturnsView(std::shared_ptr<ReturnsViewController> controller,
                       QWidget* parent = nullptr);
  ~ReturnsView() override;

 private:
  void addChoices(QVBoxLayout& column);
  void addTables();
  TableView* addTable(TableModelAdapter* adapter, const TableModel& model, const QString& name,
                      const QString& objectName);
  void showState();
  void showChoices();
  void showTables();

  std::shared_ptr<ReturnsViewController> controller_;
  QLabel* title_;
  QComboBox* equity_;
  QComboBox* currency_;
  EquityComboBoxView* benchmark_;
  QProgressBar* busy_;
  ReportWarningBar* warning_;
  ReportPage* page_;
  FiguresRow* figures_;
  QLabel* notes_;
  TableModelAdapter* monthAdapter_;
  TableModelAdapter* equityAdapter_;
  TableModelAdapter* reconciliationAdapter_;
  TableView* months_;
  QLabel* equitiesHeading_;
  TableView* equities_;
  TableView* reconciliation_;
  Subscription changes_;
};

}  // namespace corvane::desktop
