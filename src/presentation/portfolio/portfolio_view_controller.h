// The screen of one portfolio: a heading, a choice of days and asset, a chart, and tabs that show
// the same choice.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <variant>
#include <vector>

#include "core/market/portfolio_asset.h"
#include "ledger/transaction/order.h"
#include "platform/async/notification_center.h"
#include "presentation/charts/fiscal_chart_view.h"
#include "presentation/controls/query_dates_picker.h"
#include "presentation/portfolio/edit_portfolio_view_controller.h"
#include "presentation/portfolio/portfolio_gain_loss_view_controller.h"
#include "presentation/portfolio/portfolio_holdings_view_controller.h"
#include "presentation/screen/screen_surroundings.h"
#include "presentation/transactions/portfolio_transactions_view_controller.h"

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

  struct Heading {
    std::string name;
    std::string value;
    AttributedText summary;
  };

  /// An item of the asset selector.
  struct AssetMenuItem {
    std::string title;                    ///< empty for a separator
    std::optional<PortfolioAsset> asset;  ///< none for "All" and for a separator
    bool isSeparator = false;
  };

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

  /// The tabs, in this order.
  const std::shared_ptr<PortfolioHoldingsViewController> holdings;
  const std::shared_ptr<PortfolioTransactionsViewController> transactions;
  const std::shared_ptr<PortfolioGainLossViewController> gains;

  QueryDatesPicker datesPicker;
  FiscalChartView chart;

  /// Shows `portfolio`; null for none.
  void setPortfolio(const PortfolioPointer& portfolio);
  void reload(ReloadReason reason);

  [[nodiscard]] const PortfolioDataSlice& currentData() const { return currentData_; }
  [[nodiscard]] const Heading& heading() const { return heading_; }
  /// What the chart lacks or has from the cache alone, and why; empty where it lacks nothing.
  [[nodiscard]] const std::string& warning() const { return warning_; }
  /// Whether prices are being fetched.
  [[nodiscard]] bool isFetching() const { return fetchesUnderWay_ > 0; }

  /// The asset selector, "All" first.
  [[nodiscard]] const std::vector<AssetMenuItem>& assetMenu() const { return assetMenu_; }
  [[nodiscard]] std::size_t selectedAssetIndex() const;
  /// None for all.
  [[nodiscard]] const std::optional<PortfolioAsset>& currentAsset() const { return currentAsset_; }
  [[nodiscard]] const std::vector<Currency>& availableCurrencies() const {
    return availableCurrencies_;
  }
  /// What the user does with the selector; a separator does nothing.
  void chooseAsset(std::size_t index);

  /// The tab that was shown last, also in an earlier run; the first one where there was none.
  [[nodiscard]] std::size_t selectedTabIndex() const;
  /// Commands for rows go to the selected tab only.
  void selectTab(std::size_t index);
  static constexpr std::size_t numberOfTabs = 3;
  static constexpr std::size_t transactionsTabIndex = 1;

  // Commands.

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
  using FetchResult = Result<PortfolioManager::FetchDailySnapshotsResult>;

  void observe();
  /// Other prices may be had now: those of another source, or none that were kept.
  void quoteDataSourceDidChange();
  void refreshHeading();
  void rebuildDatePresets(const PortfolioManager& manager);
  void fetch(const std::shared_ptr<PortfolioManager>& manager);
  void fetchDidEnd(FetchResult result);
  void fetchWhatWasMissing();
  void take(PortfolioManager::FetchDailySnapshotsResult result);
  void rebuildAssetMenu();
  void redrawChart();
  void refreshWarning();
  void showInTabs();

  ScreenSurroundings surroundings_;
  PortfolioDataSlice currentData_;
  Heading heading_;
  std::vector<Currency> availableCurrencies_;
  std::vector<AssetMenuItem> assetMenu_;
  std::optional<PortfolioAsset> currentAsset_;
  EquitySet incompleteEquities_;
  CurrencySet incompleteCurrencies_;
  /// Of what only the cache could be asked.
  EquityMap<Date> endsOfStoredPrices_;
  std::string warning_;
  /// Whether the days are all that the ledger shown last has: of another one it is all of its own.
  bool showsAllTime_ = true;
  int fetchesUnderWay_ = 0;
  std::vector<Subscription> observations_;
};

}  // namespace corvane
