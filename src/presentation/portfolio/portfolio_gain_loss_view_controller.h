// The tab that shows what a portfolio has gained or lost by its trades in the chosen days.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "presentation/controls/table_model.h"
#include "presentation/screen/current_portfolio_having.h"
#include "presentation/screen/screen_surroundings.h"

namespace corvane {

/// A table with a row for each equity that was bought or sold, and a title. Shows what it is given
/// and fetches nothing. Main queue only.
class PortfolioGainLossViewController : public PortfolioTab, public TableModel {
 public:
  explicit PortfolioGainLossViewController(ScreenSurroundings surroundings);

  /// Called when title and table have changed.
  std::function<void()> changeHandler = [] {};

  [[nodiscard]] const PortfolioDataSlice& currentData() const override { return currentData_; }
  void setCurrentData(PortfolioDataSlice data,
                      const std::optional<TransactionChanges>& changes) override;
  [[nodiscard]] std::string_view tabTitle() const override { return "Gains"; }
  [[nodiscard]] std::shared_ptr<PortfolioExporter> makeExporter() const override;

  /// What the rows of the table stand for.
  [[nodiscard]] const std::vector<PortfolioAsset>& assetEntries() const { return assetEntries_; }
  /// What the user does to a row; one of cash leads nowhere.
  void openRow(std::size_t row);
  /// How long the days are and when they end; empty without a manager.
  [[nodiscard]] std::string title() const;

  [[nodiscard]] const std::vector<TableColumn>& columns() const override;
  [[nodiscard]] std::size_t numberOfRows() const override { return assetEntries_.size(); }
  [[nodiscard]] AttributedText cell(std::size_t row, std::size_t column) const override;

 private:
  ScreenSurroundings surroundings_;
  PortfolioDataSlice currentData_;
  std::vector<PortfolioAsset> assetEntries_;
};

}  // namespace corvane
