// The screen of one equity: a heading over tabs that show the same equity.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/async/subscription.h"
#include "presentation/equity/equity_heading.h"
#include "presentation/equity/history_view_controller.h"
#include "presentation/equity/overview_view_controller.h"
#include "presentation/screen/current_equity_having.h"
#include "presentation/screen/screen_surroundings.h"
#include "storage/workspace/workspace_model.h"

namespace corvane {

/// Hands the equity to its tabs, of which the one on the screen asks the market. It follows the
/// refreshes of prices, the data source and the settings by itself. Held by shared pointer only.
/// Main queue only.
class EquityViewController : public std::enable_shared_from_this<EquityViewController>,
                             public CurrentEquityHaving,
                             public WorkspaceDocumentModelHaving {
  struct Passkey {};

 public:
  [[nodiscard]] static std::shared_ptr<EquityViewController> make(ScreenSurroundings surroundings);
  EquityViewController(Passkey passkey, ScreenSurroundings surroundings);
  EquityViewController(const EquityViewController&) = delete;
  EquityViewController& operator=(const EquityViewController&) = delete;

  /// Called when the heading, the button or the tab have changed.
  std::function<void()> changeHandler = [] {};
  /// What the button does that adds the shown equity to the watchlist.
  std::function<void(const EquityPointer&)> addToWatchlistHandler;

  const std::shared_ptr<OverviewViewController> overview;
  const std::shared_ptr<HistoryViewController> history;

  /// Adds a tab behind the others; `tab` gets the model too where it takes one.
  void addTab(const std::shared_ptr<EquityTab>& tab);
  [[nodiscard]] std::size_t numberOfTabs() const { return tabs_.size(); }
  [[nodiscard]] std::size_t selectedTabIndex() const { return selectedTab_; }
  void selectTab(std::size_t index);

  [[nodiscard]] const EquityPointer& currentEquity() const override { return currentEquity_; }
  /// Null for none. Tabs hear of it where the symbol is another one.
  void setCurrentEquity(EquityPointer equity) override;
  [[nodiscard]] std::weak_ptr<WorkspaceModel> documentModel() const override {
    return documentModel_;
  }
  void setDocumentModel(std::weak_ptr<WorkspaceModel> model) override;

  /// Whether the screen is the one in front; without it nothing is asked.
  void setShown(bool isShown);

  [[nodiscard]] const EquityHeading& heading() const { return heading_; }
  [[nodiscard]] bool isWatchlistButtonHidden() const;
  void addToWatchlistAction();
  /// To be called when a setting has changed that says how prices are shown.
  void settingsDidChange();
  /// To be called when the watchlist has changed.
  void watchlistDidChange() { changeHandler(); }

 private:
  void observe();
  void refreshHeading();
  void refreshEquity();
  void equitiesDidRefresh();
  void passEquityToTabs();

  ScreenSurroundings surroundings_;
  std::weak_ptr<WorkspaceModel> documentModel_;
  EquityPointer currentEquity_;
  EquityHeading heading_;
  std::vector<std::shared_ptr<EquityTab>> tabs_;
  std::size_t selectedTab_ = 0;
  bool isShown_ = false;
  bool doTabsKnowEquity_ = true;  ///< whether its fields were real data when they were given it
  std::vector<Subscription> observations_;
};

}  // namespace corvane
