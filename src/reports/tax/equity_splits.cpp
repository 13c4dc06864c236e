#include "reports/tax/equity_splits.h"

#include <algorithm>
#include <utility>

#include "reports/series/market_history.h"
#include "reports/series/report_days.h"

namespace corvane {

EquitySplits::EquitySplits(std::span<const TaxRow> rows) : applied_(rows.size()) {
  for (const TaxRow& row : rows) {
    if (row.kind == TaxRow::Kind::split && !row.splitFrom.isZero() && !row.splitInto.isZero()) {
      take(row);
    }
  }
  std::map<std::size_t, std::size_t> own;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    own[rows[i].portfolio] += rows[i].kind == TaxRow::Kind::split ? 1 : 0;
    applied_[i] = countUpTo(rows[i].portfolio, rows[i].day, own[rows[i].portfolio]);
  }
}

std::size_t EquitySplits::upTo(std::size_t portfolio, const YearMonthDay& day) const {
  std::size_t count = 0;
  for (const Event& event : events_) {
    const auto own = event.days.find(portfolio);
    count += (own == event.days.end() ? event.first : own->second) <= day ? 1 : 0;
  }
  return count;
}

Decimal EquitySplits::converted(Decimal shares, std::size_t from, std::size_t to) const {
  Decimal divisor = 1;
  for (std::size_t i = std::min(from, to); i < std::max(from, to); ++i) {
    const auto& [into, out] = std::pair(events_[i].into, events_[i].from);
    shares = shares * (from < to ? into : out);
    divisor = divisor * (from < to ? out : into);
  }
  return divisor == 1 ? shares : shares / divisor;
}

/// Rows of several portfolios are one split where they have one ratio and stand close together.
void EquitySplits::take(const TaxRow& row) {
  const auto known = std::ranges::find_if(events_, [&](const Event& event) {
    return !event.days.contains(row.portfolio) &&
           daysBetween(event.first, row.day) <= mostDaysBetweenSplits &&
           event.into * row.splitFrom == event.from * row.splitInto;
  });
  if (known != events_.end()) {
    known->days.emplace(row.portfolio, row.day);
  } else {
    events_.push_back({row.splitFrom, row.splitInto, row.day, {{row.portfolio, row.day}}});
  }
}

std::size_t EquitySplits::countUpTo(std::size_t portfolio, const YearMonthDay& day,
                                    std::size_t ownSplits) const {
  std::size_t count = 0;
  for (const Event& event : events_) {
    if (event.days.contains(portfolio)) {
      count += ownSplits > 0 ? 1 : 0;
      ownSplits -= ownSplits > 0 ? 1 : 0;
    } else {
      count += event.first <= day ? 1 : 0;
    }
  }
  return count;
}

}  // namespace corvane
