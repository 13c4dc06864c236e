// The selector that says which part of a portfolio a chart shows.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "core/market/portfolio_asset.h"
#include "ledger/manager/portfolio_data_slice.h"

namespace corvane {

/// "All", the equities by symbol and the currencies by code, one of which is chosen. Main queue
/// only.
class PortfolioAssetMenu {
 public:
  struct Item {
    std::string title;                    ///< empty for a separator
    std::optional<PortfolioAsset> asset;  ///< none for "All" and for a separator
    bool isSeparator = false;
  };

  /// Offers what `data` held or traded. What was chosen stays chosen where it is still offered.
  void offer(const PortfolioDataSlice& data);

  [[nodiscard]] const std::vector<Item>& items() const { return items_; }
  [[nodiscard]] const std::vector<Currency>& availableCurrencies() const {
    return availableCurrencies_;
  }
  /// None for all.
  [[nodiscard]] const std::optional<PortfolioAsset>& currentAsset() const { return currentAsset_; }
  [[nodiscard]] std::size_t selectedIndex() const;
  /// Whether the item can be chosen, and now is; a separator cannot.
  bool choose(std::size_t index);

 private:
  std::vector<Item> items_ = {{.title = "All", .asset = std::nullopt}};
  std::vector<Currency> availableCurrencies_;
  std::optional<PortfolioAsset> currentAsset_;
};

}  // namespace corvane
