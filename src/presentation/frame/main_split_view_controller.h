// The frame of a workspace's window: the source list beside the detail area.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "platform/async/subscription.h"
#include "platform/async/timer.h"
#include "presentation/equity/equity_view_controller.h"
#include "presentation/frame/master_source_view_controller.h"
#include "presentation/frame/workspace_reports.h"
#include "presentation/portfolio/edit_portfolio_view_controller.h"
#include "presentation/portfolio/portfolio_view_controller.h"
#include "presentation/reports/explanation_view_controller.h"
#include "presentation/scenario/scenario_batch_view_controller.h"
#include "presentation/scenario/scenario_detail_view_controller.h"
#include "presentation/screen/screen_surroundings.h"
#include "storage/workspace/workspace_model.h"

namespace corvane {

/// Shows in the detail area what is selected in the source list, and makes and deletes portfolios.
/// A workspace that is opened shows what was shown of it last, else its first portfolio, else the
/// first equity that is watched. It keeps the screens for the life of the window. Held by shared
/// pointer only. Main queue only.
class MainSplitViewController : public std::enable_shared_from_this<MainSplitViewController>,
                                public WorkspaceDocumentModelHaving {
  struct Passkey {};

 public:
  enum class DetailTab { emptyState, equity, portfolio, report };

  /// The form for a new portfolio; see makeCreatePortfolioForm().
  struct CreatePortfolio {
    static constexpr std::string_view identifier = "CreatePortfolio";
  };
  /// What this screen asks its window to open.
  using Segue = std::variant<CreatePortfolio>;
  /// What was shown last in all workspaces, the latest first. Each workspace finds its own there.
  static constexpr std::string_view lastShownUserDefaultsKey = "mainSplit.lastShown";

  [[nodiscard]] static std::shared_ptr<MainSplitViewController> make(
      ScreenSurroundings surroundings);
  MainSplitViewController(Passkey passkey, ScreenSurroundings surroundings);
  MainSplitViewController(const MainSplitViewController&) = delete;
  MainSplitViewController& operator=(const MainSplitViewController&) = delete;

  const std::shared_ptr<MasterSourceViewController> masterSourceViewController;
  const std::shared_ptr<EquityViewController> equityViewController;
  /// The last tabs of the equity's screen, in this order.
  const std::shared_ptr<ScenarioDetailViewController> scenarioDetailViewController;
  const std::shared_ptr<ScenarioBatchViewController> scenarioBatchViewController;
  const std::shared_ptr<PortfolioViewController> portfolioViewController;
  const std::shared_ptr<WorkspaceReports> reports;
  /// How a figure of any screen came about.
  ExplanationViewController explanation;

  /// Called when another screen is to be shown, or the text of the empty one has changed.
  std::function<void()> changeHandler = [] {};
  std::function<void(const Segue&)> performSegue = [](const Segue&) {};

  [[nodiscard]] std::weak_ptr<WorkspaceModel> documentModel() const override {
    return documentModel_;
  }
  void setDocumentModel(std::weak_ptr<WorkspaceModel> model) override;

  [[nodiscard]] DetailTab currentDetailTab() const { return currentDetailTab_; }
  /// Shows a report about all portfolios.
  void showReport(WorkspaceReport report);
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
  /// Shows everything anew, after a setting has changed that says how it is shown.
  void settingsDidChange();
  void connectScenarios();
  void connectReports();
  void showDetail(const MasterSourceViewController::DetailObject& object);
  void openRow(const PortfolioPointer& portfolio, std::size_t position);
  void removePortfolio(const PortfolioPointer& portfolio);
  [[nodiscard]] MasterSourceViewController::DetailObject initialDetailObject() const;
  void rememberLater(const MasterSourceViewController::DetailObject& object);

  ScreenSurroundings surroundings_;
  std::weak_ptr<WorkspaceModel> documentModel_;
  DetailTab currentDetailTab_ = DetailTab::emptyState;
  std::shared_ptr<Timer> rememberTimer_;
  std::vector<Subscription> settings_;
};

}  // namespace corvane
