// Series of several portfolios, added up in one currency.

#include <algorithm>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "reports/series/price_cursor.h"
#include "reports/series/report_days.h"
#include "reports/series/valuation_series.h"

namespace corvane {
namespace {

/// One of the series that are added up, on its way through the days.
struct PartOfSum {
  const ValuationSeries* series;
  PriceCursor rate;
  bool isForeign;
  std::size_t next = 0;
  Decimal value = {};
  bool isAtTradePrice = false;
};

/// Whether the rate was known as far as it was needed.
bool addToSum(PartOfSum& part, const YearMonthDay& day, ValuationDay& sum, ValueBridge& bridge) {
  part.rate.advanceTo(day);
  const bool hasRate = !part.isForeign || part.rate.price() != nullptr;
  const Decimal rate = part.isForeign && hasRate ? *part.rate.price() : Decimal(1);
  bool needsRate = false;
  const auto& days = part.series->days;
  for (; part.next < days.size() && days[part.next].day <= day; ++part.next) {
    const ValuationDay& own = days[part.next];
    part.value = own.value;
    part.isAtTradePrice = own.isAtTradePrice;
    needsRate |= !own.inflow.isZero() || !own.outflow.isZero();
    sum.inflow += own.inflow * rate;
    sum.outflow += own.outflow * rate;
    sum.journaled += own.journaled * rate;
    bridge.deposits += (own.inflow - std::max(own.journaled, Decimal(0))) * rate;
    bridge.withdrawals += (own.outflow + std::min(own.journaled, Decimal(0))) * rate;
    bridge.journaled += own.journaled * rate;
  }
  sum.value += part.value * rate;
  sum.isAtTradePrice |= part.isAtTradePrice;
  return hasRate || (!needsRate && part.value.isZero());
}

/// The gains of the parts are taken at the last rates; what the rates did meanwhile is currency.
void bridgeSum(ValuationSeries& sum, const std::vector<PartOfSum>& parts) {
  ValueBridge& bridge = sum.bridge;
  for (const PartOfSum& part : parts) {
    const bool hasRate = part.isForeign && part.rate.price() != nullptr;
    const Decimal rate = hasRate ? *part.rate.price() : Decimal(1);
    const ValueBridge& own = part.series->bridge;
    bridge.equityGain += own.equityGain * rate;
    bridge.realised += own.realised * rate;
    bridge.dividends += own.dividends * rate;
    bridge.adjustments += own.adjustments * rate;
    bridge.dividendsKeptAsCash += own.dividendsKeptAsCash * rate;
  }
  bridge.opening = sum.days.front().value;
  bridge.closing = sum.days.back().value;
}

}  // namespace

ValuationSeries combinedSeries(std::span<const ValuationSeries> series, const Currency& currency,
                               const MarketHistory& history) {
  ValuationSeries sum{.currency = currency};
  std::set<std::string> missing;
  std::set<YearMonthDay> days;
  std::vector<PartOfSum> parts;
  for (const ValuationSeries& part : series) {
    missing.insert(part.missing.begin(), part.missing.end());
    if (part.days.empty()) {
      continue;
    }
    for (const ValuationDay& day : part.days) {
      days.insert(day.day);
    }
    const bool isForeign = part.currency != currency;
    const auto line = history.rates.find({part.currency, currency});
    const std::int64_t baseDay = dayNumber(part.days.front().day);
    parts.push_back(
        {&part, PriceCursor(line == history.rates.end() ? nullptr : &line->second, baseDay, true),
         isForeign});
  }
  sum.missing.assign(missing.begin(), missing.end());
  if (!missing.empty() || parts.empty()) {
    return sum;
  }
  for (const YearMonthDay& day : days) {
    ValuationDay& total = sum.days.emplace_back(ValuationDay{.day = day});
    for (PartOfSum& part : parts) {
      if (!addToSum(part, day, total, sum.bridge)) {
        missing.insert(std::string(part.series->currency.code));
      }
    }
  }
  if (!missing.empty()) {
    sum.missing.assign(missing.begin(), missing.end());
    sum.days.clear();
    return sum;
  }
  bridgeSum(sum, parts);
  return sum;
}

}  // namespace corvane
