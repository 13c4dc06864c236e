#include "samplemarket/prices/daily_history.h"

#include <algorithm>
#include <cassert>
#include <cstdlib>
#include <numeric>
#include <optional>
#include <utility>

#include "platform/time/civil_day.h"
#include "samplemarket/prices/currency_rates.h"
#include "samplemarket/prices/noise.h"
#include "samplemarket/prices/wide.h"

namespace corvane::samplemarket {

namespace {

constexpr std::int64_t million = 1000000;
constexpr std::int64_t sessionsPerYear = 252;
/// The worth of a share at first is kept in millionths of a tick, as if there were no splits.
constexpr std::int64_t worthUnitsPerTick = million;

/// What the streams of an instrument's noise are for.
enum Stream : int {
  ownMove,
  openGap,
  highReach,
  lowReach,
  turnover,
  haltDraw,
  splitDraw,
  schedule
};

std::int64_t scaled(std::int64_t value, std::int64_t numerator, std::int64_t denominator) {
  return static_cast<std::int64_t>(Wide{value} * numerator / denominator);
}

/// A worth in ticks of the shares that one share has become, to the nearest, and at least 1.
std::int64_t ticks(std::int64_t worth, const SplitRatio& shares) {
  const Wide denominator = Wide{worthUnitsPerTick} * shares.numerator;
  const Wide result = (Wide{worth} * shares.denominator + denominator / 2) / denominator;
  return std::max<std::int64_t>(1, static_cast<std::int64_t>(result));
}

/// Walks a listed instrument's worth from session to session.
class ListedWalk {
 public:
  explicit ListedWalk(const Instrument& instrument, const TradingCalendar& calendar)
      : character_(instrument.character),
        kind_(instrument.kind),
        firstVolume_(instrument.shares * 1000 / 500),
        sessions_(calendar.sessions()),
        own_(instrument.noiseKey()),
        market_(calendar.exchange().code),
        worth_(instrument.character.firstPrice * worthUnitsPerTick),
        yearlyWorth_(worth_),
        splitPhase_(own_.uniform(schedule, 0, sessionsPerYear / 2)),
        dividendPhase_(own_.uniform(schedule, 1, 12)) {}

  /// The split that the company decides on for `session`, by the price before it.
  [[nodiscard]] std::optional<SplitRatio> ownSplit(std::size_t session,
                                                   const SplitRatio& ownShares) const {
    const auto index = static_cast<std::int64_t>(session);
    if (kind_ == InstrumentKind::index || index % (sessionsPerYear / 2) != splitPhase_) {
      return std::nullopt;
    }
    const std::int64_t price = ticks(worth_, ownShares);
    if (price > 3 * character_.firstPrice) {
      constexpr SplitRatio usual[] = {{2, 1}, {2, 1}, {3, 2}, {3, 1}};
      return usual[own_.uniform(splitDraw, index, std::size(usual))];
    }
    return price * 5 < character_.firstPrice ? std::optional(SplitRatio{1, 10}) : std::nullopt;
  }

  /// The dividend per share of `session`, in hundredths of ticks; 0 for none.
  [[nodiscard]] std::int64_t dividend(std::size_t session, const SplitRatio& shares) const {
    if (!isDividendDay(session)) {
      return 0;
    }
    const std::int64_t worth = scaled(yearlyWorth_, character_.yearlyDividendPerMille,
                                      std::int64_t{1000} * character_.dividendsPerYear);
    return scaled(worth, 100 * shares.denominator, worthUnitsPerTick * shares.numerator);
  }

