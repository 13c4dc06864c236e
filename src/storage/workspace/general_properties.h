// What a workspace keeps beside its portfolios.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/strategy/investment_scenario.h"
#include "core/strategy/investment_strategy.h"
#include "core/tax/tax_settings.h"
#include "storage/workspace/dates_time_zone.h"

namespace corvane {

/// The content of "General.json". Whatever is absent is left out in the file.
struct GeneralProperties {
  /// An equity of the watchlist.
  struct WatchlistEntry {
    std::string provider;  ///< the name of its quote provider; "?" where that is gone
    std::string identifier;
    friend bool operator==(const WatchlistEntry&, const WatchlistEntry&) = default;
  };

  /// The last inputs of the two scenario screens.
  struct RegressionSettings {
    std::optional<InvestmentScenario> detailScenario = {};
    std::optional<InvestmentStrategy> detailStrategy = {};
    std::optional<InvestmentScenario> batchScenario = {};
    std::optional<InvestmentStrategy> batchStrategy = {};
    friend bool operator==(const RegressionSettings&, const RegressionSettings&) = default;
  };

  std::optional<std::string> appBundleVersion = {};     ///< the build that wrote the file
  std::optional<std::string> appMarketingVersion = {};  ///< its version, for people
  std::optional<std::vector<WatchlistEntry>> watchlistSymbols = {};
  std::optional<RegressionSettings> lastTradingScenarioSettings = {};

  // Older programs do not know these and lose them when they save.
  std::optional<TaxSettings> taxSettings = {};
  /// The roles that the user has confirmed, by the ids of portfolios in the database.
  std::map<std::int64_t, PortfolioTaxRole> taxRoles = {};
  std::optional<DatesTimeZone> datesTimeZone = {};

  /// Compact JSON with the fields in this order. Throws JSONError for an amount that is a NaN.
  [[nodiscard]] std::string json() const;

  /// Null counts as absent, and fields that are unknown here are ignored. Throws JSONError or
  /// QuoteIntervalDecodingError.
  [[nodiscard]] static GeneralProperties fromJSON(std::string_view text);

  friend bool operator==(const GeneralProperties&, const GeneralProperties&) = default;
};

}  // namespace corvane
