#include "samplemarket/prices/published_prices.h"

#include <algorithm>
#include <limits>
#include "samplemarket/prices/wide.h"

namespace corvane::samplemarket {

namespace {

constexpr std::int64_t wholePrice = 1000000000000;
constexpr std::size_t afterAll = std::numeric_limits<std::size_t>::max();

std::int64_t nearest(Wide numerator, Wide denominator) {
  return static_cast<std::int64_t>((numerator + denominator / 2) / denominator);
}

template <typename Value>
const Value& valueAt(const std::vector<std::pair<std::size_t, Value>>& table, std::size_t session) {
  return std::ranges::upper_bound(table, session, {}, [](const auto& entry) { return entry.first; })
      ->second;
}

}  // namespace

void PublishedBar::extend(const PublishedBar& later) {
  if (!later.hasTrades) {
    return;
  }
  if (!hasTrades) {
    const std::int64_t start = time;
    *this = later;
    time = start;
    return;
  }
  high = std::max(high, later.high);
  low = std::min(low, later.low);
  close = later.close;
  volume += later.volume;
}

PublishedPrices::PublishedPrices(const DailyHistory& history, std::size_t last)
    : history_(history), remainders_{{afterAll, wholePrice}} {
  const auto& splits = history.splits();
  const auto firstLater = std::ranges::upper_bound(splits, last, {}, &Split::session);
  SplitRatio shares;
  for (auto split = firstLater; split != splits.begin();) {
    --split;
    shares = shares * split->ratio;
    shares_.emplace_back(split->session, shares);
  }
  std::ranges::reverse(shares_);
  // Before the opening of a split's session its new shares are already traded.
  shares = {};
  for (auto split = firstLater; split != splits.end(); ++split) {
    shares_.emplace_back(split->session, shares);
    shares = shares * split->ratio.inverse();
  }
  shares_.emplace_back(afterAll, shares);
  const auto& dividends = history.dividends();
  for (auto dividend = dividends.rbegin(); dividend != dividends.rend(); ++dividend) {
    if (dividend->session <= last) {
      const Wide before = Wide{history.day(dividend->session).previousClose} * 100;
      remainders_.emplace_back(
          dividend->session,
          nearest(remainders_.back().second * (before - dividend->amount), before));
    }
  }
  std::ranges::reverse(remainders_);
}

const SplitRatio& PublishedPrices::sharesAfter(std::size_t session) const {
  return valueAt(shares_, session);
}

std::int64_t PublishedPrices::price(std::int64_t ticks, std::size_t session) const {
  const SplitRatio& shares = sharesAfter(session);
  return nearest(Wide{ticks} * unitsPerTick * shares.denominator, shares.numerator);
}

std::int64_t PublishedPrices::volume(std::int64_t shares, std::size_t session) const {
  const SplitRatio& become = sharesAfter(session);
  return static_cast<std::int64_t>(Wide{shares} * become.numerator / become.denominator);
}

PublishedBar PublishedPrices::dayBar(std::size_t session) const {
  const TradingDay& day = history_.day(session);
  return {.time = history_.sessions()[session].open,
          .hasTrades = !day.isHalted,
          .open = price(day.open, session),
          .high = price(day.high, session),
          .low = price(day.low, session),
          .close = price(day.close, session),
          .volume = volume(day.volume, session)};
}

std::int64_t PublishedPrices::dividendAdjusted(std::int64_t closing, std::size_t session) const {
  return nearest(Wide{closing} * valueAt(remainders_, session), wholePrice);
}

}  // namespace corvane::samplemarket
