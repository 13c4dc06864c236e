// The tab of what a portfolio has gained or lost by its trades.
#pragma once

#include <QWidget>
#include <memory>

#include "platform/async/subscription.h"
#include "presentation/portfolio/portfolio_gain_loss_view_controller.h"

class QLabel;

namespace corvane::desktop {

class TableModelAdapter;
class TableView;

/// A title and a table.
class GainsTab : public QWidget {
 public:
  explicit GainsTab(std::shared_ptr<PortfolioGainLossViewController> controller,
                    QWidget* parent = nullptr);

 private:
  void showState();

  std::shared_ptr<PortfolioGainLossViewController> controller_;
  QLabel* title_;
  TableModelAdapter* adapter_;
  TableView* table_;
  Subscription changes_;
};

}  // namespace corvane::desktop
