// The frame of a workspace's window: the source list beside the detail area.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <variant>

#include "presentation/frame/master_source_view_controller.h"
#include "presentation/portfolio/edit_portfolio_view_controller.h"
#include "presentation/portfolio/portfolio_view_controller.h"
#include "presentation/screen/screen_surroundings.h"
#include "storage/workspace/workspace_model.h"

namespace corvane {

/// Whatever shows an equity.
class CurrentEquityHaving {
 public:
  virtual ~CurrentEquityHaving() = default;
  [[nodiscard]] virtual const EquityPointer& currentEquity() const = 0;
  virtual void setCurrentEquity(EquityPointer equity) = 0;
};

/// The screen of one equity as the frame needs it.
class EquityScreen : public CurrentEquityHaving, public WorkspaceDocumentModelHaving {
 public:
  /// What the button does that adds the shown equity to the watchlist.
  std::function<void(const EquityPointer&)> addToWatchlistHandler;
};

/// Shows in the detail area what is selected in the source list, and makes and deletes portfolios.
/// It keeps the screens for the life of the window. Held by shared pointer only. Main queue only.
class MainSplitViewController : public std::enable_shared_from_this<MainSplitViewController>,
                                public WorkspaceDocumentModelHaving {
  struct Passkey {};

 public:
  enum class DetailTab { emptyState, equity, portfolio };

  /// The form for a new portfolio; see makeCreatePortfolioForm().
  struct CreatePortfolio {
    static constexpr std::string_view identifier = "CreatePortfolio";
  };
  /// What this screen asks its window to open.
  using Segue = std::variant<CreatePortfolio>;

  [[nodiscard]] static std::shared_ptr<MainSplitViewController> make(
      ScreenSurroundings surroundings);
  MainSplitViewController(Passkey passkey, ScreenSurroundings surroundings);
  MainSplitViewController(const MainSplitViewController&) = delete;
  MainSplitViewController& operator=(const MainSplitViewController&) = delete;

  const std::shared_ptr<MasterSourceViewController> masterSourceViewController;
  const std::shared_ptr<PortfolioViewController> portfolioViewController;
  /// Set once, before a model is; without it equities show the empty state.
  std::shared_ptr<EquityScreen> equityViewController;

  /// Called when another screen is to be shown, or the text of the empty one has changed.
  std::function<void()> changeHandler = [] {};
  std::function<void(const Segue&)> performSegue = [](const Segue&) {};

  [[nodiscard]] std::weak_ptr<WorkspaceModel> documentModel() const override {
    return documentModel_;
  }
  void setDocumentModel(std::weak_ptr<WorkspaceModel> model) override;

  [[nodiscard]] DetailTab currentDetailTab() const { return currentDetailTab_; }
  /// What the empty state says.
  [[nodiscard]] std::string emptyStateMessage() const;

  [[nodiscard]] bool canCreatePortfolio() const;
  void createPortfolioAction();
  /// The form for a new portfolio, ready to be loaded; `close` is called when it is done. Null
  /// where no portfolio can be made.
  [[nodiscard]] std::unique_ptr<EditPortfolioViewController> makeCreatePortfolioForm(
      std::function<void()> close, bool offersRandomPopulation);

  /// Asks, and on "Delete" removes the portfolio with all its transactions, for good.
  void deletePortfolio(const PortfolioPointer& portfolio);

 private:
  void connect();
  void showDetail(const MasterSourceViewController::DetailObject& object);
  void removePortfolio(const PortfolioPointer& portfolio);

  ScreenSurroundings surroundings_;
  std::weak_ptr<WorkspaceModel> documentModel_;
  DetailTab currentDetailTab_ = DetailTab::emptyState;
};

}  // namespace corvane
