#include "presentation/performance/portfolio_asset_menu.h"

#include <algorithm>

namespace corvane {

void PortfolioAssetMenu::offer(const PortfolioDataSlice& data) {
  availableCurrencies_.clear();
  items_ = {{.title = "All", .asset = std::nullopt}};
  std::vector<Item> currencies;
  for (const PortfolioAsset& asset : data.assetEntries({})) {
    if (const Currency* cash = asset.cash()) {
      availableCurrencies_.push_back(*cash);
      currencies.push_back({std::string(cash->code), asset});
    } else {
      items_.push_back({asset.equity()->symbol, asset});
    }
  }
  if (items_.size() > 1 && !currencies.empty()) {
    items_.push_back({.title = "", .asset = std::nullopt, .isSeparator = true});
  }
  items_.insert(items_.end(), currencies.begin(), currencies.end());
  if (selectedIndex() == items_.size()) {
    currentAsset_.reset();
  }
}

std::size_t PortfolioAssetMenu::selectedIndex() const {
  const auto found = std::ranges::find_if(items_, [this](const Item& item) {
    return !item.isSeparator && item.asset == currentAsset_;
  });
  return static_cast<std::size_t>(found - items_.begin());
}

bool PortfolioAssetMenu::choose(std::size_t index) {
  const Item& item = items_.at(index);
  if (!item.isSeparator) {
    currentAsset_ = item.asset;
  }
  return !item.isSeparator;
}

}  // namespace corvane