  /// The prices of `session`, of shares of which one at first has become `shares`.
  [[nodiscard]] TradingDay next(std::size_t session, const SplitRatio& shares,
                                std::int64_t dividendPerShare) {
    const auto index = static_cast<std::int64_t>(session);
    if (isNewYear(session)) {
      yearlyWorth_ = worth_;
    }
    const std::int64_t before = worth_;
    TradingDay day{.previousClose = ticks(before, shares)};
    // A share that goes ex dividend is never suspended: the price would not show it.
    day.isHalted = kind_ == InstrumentKind::stock && dividendPerShare == 0 &&
                   own_.uniform(haltDraw, index, 1500) == 0;
    if (day.isHalted) {
      day.open = day.high = day.low = day.close = day.previousClose;
      return day;
    }
    const std::int64_t start =
        before -
        scaled(dividendPerShare, worthUnitsPerTick * shares.numerator, 100 * shares.denominator);
    const std::int64_t open =
        scaled(start, million + own_.normal(openGap, index, deviation() / 3), million);
    const std::int64_t close = scaled(start, million + move(index), million);
    const auto reach = [&](Stream stream) {
      return std::abs(own_.normal(stream, index, deviation() / 2));
    };
    const std::int64_t high = scaled(std::max(open, close), million + reach(highReach), million);
    const std::int64_t low = scaled(std::min(open, close), million - reach(lowReach), million);
    day.open = ticks(open, shares);
    day.high = ticks(high, shares);
    day.low = ticks(low, shares);
    day.close = ticks(close, shares);
    day.volume = scaled(firstVolume_ * (500 + own_.uniform(turnover, index, 1000)) / 1000,
                        shares.numerator, shares.denominator);
    worth_ = std::max<std::int64_t>(close, worthUnitsPerTick / 10);
    return day;
  }

 private:
  [[nodiscard]] std::int64_t deviation() const {
    return character_.dailyDeviation + 5000 * character_.marketPercent / 100;
  }

  /// The day's change of worth, in millionths.
  [[nodiscard]] std::int64_t move(std::int64_t index) const {
    const std::int64_t drift = character_.yearlyGrowthPerMille * 1000 / sessionsPerYear;
    const std::int64_t market = market_.normal(ownMove, index, 8000);
    return drift + market * character_.marketPercent / 100 +
           own_.normal(ownMove, index, character_.dailyDeviation);
  }

  [[nodiscard]] bool isNewYear(std::size_t session) const {
    return session > 0 &&
           civilDay(sessions_[session - 1].day).year != civilDay(sessions_[session].day).year;
  }

  /// The first session from the 12th of the month on, in the months that are due.
  [[nodiscard]] bool isDividendDay(std::size_t session) const {
    if (character_.dividendsPerYear == 0 || session == 0) {
      return false;
    }
    const CivilDay today = civilDay(sessions_[session].day);
    const CivilDay before = civilDay(sessions_[session - 1].day);
    const bool isDue = (today.month + dividendPhase_) % (12 / character_.dividendsPerYear) == 0;
    return isDue && today.day >= 12 && (before.month != today.month || before.day < 12);
  }

