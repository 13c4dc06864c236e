// The screen of one portfolio: a heading, a choice of days and asset, a chart, and tabs that show
// the same choice.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "ledger/transaction/order.h"
#include "platform/async/notification_center.h"
#include "presentation/charts/fiscal_chart_view.h"
#include "presentation/controls/query_dates_picker.h"
#include "presentation/performance/portfolio_asset_menu.h"
#include "presentation/performance/portfolio_date_presets.h"
#include "presentation/performance/portfolio_heading.h"
#include "presentation/performance/portfolio_history.h"
#include "presentation/portfolio/edit_portfolio_view_controller.h"
#include "presentation/portfolio/portfolio_gain_loss_view_controller.h"
#include "presentation/portfolio/portfolio_holdings_view_controller.h"
#include "presentation/reports/explanation_view_controller.h"
#include "presentation/reports/income_view_controller.h"
#include "presentation/reports/returns_view_controller.h"
#include "presentation/screen/screen_surroundings.h"
#include "presentation/transactions/portfolio_transactions_view_controller.h"
#include "storage/workspace/workspace_model.h"

namespace corvane {

/// Decides what the screen shows and when prices are fetched. It follows the edits of its portfolio
/// and the refreshes of its prices by itself. Held by shared pointer only; a fetch does not keep it
/// alive. Main queue only.
class PortfolioViewController : public std::enable_shared_from_this<PortfolioViewController> {
  struct Passkey {};

 public:
  /// Another portfolio, or something in this one has changed.
  struct PortfolioChanged {
    std::optional<TransactionChanges> changes;
  };
  struct DatesChanged {};
  struct AssetFilterChanged {};
  using ReloadReason = std::variant<PortfolioChanged, DatesChanged, AssetFilterChanged>;

  static constexpr std::string_view tabIndexUserDefaultsKey = "portfolioDetail.lastTabIndex";

  /// The form for a new transaction; see makeCreateTransactionForm().
  struct CreateTransaction {
    static constexpr std::string_view identifier = "CreateTransaction";
    PortfolioPointer portfolio;
    std::optional<BasicTransaction> original = {};  ///< what it is filled from
  };
  /// The form of the portfolio's settings; see makeEditPortfolioForm().
  struct EditPortfolio {
    static constexpr std::string_view identifier = "EditPortfolio";
    PortfolioPointer portfolio;
  };
  /// What this screen asks its window to open.
  using Segue = std::variant<CreateTransaction, EditPortfolio>;

  [[nodiscard]] static std::shared_ptr<PortfolioViewController> make(
      ScreenSurroundings surroundings);
  PortfolioViewController(Passkey passkey, ScreenSurroundings surroundings);
  PortfolioViewController(const PortfolioViewController&) = delete;
  PortfolioViewController& operator=(const PortfolioViewController&) = delete;

  /// Called when heading, selector, warning, buttons or progress have changed; the chart, the
  /// picker and the tabs have handlers of their own.
  std::function<void()> changeHandler = [] {};
  std::function<void(const Segue&)> performSegue = [](const Segue&) {};
  /// Asks the user whether to delete the portfolio, and does so.
  std::function<void(const PortfolioPointer&)> deletePortfolioHandler;
  /// Shows an equity of a row on its own screen.
  std::function<void(const EquityPointer&)> openEquityHandler = [](const EquityPointer&) {};
  /// Shows how a figure came about; where there is a fetch, once more when that has answered.
  std::function<void(const TrailMaker&, const TrailFetch&)> explainHandler =
      [](const TrailMaker&, const TrailFetch&) {};

  const std::shared_ptr<PortfolioHoldingsViewController> holdings;
  const std::shared_ptr<PortfolioTransactionsViewController> transactions;
  const std::shared_ptr<PortfolioGainLossViewController> gains;
  const std::shared_ptr<ReturnsViewController> returns;
  const std::shared_ptr<IncomeViewController> income;
  /// The tabs, in the order in which they stand beside each other.
  const std::vector<PortfolioTab*> tabs;

