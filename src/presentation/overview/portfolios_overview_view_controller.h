// The first page of a workspace: what all portfolios are worth, what today has done, and where the
// money lies.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/async/notification_center.h"
#include "presentation/charts/fiscal_chart_view.h"
#include "presentation/overview/overview_tables.h"
#include "presentation/reports/report_view_controller.h"

namespace corvane {

/// The lists that can be written to a file.
enum class OverviewSection { portfolios, holdings, currencies };

/// All portfolios of a workspace. Figures and tables go by the latest prices and follow each of
/// their refreshes at once, while the page is shown; the chart and the return are worked out of
/// past prices when it opens and after edits. Held by shared pointer only. Main queue only.
class PortfoliosOverviewViewController
    : public ReportViewController,
      public std::enable_shared_from_this<PortfoliosOverviewViewController> {
  struct Passkey {};

 public:
  [[nodiscard]] static std::shared_ptr<PortfoliosOverviewViewController> make(
      ScreenSurroundings surroundings);
  PortfoliosOverviewViewController(Passkey passkey, ScreenSurroundings surroundings);

  [[nodiscard]] std::string_view tabTitle() const override { return "All Portfolios"; }
  [[nodiscard]] std::shared_ptr<PortfolioExporter> makeExporter() const override {
    return makeExporter(OverviewSection::holdings);
  }
  [[nodiscard]] std::shared_ptr<PortfolioExporter> makeExporter(OverviewSection section) const;

  [[nodiscard]] std::string title() const override;
  /// Asks the market again.
  void retryAction();
  /// Leaves out what has no price, for as long as the window is open.
  void leaveOutAction();

  FiscalChartView chart;
  RecordTable<OverviewPortfolio> portfolioTable;
  RecordTable<OverviewHolding> holdingTable;
  RecordTable<PortfoliosOverview::CurrencyLine> currencyTable;

  /// What the user does to a row of portfolioTable, and of holdingTable.
  void openPortfolioRow(std::size_t row);
  void openHoldingRow(std::size_t row);
  std::function<void(const PortfolioPointer&)> openPortfolioHandler = [](const PortfolioPointer&) {
  };

  /// What is shown; null before anything is.
  [[nodiscard]] const std::shared_ptr<const PortfoliosOverview>& overview() const {
    return overview_;
  }

 private:
  void observe();
  void forget(const std::string& message) override;
  void currencyDidChange() override { reload(); }
  void askMarket(const std::shared_ptr<QuoteProvider>& quotes) override;
  void pricesDidChange();
  void showOrRemember();
  void askRates(std::function<void()> completion);
  void takePresent();
  void compute();
  void take(OverviewHistory history);
  void show();
  void showWarning();
  [[nodiscard]] std::string chartProblem() const;
  [[nodiscard]] std::shared_ptr<PortfolioManager> manager() const;
  [[nodiscard]] std::shared_ptr<QuoteProvider> latestQuotes() const;

  std::shared_ptr<const PortfoliosOverview> overview_;
  std::shared_ptr<const OverviewHistory> history_;
  std::shared_ptr<MarketHistory> market_;  ///< what history_ is made of
  /// Held, so that their latest rates stay known.
  EquitySet rates_;
  bool isAskingRates_ = false;
  /// Left out of what stands at the latest prices, and of the chart.
  UnpricedAssets leftOut_;
  UnpricedAssets leftOutOfHistory_;
  std::vector<Subscription> observations_;
};

}  // namespace corvane
