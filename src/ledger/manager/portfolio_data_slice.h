// The choice of portfolio and days that a screen shows and an export writes.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "core/market/portfolio_asset.h"
#include "core/money/year_month_day.h"
#include "ledger/portfolio/portfolio.h"
#include "ledger/portfolio/portfolio_snapshot_group.h"
#include "platform/range.h"

namespace corvane {

/// A portfolio, a range of days, and what is known of it there. A value that the screen fills and
/// hands to each of its tabs; the tabs fetch nothing themselves. Main queue only.
struct PortfolioDataSlice {
  PortfolioPointer portfolio = nullptr;  ///< null for none
  ClosedRange<YearMonthDay> ymdRange{{}, {}};
  /// The days as moments, from the start of the first to the last second of the last one.
  ClosedRange<Date> nominalDateRange{Date::distantPast(), Date::distantPast()};
  /// The rows that settle in the range, in ledger order; none until selectDays has looked for them.
  std::optional<std::vector<TransactionPointer>> transactions = {};
  /// The daily balance sheets of the range; null until they have been fetched. Copies of the slice
  /// share them.
  std::shared_ptr<const PortfolioSnapshotGroup> snapshotGroup = nullptr;

  /// Makes `days`, in the calendar of the portfolio's manager, the range of the slice, with its
  /// dates and its rows. What was fetched stays. Without a manager the dates are the earliest that
  /// there are.
  void selectDays(const ClosedRange<YearMonthDay>& days);

  /// The state before the range and that at its end; empty where nothing has been fetched.
  [[nodiscard]] const PortfolioSnapshot& firstSnapshot() const;
  [[nodiscard]] const PortfolioSnapshot& lastSnapshot() const;

  /// Which assets a table has rows for.
  struct AssetFilter {
    bool excludingZero = false;  ///< no cash of exactly 0, no equity without shares, at the end
    bool tradedOnly = false;     ///< no cash, and only equities bought or sold in the range
  };

  /// The assets held or traded in the range that pass `filter`: the currencies by code, then the
  /// equities by symbol.
  [[nodiscard]] std::vector<PortfolioAsset> assetEntries(const AssetFilter& filter) const;
};

}  // namespace corvane
