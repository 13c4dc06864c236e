#include "marketdata/cache/recent_price_bar.h"

#include <optional>

namespace corvane {
namespace {

/// When the session began in which the recent price of `equity` was paid. A refresh keeps the hours
/// of a session only while it lasts; sessions begin at the same time of day, which the bars tell.
std::optional<Date> startOfRecentSession(const EquityInfo& equity, Date lastBar) {
  const auto& session = equity.recentTradingPeriod;
  const Date paid = *equity.recentDate;
  if (session && session->lower() <= paid && paid <= session->upper()) {
    return session->lower();
  }
  auto opening = equity.calendar.dateComponents(
      {CalendarUnit::hour, CalendarUnit::minute, CalendarUnit::second}, lastBar);
  const auto day = equity.calendar.dateComponents(
      {CalendarUnit::year, CalendarUnit::month, CalendarUnit::day}, paid);
  for (const CalendarUnit unit : {CalendarUnit::year, CalendarUnit::month, CalendarUnit::day}) {
    opening.set(unit, day.get(unit));
  }
  const auto start = equity.calendar.date(opening);
  return start && *start <= paid ? start : std::nullopt;
}

std::optional<Quote> barOfRecentPrice(const QuoteFetchResult& stored, const QuoteQuery& query) {
  const auto* seeking = std::get_if<QuoteQuery::Quotes>(&query.seeking);
  const EquityInfo& equity = *query.equity;
  if (seeking == nullptr || seeking->interval != QuoteInterval::oneDay || !stored.quotes ||
      stored.quotes->empty() || !equity.recentDate || !equity.recentPrice) {
    return std::nullopt;
  }
  const Date last = stored.quotes->back().fromDate;
  const auto start = startOfRecentSession(equity, last);
  if (!start || *start <= last || !query.dateRange.contains(*start)) {
    return std::nullopt;
  }
  return Quote{.fromDate = *start,
               .toDate = *equity.recentDate,
               .open = std::nullopt,
               .close = equity.recentPrice,
               .low = std::nullopt,
               .high = std::nullopt,
               .volume = std::nullopt,
               .isPartial = true,
               .isCached = true};
}

}  // namespace

QuoteFetchResult withRecentPrice(QuoteFetchResult stored, const QuoteQuery& query) {
  if (const auto bar = barOfRecentPrice(stored, query)) {
    stored.quotes->push_back(*bar);
  }
  return stored;
}

}  // namespace corvane
