#include "ledger/accounting/ledger_states.h"

#include <algorithm>
#include <cassert>
#include <iterator>
#include <span>
#include <utility>

#include "ledger/accounting/ledger_replay.h"

namespace corvane {
namespace {

/// The state before the row at `index`, from the end of the year before it.
PortfolioSnapshot replayedBefore(std::size_t index, Portfolio& portfolio,
                                 const Calendar& calendar) {
  if (index == 0) {
    return {};
  }
  const auto& rows = portfolio.transactions();
  assert(index <= rows.size());
  const auto& snapshots = portfolio.snapshotsByYear;
  const int year = calendar.component(CalendarUnit::year, rows[index - 1]->settlementDate());
  const Date yearStart =
      calendar.date({{CalendarUnit::year, year}, {CalendarUnit::month, 1}, {CalendarUnit::day, 1}})
          .value_or(Date::distantPast());

  const auto thisYear = snapshots.lower_bound(year);
  PortfolioSnapshot base =
      thisYear == snapshots.begin() ? PortfolioSnapshot() : std::prev(thisYear)->second;
  const auto before = std::span(rows).first(index);
  const auto first = std::ranges::lower_bound(before, yearStart, std::less<>(),
                                              &PortfolioTransaction::settlementDate);
  return replayLedger(std::span(first, before.end()), std::move(base));
}

}  // namespace

PortfolioSnapshot stateBefore(std::size_t index, Portfolio& portfolio, const Calendar& calendar) {
  const std::size_t count = portfolio.transactions().size();
  const auto& snapshots = portfolio.snapshotsByYear;
  if (index >= count && count > 0) {
    return snapshots.empty() ? PortfolioSnapshot() : snapshots.rbegin()->second;
  }
  return replayedBefore(std::min(index, count), portfolio, calendar);
}

PortfolioSnapshot walkStart(std::size_t index, Portfolio& portfolio, const Calendar& calendar) {
  const auto& last = portfolio.lastWalkStart;
  if (!last || last->index > index) {
    return replayedBefore(index, portfolio, calendar);
  }
  const auto& rows = portfolio.transactions();
  assert(index <= rows.size());
  const auto yearOf = [&](const TransactionPointer& row) {
    return calendar.component(CalendarUnit::year, row->settlementDate());
  };
  const auto since = std::span(rows).subspan(last->index, index - last->index);
  if (!since.empty() && yearOf(since.front()) != yearOf(since.back())) {
    return replayedBefore(index, portfolio, calendar);
  }
  return replayLedger(since, last->state);
}

}  // namespace corvane