  QueryDatesPicker datesPicker;
  FiscalChartView chart;

  /// The workspace of the portfolios, whose rules about taxes the form for a transaction knows.
  void setDocumentModel(std::weak_ptr<WorkspaceModel> model) { documentModel_ = std::move(model); }
  /// Shows `portfolio`; null for none.
  void setPortfolio(const PortfolioPointer& portfolio);
  void reload(ReloadReason reason);

  [[nodiscard]] const PortfolioDataSlice& currentData() const { return currentData_; }
  [[nodiscard]] const PortfolioHeading& heading() const { return heading_; }
  /// What the chart lacks or has from the cache alone, and why; empty where it lacks nothing.
  [[nodiscard]] const std::string& warning() const { return warning_; }
  /// Whether prices are being fetched.
  [[nodiscard]] bool isFetching() const { return history_->isFetching(); }

  [[nodiscard]] const PortfolioAssetMenu& assetMenu() const { return assetMenu_; }
  /// What the user does with the selector; a separator does nothing.
  void chooseAsset(std::size_t index);

  /// The tab that was shown last, also in an earlier run; the first one where there was none.
  [[nodiscard]] std::size_t selectedTabIndex() const;
  /// Commands for rows go to the selected tab only.
  void selectTab(std::size_t index);
  /// Shows the ledger's row at `position`, selected, with days that have it.
  void showTransaction(std::size_t position);
  [[nodiscard]] const PortfolioTab& selectedTab() const { return *tabs.at(selectedTabIndex()); }
  [[nodiscard]] std::size_t indexOf(const PortfolioTab& tab) const;

  // Commands.

  /// How the value in the heading came about; null without a portfolio.
  [[nodiscard]] TrailMaker valueTrailMaker() const;
  /// The same of its gain over the net deposits, and what fetches the rates of the days on which
  /// these were made; null where all are in the primary currency.
  struct GainTrail {
    TrailMaker maker;
    TrailFetch fetch;
  };
  [[nodiscard]] GainTrail gainTrail() const;

  /// Whether a transaction can be added and imported.
  [[nodiscard]] bool canCreateTransaction() const { return currentData_.portfolio != nullptr; }
  [[nodiscard]] bool canEditPortfolio() const { return currentData_.portfolio != nullptr; }
  void createTransactionAction();
  void editPortfolioAction();
  void deletePortfolioAction();

  /// The form that changes the settings of the portfolio, ready to be loaded; null without one.
  [[nodiscard]] std::unique_ptr<EditPortfolioViewController> makeEditPortfolioForm() const;
  /// The form for a new transaction, ready to be loaded; null without a portfolio.
  [[nodiscard]] std::unique_ptr<EditTransactionViewController> makeCreateTransactionForm(
      const CreateTransaction& segue) const;
  /// Places an order that a form has made; whether the form may close. A refusal is shown.
  [[nodiscard]] bool placeOrder(const Order& order, const PortfolioPointer& portfolio);

 private:
  void observe();
  /// Other prices may be had now: those of another source, or none that were kept.
  void quoteDataSourceDidChange();
  void portfolioEquitiesDidRefresh();
  void fetchDidEnd(Result<PortfolioSnapshotGroup> result);
  void redrawChart();
  void refreshWarning();
  void showInTabs();

  ScreenSurroundings surroundings_;
  std::weak_ptr<WorkspaceModel> documentModel_;
  PortfolioDataSlice currentData_;
  PortfolioHeading heading_;
  PortfolioDays days_;
  PortfolioAssetMenu assetMenu_;
  const std::shared_ptr<PortfolioHistory> history_ = std::make_shared<PortfolioHistory>();
  std::string warning_;
  std::vector<Subscription> observations_;
};

}  // namespace corvane
