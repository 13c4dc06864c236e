// The report of what investments have paid, as a tab of a portfolio and for a workspace.
#pragma once

#include <QWidget>
#include <memory>
#include <vector>

#include "platform/async/subscription.h"
#include "presentation/reports/income_view_controller.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QProgressBar;

namespace corvane::desktop {

class FiguresRow;
class ReportPage;
class ReportWarningBar;
class TableModelAdapter;
class TableView;

/// Shows an IncomeViewController: choices, figures, the bars of the months, the months of a year by
/// equity, and yields with what is expected.
class IncomeView : public QWidget {
  Q_OBJECT

 public:
  explicit IncomeView(std::shared_ptr<IncomeViewController> controller, QWidget* parent = nullptr);
  ~IncomeView() override;

 private:
  [[nodiscard]] QWidget* makeHeading();
  [[nodiscard]] QWidget* makeKinds();
  void addTables();
  void showState();
  void showChoices();

  std::shared_ptr<IncomeViewController> controller_;
  QLabel* title_;
  QComboBox* currency_;
  QComboBox* year_;
  QCheckBox* byYear_;
  std::vector<QCheckBox*> kinds_;
  QProgressBar* busy_;
  ReportWarningBar* warning_;
  ReportPage* page_;
  FiguresRow* figures_;
  TableModelAdapter* monthAdapter_;
  TableModelAdapter* expectedAdapter_;
  TableView* months_;
  TableView* expected_;
  QLabel* notes_ = nullptr;
  Subscription changes_;
};

}  // namespace corvane::desktop
