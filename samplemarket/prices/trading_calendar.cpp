#include "samplemarket/prices/trading_calendar.h"

#include <algorithm>

#include "platform/time/civil_day.h"
#include "platform/time/time_zone.h"
#include "samplemarket/prices/holidays.h"

namespace corvane::samplemarket {

namespace {

std::int32_t offsetAtNoon(const TimeZone& zone, std::int64_t day) {
  return zone.secondsFromGMT(Date::since1970(static_cast<double>(day * secondsPerDay + 43200)));
}

TimeZone zoneOf(const Exchange& exchange) {
  return TimeZone::withIdentifier(exchange.timeZoneName).value_or(TimeZone());
}

/// Tokyo has traded half an hour longer since 2024-11-05.
int regularClose(const Exchange& exchange, std::int64_t day) {
  const bool isLonger = exchange.id == ExchangeID::tokyo && day >= dayCount(2024, 11, 5);
  return exchange.close + (isLonger ? 30 : 0);
}

}  // namespace

const TradingCalendar& TradingCalendar::of(ExchangeID id) {
  static const TradingCalendar newYork(ExchangeID::newYork);
  static const TradingCalendar toronto(ExchangeID::toronto);
  static const TradingCalendar london(ExchangeID::london);
  static const TradingCalendar frankfurt(ExchangeID::frankfurt);
  static const TradingCalendar tokyo(ExchangeID::tokyo);
  static const TradingCalendar currencies(ExchangeID::currencies);
  switch (id) {
    case ExchangeID::newYork:
      return newYork;
    case ExchangeID::toronto:
      return toronto;
    case ExchangeID::london:
      return london;
    case ExchangeID::frankfurt:
      return frankfurt;
    case ExchangeID::tokyo:
      return tokyo;
    case ExchangeID::currencies:
      return currencies;
  }
  return newYork;
}

TradingCalendar::TradingCalendar(ExchangeID id) : exchange_(samplemarket::exchange(id)) {
  const TimeZone zone = zoneOf(exchange_);
  for (std::int64_t year = firstYear; year <= lastYear; ++year) {
    const Holidays rest = holidays(id, year);
    const std::int64_t end = dayCount(year + 1, 1, 1);
    for (std::int64_t day = dayCount(year, 1, 1); day < end; ++day) {
      if (dayOfWeek(day) > 4 || rest.closed.contains(day)) {
        continue;
      }
      const std::int32_t offset = offsetAtNoon(zone, day);
      const auto at = [&](int minutes) {
        return day * secondsPerDay + minutes * secondsPerMinute - offset;
      };
      const int close =
          rest.halfDay.contains(day) ? exchange_.halfDayClose : regularClose(exchange_, day);
      sessions_.push_back({.day = static_cast<std::int32_t>(day),
                           .gmtOffset = offset,
                           .preOpen = at(exchange_.preOpen),
                           .open = at(exchange_.open),
                           .close = at(close),
                           .postClose = at(close + exchange_.postClose - exchange_.close)});
    }
  }
  sessions_.shrink_to_fit();
}

std::size_t TradingCalendar::firstOpeningFrom(std::int64_t seconds) const {
  const auto found = std::ranges::lower_bound(sessions_, seconds, {}, &Session::open);
  return static_cast<std::size_t>(found - sessions_.begin());
}

std::optional<std::size_t> TradingCalendar::lastOpenedBy(std::int64_t seconds) const {
  const std::size_t next = firstOpeningFrom(seconds + 1);
  return next == 0 ? std::nullopt : std::optional(next - 1);
}

std::optional<std::size_t> TradingCalendar::currentAt(std::int64_t seconds) const {
  const auto next = std::ranges::partition_point(sessions_, [&](const Session& session) {
    return session.day * secondsPerDay - session.gmtOffset <= seconds;
  });
  return next == sessions_.begin()
             ? std::nullopt
             : std::optional(static_cast<std::size_t>(next - sessions_.begin()) - 1);
}

std::int64_t TradingCalendar::midnight(std::int64_t day) const {
  // An hour either way is tried, since clocks may change between midnight and noon.
  const TimeZone zone = zoneOf(exchange_);
  const std::int64_t guess = day * secondsPerDay - offsetAtNoon(zone, day);
  const std::int32_t offset = zone.secondsFromGMT(Date::since1970(static_cast<double>(guess)));
  return day * secondsPerDay - offset;
}

}  // namespace corvane::samplemarket
