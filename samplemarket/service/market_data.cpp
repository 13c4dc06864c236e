#include "samplemarket/service/market_data.h"

#include <algorithm>

namespace corvane::samplemarket {

namespace {

/// Histories are worked out this far ahead, so that a running clock doesn't ask for another soon.
constexpr std::size_t sessionsAhead = 260;
/// A pair of currencies takes half a megabyte, and there are thousands of pairs.
constexpr std::size_t historiesKept = 200;

}  // namespace

std::shared_ptr<const DailyHistory> MarketData::history(std::string_view symbol, std::int64_t now) {
  const auto instrument = instrumentNamed(symbol);
  if (!instrument) {
    return nullptr;
  }
  const TradingCalendar& calendar = TradingCalendar::of(instrument->exchange);
  const auto last = calendar.lastOpenedBy(now);
  const auto current = calendar.currentAt(now);
  if (!last || !current) {
    return nullptr;
  }
  const std::lock_guard lock(mutex_);
  auto found = histories_.find(symbol);
  if (found == histories_.end() || *current >= found->second->endSession()) {
    if (histories_.size() >= historiesKept) {
      histories_.clear();
    }
    const auto splits = addedSplits_.find(symbol);
    auto made = std::make_shared<const DailyHistory>(
        *instrument, splits == addedSplits_.end() ? std::span<const Split>() : splits->second,
        *current + sessionsAhead);
    found = histories_.insert_or_assign(std::string(symbol), std::move(made)).first;
  }
  return found->second->firstSession() <= *last ? found->second : nullptr;
}

bool MarketData::addSplit(std::string_view symbol, std::int64_t time, SplitRatio ratio) {
  const auto isPart = [](std::int64_t part) { return part >= 1 && part <= 1000; };
  const auto beginning = history(symbol, time);
  if (!beginning || beginning->instrument().kind == InstrumentKind::currencyPair ||
      !isPart(ratio.numerator) || !isPart(ratio.denominator)) {
    return false;
  }
  const std::lock_guard lock(mutex_);
  addedSplits_[std::string(symbol)].push_back(
      {beginning->calendar().firstOpeningFrom(time), ratio});
  histories_.erase(std::string(symbol));
  return true;
}

}  // namespace corvane::samplemarket
