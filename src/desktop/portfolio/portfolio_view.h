// The screen of one portfolio.
#pragma once

#include <QList>
#include <QWidget>
#include <functional>
#include <memory>

#include "platform/async/subscription.h"
#include "presentation/portfolio/portfolio_view_controller.h"

class QComboBox;
class QLabel;
class QMenu;
class QProgressBar;
class QPushButton;
class QSplitter;
class QTabWidget;

namespace corvane::desktop {

class AttributedLabel;
class ChartWidget;
class FirstSteps;
class TransactionsTab;

/// Shows a PortfolioViewController: heading, range and asset, chart, warning, tabs.
class PortfolioView : public QWidget {
  Q_OBJECT

 public:
  explicit PortfolioView(std::shared_ptr<PortfolioViewController> controller,
                         QWidget* parent = nullptr);

  [[nodiscard]] TransactionsTab& transactionsTab() { return *transactions_; }
  [[nodiscard]] QTabWidget& tabs() { return *tabs_; }
  /// Shows the transactions and puts the keyboard into the field to find some of them.
  void findTransactions();
  /// What stands in place of the chart while nothing has been recorded.
  [[nodiscard]] FirstSteps& firstSteps() { return *firstSteps_; }

 protected:
  void resizeEvent(QResizeEvent* event) override;

 private:
  QWidget* makeHeading();
  QWidget* makeSelectors();
  void update();
  void updateAssets();
  void giveChartItsPlace();
  void addExplanation(QWidget* label, const QString& text, const std::function<void()>& explain);
  void perform(const PortfolioViewController::Segue& segue);
  void openForm(const PortfolioViewController::CreateTransaction& segue);

  std::shared_ptr<PortfolioViewController> controller_;
  QLabel* name_;
  QLabel* value_;
  AttributedLabel* summary_;
  QPushButton* newTransaction_;
  QPushButton* details_;
  QComboBox* asset_;
  QProgressBar* fetching_;
  ChartWidget* chart_;
  QWidget* assetRow_ = nullptr;  ///< one of the selectors
  QWidget* selectors_;
  FirstSteps* firstSteps_;
  QLabel* warning_;
  QTabWidget* tabs_;
  TransactionsTab* transactions_;
  QSplitter* split_;
  QList<int> sharedHeights_ = {390, 350};  ///< of chart and tabs, where both are shown
  Subscription changes_;
  Subscription segues_;
};

}  // namespace corvane::desktop
