// The tab of what a portfolio holds.
#pragma once

#include <QWidget>
#include <memory>

#include "platform/async/subscription.h"
#include "presentation/portfolio/portfolio_holdings_view_controller.h"

class QLabel;

namespace corvane::desktop {

class PieChartWidget;
class TableModelAdapter;
class TableView;

/// A title, a table and a pie beside it.
class HoldingsTab : public QWidget {
 public:
  explicit HoldingsTab(std::shared_ptr<PortfolioHoldingsViewController> controller,
                       QWidget* parent = nullptr);

 protected:
  void resizeEvent(QResizeEvent* event) override;

 private:
  void showState();
  /// Gives the pie what the table can spare.
  void shareWidth();

  std::shared_ptr<PortfolioHoldingsViewController> controller_;
  QLabel* title_;
  TableModelAdapter* adapter_;
  TableView* table_;
  PieChartWidget* pie_;
  Subscription changes_;
};

}  // namespace corvane::desktop
