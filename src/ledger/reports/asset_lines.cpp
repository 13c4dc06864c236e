#include "ledger/reports/asset_lines.h"

namespace corvane {

HoldingLine holdingLine(const PortfolioSnapshot& snapshot, const Currency& cash) {
  const auto balance = snapshot.currencySnapshots.get(cash);
  HoldingLine line{.held = balance.cashOnHand,
                   .averagePrice = {},
                   .marketPrice = {},
                   .costBase = {},
                   .marketValue = {},
                   .marketGain = {}};
  if (balance.exchangeRate) {
    line.marketValue = balance.cashOnHand * *balance.exchangeRate;
  }
  return line;
}

HoldingLine holdingLine(const PortfolioSnapshot& snapshot, const EquityPointer& equity) {
  const auto holding = snapshot.equitySnapshots.get(equity);
  const auto rate = snapshot.currencySnapshots.get(equity->currency).exchangeRate;
  HoldingLine line{.held = holding.sharesHeld,
                   .averagePrice = {},
                   .marketPrice = {},
                   .costBase = holding.costBase,
                   .marketValue = snapshot.marketValue(equity),
                   .marketGain = {}};
  if (holding.sharePrice && rate) {
    line.marketPrice = *holding.sharePrice * *rate;
  }
  if (holding.sharesHeld > 0) {
    line.averagePrice = holding.costBase / holding.sharesHeld;
  }
  if (line.marketValue) {
    line.marketGain = *line.marketValue - holding.costBase;
  }
  return line;
}

GainLine gainLine(const PortfolioSnapshotGroup& group, const EquityPointer& equity) {
  const auto gainsOf = [&](const PortfolioSnapshotGroup::DailySnapshot& day) {
    return day.snapshot.equitySnapshots.get(equity).cumulativeCapitalGain;
  };
  GainLine line;
  if (!group.sortedSnapshots.empty()) {
    const auto& last = group.sortedSnapshots.back();
    line.sharesNet = last.snapshot.equitySnapshots.get(equity).sharesHeld;
    line.capitalGain = gainsOf(last) - gainsOf(group.sortedSnapshots.front());
  }
  const auto found = group.tradingSummaryByEquity.find(equity);
  if (found != group.tradingSummaryByEquity.end()) {
    line.trades = found->second;
  }
  return line;
}

std::optional<Decimal> costBaseAddedBy(const PortfolioTransaction& row) {
  const auto net = row.costBaseNet();
  return net && row.costBasePrior ? std::optional(*net - *row.costBasePrior) : std::nullopt;
}

}  // namespace corvane
