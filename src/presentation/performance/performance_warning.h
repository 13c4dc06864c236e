// What a portfolio's chart says when prices or rates could not be had.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "core/market/equity_info.h"
#include "core/money/currency.h"
#include "ledger/portfolio/portfolio_snapshot_group.h"
#include "platform/system/user_defaults.h"

namespace corvane {

/// What the history of a portfolio lacks.
struct MissingPrices {
  EquitySet incompleteEquities = {};
  CurrencySet incompleteCurrencies = {};
  /// Of what only the cache could be asked, when the last of its prices ends.
  EquityMap<Date> endsOfStoredPrices = {};

  [[nodiscard]] bool isEmpty() const {
    return incompleteEquities.empty() && incompleteCurrencies.empty() && endsOfStoredPrices.empty();
  }
};

/// The warning for a chart of `shown`, which is null where nothing has been fetched: what it does
/// not need is not missed.
[[nodiscard]] std::string performanceWarning(const MissingPrices& missing,
                                             const PortfolioSnapshotGroup* shown,
                                             const UserDefaults& defaults);

/// The warning for a chart that lacks the prices of `symbols` and the rates of `currencies`; empty
/// where it lacks neither. Up to five of each are named, more are counted. `lastStoredDate` is up
/// to when the prices go where the market could not be reached and the cache stood in.
[[nodiscard]] std::string performanceWarning(
    std::vector<std::string> symbols, std::vector<std::string> currencies,
    const std::optional<std::string>& lastStoredDate = std::nullopt);

}  // namespace corvane
