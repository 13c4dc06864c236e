// The first tab of an equity's screen.
#pragma once

#include <QWidget>
#include <memory>

#include "platform/async/subscription.h"
#include "presentation/equity/overview_view_controller.h"

class QButtonGroup;
class QLabel;
class QProgressBar;

namespace corvane::desktop {

class TableModelAdapter;
class TableView;

/// Shows an OverviewViewController: the periods, the chart, and the table of events beside it.
class OverviewTab : public QWidget {
  Q_OBJECT

 public:
  explicit OverviewTab(std::shared_ptr<OverviewViewController> controller,
                       QWidget* parent = nullptr);

 private:
  QWidget* makePeriods();
  QWidget* makeEvents();
  void update();
  void updateEvents();

  std::shared_ptr<OverviewViewController> controller_;
  QButtonGroup* periods_;
  QProgressBar* fetching_;
  QLabel* days_;
  QLabel* note_;
  QLabel* status_;
  TableModelAdapter* adapter_;
  TableView* events_;
  Subscription changes_;
  Subscription eventsChanges_;
};

}  // namespace corvane::desktop