  PriceCharacter character_;
  InstrumentKind kind_;
  std::int64_t firstVolume_;
  const std::vector<Session>& sessions_;
  Noise own_;
  Noise market_;
  std::int64_t worth_;
  std::int64_t yearlyWorth_;  ///< at the turn of the year, by which dividends go
  std::int64_t splitPhase_;
  std::int64_t dividendPhase_;
};

}  // namespace

SplitRatio operator*(const SplitRatio& left, const SplitRatio& right) {
  const std::int64_t numerator = left.numerator * right.numerator;
  const std::int64_t denominator = left.denominator * right.denominator;
  const std::int64_t divisor = std::gcd(numerator, denominator);
  return {numerator / divisor, denominator / divisor};
}

DailyHistory::DailyHistory(Instrument instrument, std::span<const Split> addedSplits,
                           std::size_t end)
    : instrument_(std::move(instrument)),
      calendar_(&TradingCalendar::of(instrument_.exchange)),
      first_(calendar_->firstOpeningFrom(dayCount(instrument_.character.firstYear, 1, 1) *
                                         secondsPerDay)) {
  end = std::clamp(end, first_ + 1, sessions().size());
  if (instrument_.kind == InstrumentKind::currencyPair) {
    rateDays_.reserve(end - first_);
    makeRates(end);
  } else {
    listedDays_.reserve(end - first_);
    makeListedDays(addedSplits, end);
  }
}

DailyHistory::ListedDay DailyHistory::packed(const TradingDay& day) {
  const auto narrow = [](std::int64_t price) {
    assert(std::in_range<std::int32_t>(price) && "a listed price is no rate of currencies");
    return static_cast<std::int32_t>(price);
  };
  return {.open = narrow(day.open),
          .high = narrow(day.high),
          .low = narrow(day.low),
          .close = narrow(day.close),
          .previousClose = narrow(day.previousClose),
          .isHalted = day.isHalted,
          .volume = day.volume};
}

TradingDay DailyHistory::day(std::size_t session) const {
  const std::size_t index = session - first_;
  if (!rateDays_.empty()) {
    const RateDay& rate = rateDays_[index];
    return {.open = rate.open,
            .high = rate.high,
            .low = rate.low,
            .close = rate.close,
            .previousClose = rate.open};
  }
  const ListedDay& day = listedDays_[index];
  return {.open = day.open,
          .high = day.high,
          .low = day.low,
          .close = day.close,
          .volume = day.volume,
          .previousClose = day.previousClose,
          .isHalted = day.isHalted};
}

void DailyHistory::makeListedDays(std::span<const Split> addedSplits, std::size_t end) {
  ListedWalk walk(instrument_, *calendar_);
  SplitRatio ownShares;  // those of the company's own splits, which alone guide its next ones
  SplitRatio shares;
  for (std::size_t session = first_; session < end; ++session) {
    SplitRatio today;
    if (const auto split = walk.ownSplit(session, ownShares)) {
      ownShares = ownShares * *split;
      today = *split;
    }
    for (const Split& added : addedSplits) {
      if (added.session == session) {
        today = today * added.ratio;
      }
    }
    if (today.numerator != today.denominator) {
      splits_.push_back({session, today});
      shares = shares * today;
    }
    const std::int64_t dividend = walk.dividend(session, shares);
    if (dividend > 0) {
      dividends_.push_back({session, dividend});
    }
    listedDays_.push_back(packed(walk.next(session, shares, dividend)));
  }
}

void DailyHistory::makeRates(std::size_t end) {
  // A pair and its inverse draw the same chances, with high and low in each other's place.
  const bool isInverse = instrument_.isInversePair();
  const Noise noise(instrument_.noiseKey());
  CurrencyWorth base(instrument_.baseCurrency);
  CurrencyWorth quote(instrument_.currency);
  const std::int64_t unit = powerOfTen(instrument_.decimals);
  const auto rate = [&] {
    // Worths reach 2 × 10^20; the product with a unit of 10^14 stays within 128 bits.
    const Wide price = (base.worth() * unit + quote.worth() / 2) / quote.worth();
    return std::max<std::int64_t>(1, static_cast<std::int64_t>(price));
  };
  const std::int64_t firstRate = rate();
  for (std::size_t session = 0; session < end; ++session) {
    const auto index = static_cast<std::int64_t>(session);
    base.advance();
    quote.advance();
    const std::int64_t open = rateDays_.empty() ? firstRate : rateDays_.back().close;
    const std::int64_t close = rate();
    const auto reach = [&](Stream stream) { return std::abs(noise.normal(stream, index, 1500)); };
    const std::int64_t up = reach(isInverse ? lowReach : highReach);
    const std::int64_t down = reach(isInverse ? highReach : lowReach);
    rateDays_.push_back({.open = open,
                         .high = scaled(std::max(open, close), million + up, million),
                         .low = scaled(std::min(open, close), million, million + down),
                         .close = close});
  }
}

}  // namespace corvane::samplemarket
