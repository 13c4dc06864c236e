// The chart of a portfolio: what its parts were worth on each day.
#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "core/market/portfolio_asset.h"
#include "ledger/manager/portfolio_data_slice.h"
#include "presentation/charts/fiscal_chart_view.h"

namespace corvane {

/// The series of `data`, whose points stand at the positions of its snapshots. Without an `asset`
/// they are the cash and then the equities by symbol, each on top of the one before it, so that the
/// last one is the total; for a currency the cash alone; for an equity that equity alone.
struct StackedSeries {
  std::vector<ChartDataSet> series;
  std::vector<Decimal> total;  ///< the values of the last one
};
[[nodiscard]] StackedSeries stackedSeries(const PortfolioDataSlice& data,
                                          const std::optional<PortfolioAsset>& asset);

/// A line of what had been put into the portfolio, at the rates of each day.
[[nodiscard]] ChartDataSet netDepositsSeries(const PortfolioSnapshotGroup& group);

/// Draws `data`, which has a portfolio, as far as `asset` selects. Empties the chart where nothing
/// has been fetched.
void drawPortfolioChart(FiscalChartView& chart, const PortfolioDataSlice& data,
                        const std::optional<PortfolioAsset>& asset);

}  // namespace corvane
