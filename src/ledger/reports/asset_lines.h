// The lines of the holdings table and of the gains table, for screens and exports alike.
#pragma once

#include <optional>

#include "ledger/portfolio/portfolio_snapshot.h"
#include "ledger/portfolio/portfolio_snapshot_group.h"
#include "ledger/portfolio/portfolio_transaction.h"

namespace corvane {

/// What is held of one asset. All money but cash is in the primary currency.
struct HoldingLine {
  Decimal held;                         ///< shares, or cash in its own currency
  std::optional<Decimal> averagePrice;  ///< cost base of a share; none where nothing is held
  std::optional<Decimal> marketPrice;   ///< none where price or rate is not known
  std::optional<Decimal> costBase;      ///< none for cash
  std::optional<Decimal> marketValue;   ///< none where price or rate is not known
  std::optional<Decimal> marketGain;    ///< none for cash and where there is no market value
};

[[nodiscard]] HoldingLine holdingLine(const PortfolioSnapshot& snapshot, const Currency& cash);
[[nodiscard]] HoldingLine holdingLine(const PortfolioSnapshot& snapshot,
                                      const EquityPointer& equity);

/// What was traded of an equity in a range of days, and what it gained. Money is in the primary
/// currency.
struct GainLine {
  std::optional<PortfolioSnapshotGroup::TradingSummary> trades;  ///< none where nothing was traded
  Decimal sharesNet;                                             ///< held at the end
  Decimal capitalGain;                                           ///< realized in the range
};

[[nodiscard]] GainLine gainLine(const PortfolioSnapshotGroup& group, const EquityPointer& equity);

/// By how much a row has changed the cost base of its equity; none for what has no equity.
[[nodiscard]] std::optional<Decimal> costBaseAddedBy(const PortfolioTransaction& row);

}  // namespace corvane
