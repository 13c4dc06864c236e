#include "ledger/manager/portfolio_data_slice.h"

#include <algorithm>
#include <tuple>

#include "ledger/manager/portfolio_manager.h"

namespace corvane {
namespace {

const PortfolioSnapshot noSnapshot;

}  // namespace

void PortfolioDataSlice::selectDays(const ClosedRange<YearMonthDay>& days) {
  ymdRange = days;
  const auto manager = portfolio == nullptr ? nullptr : portfolio->manager.lock();
  if (manager == nullptr) {
    nominalDateRange = {Date::distantPast(), Date::distantPast()};
    transactions.emplace();
    return;
  }
  const YearMonthDay& last = days.upper();
  nominalDateRange = {
      days.lower().startIn(manager->calendar),
      YearMonthDay{last.year, last.month, last.day + 1}.startIn(manager->calendar) - 1};
  const auto& rows = portfolio->transactions();
  const auto first = std::ranges::lower_bound(rows, nominalDateRange.lower(), std::less<>(),
                                              &PortfolioTransaction::settlementDate);
  // All of the last second is in the day, as it is for the daily snapshots.
  const auto end = std::ranges::lower_bound(first, rows.end(), nominalDateRange.upper() + 1,
                                            std::less<>(), &PortfolioTransaction::settlementDate);
  transactions.emplace(first, end);
}

const PortfolioSnapshot& PortfolioDataSlice::firstSnapshot() const {
  return snapshotGroup == nullptr || snapshotGroup->sortedSnapshots.empty()
             ? noSnapshot
             : snapshotGroup->sortedSnapshots.front().snapshot;
}

const PortfolioSnapshot& PortfolioDataSlice::lastSnapshot() const {
  return snapshotGroup == nullptr || snapshotGroup->sortedSnapshots.empty()
             ? noSnapshot
             : snapshotGroup->sortedSnapshots.back().snapshot;
}

std::vector<PortfolioAsset> PortfolioDataSlice::assetEntries(const AssetFilter& filter) const {
  if (snapshotGroup == nullptr) {
    return {};
  }
  const PortfolioSnapshot& last = lastSnapshot();
  std::vector<Currency> currencies;
  if (!filter.tradedOnly) {
    for (const Currency& currency : snapshotGroup->currenciesHeldOrTraded) {
      if (!filter.excludingZero || !last.currencySnapshots.get(currency).cashOnHand.isZero()) {
        currencies.push_back(currency);
      }
    }
  }
  std::vector<EquityPointer> equities;
  for (const EquityPointer& equity : snapshotGroup->equitiesHeldOrTraded) {
    const bool isTraded = snapshotGroup->tradingSummaryByEquity.contains(equity);
    const bool isHeld = last.equitySnapshots.get(equity).sharesHeld > 0;
    if ((isTraded || !filter.tradedOnly) && (isHeld || !filter.excludingZero)) {
      equities.push_back(equity);
    }
  }
  std::ranges::sort(currencies, {},
                    [](const Currency& currency) { return std::string_view(currency.code); });
  // Two exchanges may use one symbol; the id keeps such rows from changing places.
  std::ranges::sort(equities, {}, [](const EquityPointer& equity) {
    return std::tuple<std::string_view, std::string_view>(equity->symbol, equity->id());
  });

  std::vector<PortfolioAsset> entries;
  for (const Currency& currency : currencies) {
    entries.emplace_back(currency);
  }
  for (const EquityPointer& equity : equities) {
    entries.emplace_back(equity);
  }
  return entries;
}

}  // namespace corvane
