// The tab that shows what a portfolio holds at the end of the chosen days.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "presentation/charts/pie_chart_view.h"
#include "presentation/controls/table_model.h"
#include "presentation/screen/current_portfolio_having.h"
#include "presentation/screen/screen_surroundings.h"

namespace corvane {

/// A table with a row for the cash of each currency and for each equity, a pie of what they are
/// worth, and a title. Shows what it is given and fetches nothing. Main queue only.
class PortfolioHoldingsViewController : public PortfolioTab, public TableModel {
 public:
  explicit PortfolioHoldingsViewController(ScreenSurroundings surroundings);

  /// Called when title, table and pie have changed.
  std::function<void()> changeHandler = [] {};

  [[nodiscard]] const PortfolioDataSlice& currentData() const override { return currentData_; }
  void setCurrentData(PortfolioDataSlice data,
                      const std::optional<TransactionChanges>& changes) override;
  [[nodiscard]] std::string_view tabTitle() const override { return "Holdings"; }
  [[nodiscard]] std::shared_ptr<PortfolioExporter> makeExporter() const override;

  /// What the rows of the table stand for.
  [[nodiscard]] const std::vector<PortfolioAsset>& assetEntries() const { return assetEntries_; }
  /// What the user does to a row; one of cash leads nowhere.
  void openRow(std::size_t row);
  /// Shows what the equity of a row has returned.
  std::function<void(const EquityPointer&)> showReturnsHandler = [](const EquityPointer&) {};
  void showReturns(std::size_t row);
  /// "Current holdings", or the day that they are told of.
  [[nodiscard]] std::string title() const;
  [[nodiscard]] const PieChartView& pie() const { return pie_; }

  [[nodiscard]] const std::vector<TableColumn>& columns() const override;
  [[nodiscard]] std::size_t numberOfRows() const override { return assetEntries_.size(); }
  [[nodiscard]] AttributedText cell(std::size_t row, std::size_t column) const override;
  [[nodiscard]] TrailMaker trailOf(std::size_t row, std::size_t column) const override;

 private:
  void fillPie();

  ScreenSurroundings surroundings_;
  PortfolioDataSlice currentData_;
  std::vector<PortfolioAsset> assetEntries_;
  PieChartView pie_;
};

}  // namespace corvane
