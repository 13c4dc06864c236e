// The list at the side of the window.
#pragma once

#include <QWidget>
#include <memory>

#include "platform/async/subscription.h"
#include "presentation/frame/main_split_view_controller.h"

class QAction;
class QLabel;
class QListWidget;
class QPushButton;
class QVBoxLayout;

namespace corvane::desktop {

class EquityComboBoxView;
class PortfolioListModel;
class SourceListView;
class WatchlistModel;

/// Shows a MasterSourceViewController: the search box, the portfolios and the watchlist. Which rows
/// are selected is the controller's; a selection made here is told to it, and shown again as it has
/// it.
class SourceView : public QWidget {
  Q_OBJECT

 public:
  explicit SourceView(std::shared_ptr<MainSplitViewController> frame, QWidget* parent = nullptr);
  ~SourceView() override;

  [[nodiscard]] QAction* removeAction() const { return remove_; }
  /// Move the selected rows of the watchlist by one place.
  [[nodiscard]] QAction* moveUpAction() const { return moveUp_; }
  [[nodiscard]] QAction* moveDownAction() const { return moveDown_; }
  /// Puts the keyboard into the search box.
  void startSearch();
  /// Puts the keyboard into the list with the row that is shown, if there is one.
  void focusSelection();
  /// Selects the report that is shown, or none.
  void showReportSelection();
  [[nodiscard]] QSize sizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  void addSearchBox(QVBoxLayout* column);
  void addHeading(QVBoxLayout* column, const QString& text, QWidget* button);
  void addReports(QVBoxLayout* column);
  void addPriceStatus(QVBoxLayout* column);
  void addWatchlist(QVBoxLayout* column);
  void update(const MasterSourceViewController::Update& update);
  void showSelection();
  void showPriceStatus();
  void fitPortfolioList();

  std::shared_ptr<MainSplitViewController> frame_;
  MasterSourceViewController& controller_;
  WatchlistModel* watchlist_;
  PortfolioListModel* portfolios_;
  SourceListView* watchlistView_;
  SourceListView* portfolioView_;
  QListWidget* reports_;
  QWidget* emptyWatchlist_;
  QPushButton* newPortfolio_;
  EquityComboBoxView* search_;
  QPushButton* add_;
  QLabel* priceStatus_;
  QAction* remove_;
  QAction* moveUp_;
  QAction* moveDown_;
  bool isShowingSelection_ = false;
  Subscription changes_;
};

}  // namespace corvane::desktop
