#include "samplemarket/prices/chart_bars.h"

#include <algorithm>
#include <array>
#include <cassert>

#include "platform/time/civil_day.h"
#include "samplemarket/prices/session_minutes.h"

namespace corvane::samplemarket {

namespace {

using BarKind = ChartInterval::Kind;

constexpr std::array<ChartInterval, 12> intervals = {{
    {"1m", BarKind::minutes, 1, 30, 8},
    {"2m", BarKind::minutes, 2, 60},
    {"5m", BarKind::minutes, 5, 60},
    {"15m", BarKind::minutes, 15, 60},
    {"30m", BarKind::minutes, 30, 60},
    {"90m", BarKind::minutes, 90, 60},
    {"1h", BarKind::minutes, 60, 730},
    {"1d", BarKind::day},
    {"5d", BarKind::fiveDays},
    {"1wk", BarKind::week},
    {"1mo", BarKind::month},
    {"3mo", BarKind::quarter},
}};

/// Puts the minutes of one stretch of trading together to bars of `length` minutes.
void addBars(std::vector<ChartBar>& bars, const std::vector<PublishedBar>& minutes, int length,
             std::size_t session, std::int64_t from, std::int64_t to) {
  for (std::size_t start = 0; start < minutes.size(); start += static_cast<std::size_t>(length)) {
    if (minutes[start].time < from || minutes[start].time >= to) {
      continue;
    }
    ChartBar bar{{.time = minutes[start].time}, session};
    const std::size_t end = std::min(minutes.size(), start + static_cast<std::size_t>(length));
    for (std::size_t i = start; i < end; ++i) {
      bar.extend(minutes[i]);
    }
    bars.push_back(bar);
  }
}

std::vector<ChartBar> minuteBars(const MarketView& view, int length, std::int64_t from,
                                 std::int64_t to, bool withPrePost) {
  const DailyHistory& history = view.history();
  const bool isTradedOutside = withPrePost && history.instrument().kind != InstrumentKind::index;
  const SessionSpan span = sessionsTouched(view, from, to);
  std::vector<ChartBar> bars;
  for (std::size_t session = span.first; session < span.end; ++session) {
    if (isTradedOutside) {
      addBars(bars, preMarketMinutes(history, view.prices(), session, view.now()), length, session,
              from, to);
    }
    addBars(bars, sessionMinutes(history, view.prices(), session, view.now()), length, session,
            from, to);
    if (isTradedOutside) {
      addBars(bars, postMarketMinutes(history, view.prices(), session, view.now()), length, session,
              from, to);
    }
  }
  return bars;
}

/// The day on which the bar that holds `session` starts.
std::int64_t firstDayOfBar(const DailyHistory& history, BarKind kind, std::size_t session) {
  const std::int64_t day = history.sessions()[session].day;
  const CivilDay date = civilDay(day);
  switch (kind) {
    case BarKind::week:
      return day - dayOfWeek(day);
    case BarKind::month:
      return day - date.day + 1;
    case BarKind::quarter:
      return dayCount(date.year, (date.month - 1) / 3 * 3 + 1, 1);
    case BarKind::fiveDays: {
      const std::size_t first = std::max(session / 5 * 5, history.firstSession());
      return history.sessions()[first].day;
    }
    case BarKind::minutes:
    case BarKind::day:
      break;
  }
  return day;
}

std::int64_t startOfBar(const MarketView& view, BarKind kind, std::size_t first) {
  const Session& session = view.history().sessions()[first];
  if (kind == BarKind::day) {
    return first == view.currentSession() ? view.regularMarketTime() : session.open;
  }
  return kind == BarKind::fiveDays
             ? session.open
             : view.history().calendar().midnight(firstDayOfBar(view.history(), kind, first));
}

std::vector<ChartBar> dayBars(const MarketView& view, BarKind kind, std::int64_t from,
                              std::int64_t to) {
  const DailyHistory& history = view.history();
  const auto barOf = [&](std::size_t session) { return firstDayOfBar(history, kind, session); };
  std::size_t session = std::max(history.calendar().firstOpeningFrom(from), history.firstSession());
  const std::size_t end = std::min(history.calendar().firstOpeningFrom(to), view.lastSession() + 1);
  std::vector<ChartBar> bars;
  if (session >= end) {
    return bars;
  }
  while (session > history.firstSession() && barOf(session - 1) == barOf(session)) {
    --session;
  }
  for (std::int64_t currentBar = 0; session <= view.lastSession(); ++session) {
    if (bars.empty() || barOf(session) != currentBar) {
      if (session >= end) {
        break;
      }
      currentBar = barOf(session);
      bars.push_back({{.time = startOfBar(view, kind, session)}, session});
    }
    bars.back().extend(view.dayBar(session));
    bars.back().lastSession = session;
  }
  return bars;
}

}  // namespace

std::optional<ChartInterval> ChartInterval::named(std::string_view text) {
  const auto found = std::ranges::find(intervals, text, &ChartInterval::text);
  return found == intervals.end() ? std::nullopt : std::optional(*found);
}

MarketView::MarketView(const DailyHistory& history, std::int64_t now)
    : history_(history),
      now_(now),
      last_(history.calendar().lastOpenedBy(now).value_or(0)),
      current_(history.calendar().currentAt(now).value_or(last_)),
      prices_(history, last_),
      lastPrice_(0) {
  assert(last_ >= history.firstSession() && last_ < history.endSession() &&
         "the history holds what has been traded");
  const PublishedBar bar = dayBar(last_);
  lastPrice_ = bar.hasTrades ? bar.close : priceBefore(last_);
}

std::int64_t MarketView::regularMarketTime() const {
  return std::min(now_, history_.sessions()[last_].close);
}

PublishedBar MarketView::dayBar(std::size_t session) const {
  if (history_.sessions()[session].close <= now_) {
    return prices_.dayBar(session);
  }
  PublishedBar bar{.time = history_.sessions()[session].open};
  for (const PublishedBar& minute : sessionMinutes(history_, prices_, session, now_)) {
    bar.extend(minute);
  }
  return bar;
}

std::int64_t MarketView::priceBefore(std::size_t session) const {
  return prices_.price(history_.day(session).previousClose, session);
}

std::vector<ChartBar> chartBars(const MarketView& view, const ChartInterval& interval,
                                std::int64_t from, std::int64_t to, bool withPrePost) {
  return interval.kind == BarKind::minutes
             ? minuteBars(view, interval.minutes, from, to, withPrePost)
             : dayBars(view, interval.kind, from, to);
}

SessionSpan sessionsTouched(const MarketView& view, std::int64_t from, std::int64_t to) {
  const auto& sessions = view.history().sessions();
  const auto first = std::ranges::upper_bound(sessions, from, {}, &Session::postClose);
  const auto end =
      std::ranges::upper_bound(sessions, std::min(to - 1, view.now()), {}, &Session::preOpen);
  const std::size_t firstSession =
      std::max(static_cast<std::size_t>(first - sessions.begin()), view.history().firstSession());
  return {firstSession, std::max(firstSession, static_cast<std::size_t>(end - sessions.begin()))};
}

}  // namespace corvane::samplemarket
