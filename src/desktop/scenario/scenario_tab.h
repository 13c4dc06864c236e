// What the two scenario tabs of an equity's screen have in common.
#pragma once

#include <QWidget>
#include <memory>

#include "platform/async/subscription.h"
#include "presentation/scenario/scenario_view_controller.h"

class QLabel;
class QProgressBar;
class QPushButton;

namespace corvane::desktop {

class AttributedLabel;
class FlowRow;
class TableModelAdapter;
class TableView;

/// Shows a ScenarioViewController: the days above, the panel on the left, beside it the summary and
/// the chart, and the table below all of it.
class ScenarioTab : public QWidget {
  Q_OBJECT

 protected:
  /// `name` says to a screen reader what chart and table are of.
  ScenarioTab(std::shared_ptr<ScenarioViewController> controller, const QString& name);

  /// The row above the summary, which is for the controls of each tab.
  [[nodiscard]] FlowRow& bar() { return *bar_; }
  [[nodiscard]] TableView& table() { return *table_; }
  /// Brings labels and buttons in line with the controller.
  virtual void update();

 private:
  QWidget* makeTop();
  QWidget* makePanel();
  QWidget* makeOutcome(const QString& name);
  void prepareTable();
  void updateRows(bool areAppended);
  void showSelection(bool takesKeyboard);

  std::shared_ptr<ScenarioViewController> controller_;
  FlowRow* bar_;
  QProgressBar* progress_;
  QPushButton* run_;
  AttributedLabel* summary_;
  QLabel* status_;
  TableModelAdapter* adapter_;
  TableView* table_;
  bool isShowingSelection_ = false;
  Subscription changes_;
  Subscription rowsChanges_;
  Subscription selectionChanges_;
};

}  // namespace corvane::desktop
