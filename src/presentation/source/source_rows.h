// The rows of the list at the side of the window.
#pragma once

#include <memory>
#include <string>

#include "core/market/equity_info.h"
#include "ledger/portfolio/portfolio.h"
#include "platform/text/styled/attributed_text.h"
#include "presentation/charts/quote_chart_view.h"

namespace corvane {

/// A row of the watchlist.
struct EquitySourceRow {
  EquityPointer equity;
  std::string symbol;
  std::string name;       ///< empty where it is not known
  std::string price;      ///< empty where it is not known
  AttributedText change;  ///< since the close before; empty where there is no price
  /// The running session; never null, empty until it has been fetched.
  std::shared_ptr<const QuoteChartView> thumbnail;
  std::string problem;  ///< why the latest refresh brought no price; empty where it did

  /// The row in one line, for those who cannot see it.
  [[nodiscard]] std::string accessibleText() const;
};

/// The row of `equity` with the prices known now.
[[nodiscard]] EquitySourceRow equitySourceRow(const EquityPointer& equity,
                                              std::shared_ptr<const QuoteChartView> thumbnail);

/// A row of the list of portfolios.
struct PortfolioSourceRow {
  PortfolioPointer portfolio;
  std::string name;
  std::string value;    ///< "⚠️" where it is not known
  AttributedText gain;  ///< empty where it is not known

  [[nodiscard]] std::string accessibleText() const;
};

/// The row of `portfolio` at the prices known now.
[[nodiscard]] PortfolioSourceRow portfolioSourceRow(const PortfolioPointer& portfolio);

}  // namespace corvane
