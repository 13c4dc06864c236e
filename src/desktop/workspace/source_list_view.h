// The list at the side of the window.
#pragma once

#include <QWidget>
#include <memory>

#include "platform/async/subscription.h"
#include "presentation/frame/main_split_view_controller.h"

class QAction;
class QPushButton;
class QVBoxLayout;

namespace corvane::desktop {

class PortfolioListModel;
class SourceListView;
class WatchlistModel;

/// Shows a MasterSourceViewController: the portfolios and the watchlist. Which rows are selected is
/// the controller's; a selection made here is told to it, and shown again as it has it.
class SourceView : public QWidget {
  Q_OBJECT

 public:
  explicit SourceView(std::shared_ptr<MainSplitViewController> frame, QWidget* parent = nullptr);

  [[nodiscard]] QAction* removeAction() const { return remove_; }
  [[nodiscard]] QSize sizeHint() const override { return {260, 600}; }

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  void addHeading(QVBoxLayout* column, const QString& text, QWidget* button);
  void update(const MasterSourceViewController::Update& update);
  void showSelection();
  void fitPortfolioList();

  std::shared_ptr<MainSplitViewController> frame_;
  MasterSourceViewController& controller_;
  WatchlistModel* watchlist_;
  PortfolioListModel* portfolios_;
  SourceListView* watchlistView_;
  SourceListView* portfolioView_;
  QPushButton* newPortfolio_;
  QAction* remove_;
  bool isShowingSelection_ = false;
  Subscription changes_;
};

}  // namespace corvane::desktop
