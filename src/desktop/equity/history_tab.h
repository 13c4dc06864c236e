// The second tab of an equity's screen.
#pragma once

#include <QWidget>
#include <memory>

#include "platform/async/subscription.h"
#include "presentation/equity/history_view_controller.h"

class QLabel;
class QProgressBar;

namespace corvane::desktop {

class TableModelAdapter;
class TableView;

/// Shows a HistoryViewController: the picker, the chart, and the table below it.
class HistoryTab : public QWidget {
  Q_OBJECT

 public:
  explicit HistoryTab(std::shared_ptr<HistoryViewController> controller, QWidget* parent = nullptr);

 protected:
  void showEvent(QShowEvent* event) override;

 private:
  QWidget* makeUpper();
  void update();
  void updateRows();
  void scrollToNewest();
  void showSelection(bool takesKeyboard);

  std::shared_ptr<HistoryViewController> controller_;
  QProgressBar* fetching_;
  QLabel* note_;
  QLabel* status_;
  TableModelAdapter* adapter_;
  TableView* table_;
  bool isShowingSelection_ = false;
  bool isNewestWanted_ = false;  ///< the rows are new, and were not seen yet
  Subscription changes_;
  Subscription rowsChanges_;
  Subscription selectionChanges_;
};

}  // namespace corvane::desktop
