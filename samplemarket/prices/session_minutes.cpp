#include "samplemarket/prices/session_minutes.h"

#include <algorithm>
#include <cassert>
#include <cstdlib>
#include <utility>

#include "samplemarket/prices/noise.h"
#include "samplemarket/prices/trading_calendar.h"
#include "samplemarket/prices/wide.h"

namespace corvane::samplemarket {

namespace {

/// Paths are walked in fractions of a tick.
constexpr std::int64_t fraction = 1024;

/// What the streams of a session's noise are for.
enum MinuteStream : int {
  step,
  highPlace,
  lowPlace,
  upperWick,
  lowerWick,
  trade,
  volumeShare,
  preStep,
  preTrade,
  postStep,
  postTrade,
  postEnd
};

std::int64_t roundedToTicks(std::int64_t price) {
  return (price + fraction / 2) / fraction;
}

/// A point that a path goes through, at the start of a minute.
struct Anchor {
  int minute;
  std::int64_t price;
};

/// Fills in `path` from one anchor to the next with a random walk that ends where it should.
void walkBetween(std::vector<std::int64_t>& path, const Anchor& from, const Anchor& to,
                 const Noise& noise, MinuteStream stream, std::int64_t deviation, int direction) {
  const int length = to.minute - from.minute;
  std::vector<std::int64_t> walk(static_cast<std::size_t>(length) + 1, 0);
  for (int i = 1; i <= length; ++i) {
    walk[static_cast<std::size_t>(i)] =
        walk[static_cast<std::size_t>(i - 1)] +
        direction * noise.normal(stream, from.minute + i, deviation);
  }
  for (int i = 0; i <= length; ++i) {
    const std::int64_t drift = (to.price - from.price - walk.back()) * i / std::max(length, 1);
    const int minute = from.minute + i;
    path[static_cast<std::size_t>(minute)] = from.price + drift + walk[static_cast<std::size_t>(i)];
  }
  path[static_cast<std::size_t>(to.minute)] = to.price;
}

/// A session's price at the start of every minute of trading and at its end, in ticks.
struct SessionPath {
  std::vector<std::int64_t> prices;
  int highMinute;
  int lowMinute;
};

SessionPath sessionPath(const TradingDay& day, const Noise& noise, int minutes, bool isInverse) {
  const auto place = [&](MinuteStream stream) {
    return 1 + static_cast<int>(noise.uniform(stream, 0, minutes - 1));
  };
  SessionPath result{.prices = std::vector<std::int64_t>(static_cast<std::size_t>(minutes) + 1),
                     .highMinute = place(isInverse ? lowPlace : highPlace),
                     .lowMinute = place(isInverse ? highPlace : lowPlace)};
  if (result.highMinute == result.lowMinute) {
    // Of a pair and its inverse, one moves its low and the other its high.
    int& moved = isInverse ? result.highMinute : result.lowMinute;
    moved = moved % (minutes - 1) + 1;
  }
  Anchor first{result.highMinute, day.high * fraction};
  Anchor second{result.lowMinute, day.low * fraction};
  if (second.minute < first.minute) {
    std::swap(first, second);
  }
  const Anchor anchors[] = {
      {0, day.open * fraction}, first, second, {minutes, day.close * fraction}};
  const std::int64_t deviation = (day.high - day.low) * fraction / 50;
  for (std::size_t i = 0; i + 1 < std::size(anchors); ++i) {
    walkBetween(result.prices, anchors[i], anchors[i + 1], noise, step, deviation,
                isInverse ? -1 : 1);
  }
  for (std::int64_t& price : result.prices) {
    price = std::clamp(roundedToTicks(price), day.low, day.high);
  }
  return result;
}

/// The shares traded up to the start of every minute of trading, and by the end.
std::vector<std::int64_t> volumePath(std::int64_t volume, const Noise& noise, int minutes) {
  std::vector<std::int64_t> weights(static_cast<std::size_t>(minutes) + 1, 0);
  for (int minute = 0; minute < minutes; ++minute) {
    // Most is traded near the opening and near the close.
    const std::int64_t fromMiddle = std::abs(2 * minute - minutes);
    weights[static_cast<std::size_t>(minute) + 1] = weights[static_cast<std::size_t>(minute)] +
                                                    300 + 900 * fromMiddle / minutes +
                                                    noise.uniform(volumeShare, minute, 500);
  }
  const std::int64_t all = weights.back();
  for (std::int64_t& weight : weights) {
    weight = static_cast<std::int64_t>(Wide{weight} * volume / all);
  }
  return weights;
}

/// Where a price or a volume that goes from `start` to `end` in the minute from `time` on has come
/// by `now`.
std::int64_t reached(std::int64_t now, std::int64_t time, std::int64_t start, std::int64_t end) {
  const std::int64_t elapsed = std::min(now - time, secondsPerMinute);
  return start + (end - start) * elapsed / secondsPerMinute;
}

bool isQuiet(const Instrument& instrument, const Noise& noise, int minute) {
  // Nobody counts the trades in an index or a pair of currencies; they always have a price.
  const bool isShare =
      instrument.kind == InstrumentKind::stock || instrument.kind == InstrumentKind::fund;
  return isShare && noise.uniform(trade, minute, 60) == 0;
}

std::vector<PublishedBar> quietMinutes(std::int64_t start, std::int64_t end, std::int64_t now) {
  std::vector<PublishedBar> bars;
  for (std::int64_t time = start; time < end && time <= now; time += secondsPerMinute) {
    bars.push_back({.time = time});
  }
  return bars;
}

std::vector<PublishedBar> thinMinutes(const DailyHistory& history, const PublishedPrices& published,
                                      std::size_t session, std::int64_t start, std::int64_t end,
                                      std::int64_t now, const Anchor& from, std::int64_t target,
                                      MinuteStream steps, MinuteStream trades) {
  std::vector<PublishedBar> bars = quietMinutes(start, end, now);
  if (bars.empty() || history.day(session).isHalted) {
    return bars;
  }
  const Noise noise(Noise(history.instrument().noiseKey()), static_cast<std::int64_t>(session));
  const auto minutes = static_cast<int>((end - start) / secondsPerMinute);
  std::vector<std::int64_t> path(static_cast<std::size_t>(minutes) + 1);
  walkBetween(path, {0, from.price * fraction}, {minutes, target * fraction}, noise, steps,
              std::max<std::int64_t>(from.price * fraction / 20000, 1), 1);
  const auto priceAt = [&](std::size_t minute) {
    return std::max<std::int64_t>(1, roundedToTicks(path[minute]));
  };
  for (std::size_t minute = 0; minute < bars.size(); ++minute) {
    if (noise.uniform(trades, static_cast<std::int64_t>(minute), 100) < 30) {
      PublishedBar& bar = bars[minute];
      const std::int64_t open = priceAt(minute);
      const std::int64_t close = reached(now, bar.time, open, priceAt(minute + 1));
      bar.hasTrades = true;
      bar.open = published.price(open, session);
      bar.close = published.price(close, session);
      bar.high = std::max(bar.open, bar.close);
      bar.low = std::min(bar.open, bar.close);
    }
  }
  return bars;
}

}  // namespace

std::vector<PublishedBar> sessionMinutes(const DailyHistory& history,
                                         const PublishedPrices& published, std::size_t session,
                                         std::int64_t now) {
  const Session& times = history.sessions()[session];
  const TradingDay& day = history.day(session);
  std::vector<PublishedBar> bars = quietMinutes(times.open, times.close, now);
  if (bars.empty() || day.isHalted) {
    return bars;
  }
  const Exchange& exchange = history.calendar().exchange();
  const int recess = exchange.recessEnd - exchange.recessStart;
  const int minutes = times.minutes() - recess;
  const Noise noise(Noise(history.instrument().noiseKey()), static_cast<std::int64_t>(session));
  const SessionPath path = sessionPath(day, noise, minutes, history.instrument().isInversePair());
  const std::vector<std::int64_t> volumes = volumePath(day.volume, noise, minutes);
  const std::int64_t wick = (day.high - day.low) / 60;

  std::int64_t countedVolume = 0;
  for (std::size_t i = 0; i < bars.size(); ++i) {
    const auto clockMinute = static_cast<int>(i);
    if (clockMinute >= exchange.recessStart && clockMinute < exchange.recessEnd) {
      continue;
    }
    const int minute = clockMinute - (clockMinute >= exchange.recessEnd ? recess : 0);
    const bool isExtreme = minute == path.highMinute || minute + 1 == path.highMinute ||
                           minute == path.lowMinute || minute + 1 == path.lowMinute;
    const bool isEdge = minute == 0 || minute + 1 == minutes;
    if (!isEdge && !isExtreme && isQuiet(history.instrument(), noise, minute)) {
      continue;  // its volume goes to the next bar
    }
    const auto place = static_cast<std::size_t>(minute);
    const std::int64_t open = path.prices[place];
    const std::int64_t close = reached(now, bars[i].time, open, path.prices[place + 1]);
    // The running minute has no wicks yet, so that a bar only ever grows.
    const bool isRunning = now - bars[i].time < secondsPerMinute;
    const std::int64_t up = isRunning ? 0 : std::abs(noise.normal(upperWick, minute, wick));
    const std::int64_t down = isRunning ? 0 : std::abs(noise.normal(lowerWick, minute, wick));
    const std::int64_t volumeByEnd =
        published.volume(reached(now, bars[i].time, volumes[place], volumes[place + 1]), session);
    bars[i] = {.time = bars[i].time,
               .hasTrades = true,
               .open = published.price(open, session),
               .high = published.price(std::min(std::max(open, close) + up, day.high), session),
               .low = published.price(std::max(std::min(open, close) - down, day.low), session),
               .close = published.price(close, session),
               .volume = volumeByEnd - countedVolume};
    countedVolume = volumeByEnd;
  }
  return bars;
}

std::vector<PublishedBar> preMarketMinutes(const DailyHistory& history,
                                           const PublishedPrices& published, std::size_t session,
                                           std::int64_t now) {
  const Session& times = history.sessions()[session];
  const TradingDay& day = history.day(session);
  return thinMinutes(history, published, session, times.preOpen, times.open, now,
                     {0, day.previousClose}, day.open, preStep, preTrade);
}

std::vector<PublishedBar> postMarketMinutes(const DailyHistory& history,
                                            const PublishedPrices& published, std::size_t session,
                                            std::int64_t now) {
  const Session& times = history.sessions()[session];
  const TradingDay& day = history.day(session);
  const Noise noise(Noise(history.instrument().noiseKey()), static_cast<std::int64_t>(session));
  const std::int64_t end =
      day.close + noise.normal(postEnd, 0, std::max<std::int64_t>(day.close / 400, 1));
  return thinMinutes(history, published, session, times.close, times.postClose, now, {0, day.close},
                     std::max<std::int64_t>(end, 1), postStep, postTrade);
}

}  // namespace corvane::samplemarket
