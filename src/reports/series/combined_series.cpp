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

/// `series`, which has days, before the first of them.
PartOfSum partOf(const ValuationSeries& series, const Currency& currency,
                 const MarketHistory& history) {
  const auto line = history.rates.find({series.currency, currency});
  const std::int64_t baseDay = dayNumber(series.days.front().day);
  return {&series,
          PriceCursor(line == history.rates.end() ? nullptr : &line->second, baseDay, true),
          series.currency != currency};
}

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
    parts.push_back(partOf(part, currency, history));
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

std::vector<std::vector<Decimal>> valuesInSum(std::span<const ValuationSeries> series,
                                              const ValuationSeries& sum,
                                              const MarketHistory& history) {
  std::vector<std::vector<Decimal>> values;
  for (const ValuationSeries& each : series) {
    std::vector<Decimal>& own = values.emplace_back(sum.days.size());
    if (each.days.empty()) {
      continue;
    }
    PartOfSum part = partOf(each, sum.currency, history);
    for (std::size_t i = 0; i < sum.days.size(); ++i) {
      ValuationDay day{.day = sum.days[i].day};
      ValueBridge unused;
      addToSum(part, day.day, day, unused);
      own[i] = day.value;
    }
  }
  return values;
}

}  // namespace corvane
