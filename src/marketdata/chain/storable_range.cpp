#include "marketdata/chain/storable_range.h"

#include <algorithm>
#include <cmath>
#include <ranges>
#include <span>

namespace corvane {
namespace {

DateRange wholeSecondsWithin(Date lower, Date upper) {
  const double from = std::ceil(lower.timeIntervalSince1970());
  const double to = std::floor(upper.timeIntervalSince1970());
  return {Date::since1970(from), Date::since1970(std::max(from, to))};
}

std::span<const Quote> barsOf(const QuoteFetchResult& piece) {
  return piece.quotes ? std::span<const Quote>(*piece.quotes) : std::span<const Quote>();
}

/// The end of `durable` without the last stretch in which a week or a month may have begun that has
/// no bar yet.
Date endWithoutBars(const DateRange& durable, const QuoteQuery& asked) {
  const auto* quotes = std::get_if<QuoteQuery::Quotes>(&asked.seeking);
  if (quotes == nullptr || quotes->interval <= QuoteInterval::oneDay) {
    return durable.upper();
  }
  const CalendarUnit unit =
      quotes->interval == QuoteInterval::oneWeek ? CalendarUnit::weekOfYear : CalendarUnit::month;
  return asked.equity->calendar.dateByAdding(unit, -1, durable.upper()).value_or(durable.lower());
}

/// Where data is final from, given that nothing was traded before `firstTrade`. A bar of a week or
/// a month that holds the first trade starts before it, and is whole all the same.
Date startOfFinalData(const QuoteFetchResult& piece, const DateRange& asked, Date firstTrade) {
  const DateRange& durable = piece.durableDateRange;
  Date nothingBefore = firstTrade;
  for (const Quote& bar : barsOf(piece)) {
    if (bar.fromDate <= firstTrade && bar.toDate <= durable.upper()) {
      nothingBefore = std::max(nothingBefore, bar.toDate);
    }
  }
  return durable.lower() <= nothingBefore ? asked.lower() : durable.lower();
}

}  // namespace

DateRange storableRange(const QuoteFetchResult& piece, const QuoteQuery& asked) {
  const DateRange& durable = piece.durableDateRange;
  if (durable.isEmpty()) {
    return durable;
  }
  const auto firstTrade = asked.equity->firstTradeDate;
  Date lower = durable.lower();
  if (firstTrade && asked.dateRange.lower() < *firstTrade) {
    lower = std::min(lower, startOfFinalData(piece, asked.dateRange, *firstTrade));
  }
  const auto bars = barsOf(piece);
  const Date start = lower;
  const auto isFinished = [&](const Quote& bar) {
    return bar.fromDate >= start && bar.toDate <= durable.upper() &&
           (!bar.isPartial || bar.fromDate < durable.lower());
  };
  Date upper =
      std::ranges::any_of(bars, isFinished) ? durable.upper() : endWithoutBars(durable, asked);
  for (const Quote& bar : bars | std::views::reverse) {
    if (bar.fromDate < start) {
      lower = std::max(lower, bar.toDate);
    } else if (!isFinished(bar) || bar.toDate > upper) {
      upper = std::min(upper, bar.fromDate);
    }
  }
  return lower < upper ? wholeSecondsWithin(lower, upper) : DateRange(lower, lower);
}

std::optional<std::vector<EquityEvent>> storableEvents(const QuoteFetchResult& piece,
                                                       const QuoteQuery& asked) {
  const auto* quotes = std::get_if<QuoteQuery::Quotes>(&asked.seeking);
  if (!piece.events || (quotes != nullptr && quotes->interval > QuoteInterval::oneDay)) {
    return std::nullopt;
  }
  std::vector<EquityEvent> kept;
  for (const EquityEvent& event : *piece.events) {
    std::erase_if(kept, [&](const EquityEvent& earlier) {
      return earlier.date == event.date && earlier.kind.index() == event.kind.index();
    });
    kept.push_back(event);
  }
  return kept;
}

}  // namespace corvane
