#include "cli/console/price_bars.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

#include "cli/console/date_text.h"
#include "cli/console/price_source.h"
#include "core/market/price_adjuster.h"
#include "core/market/quote_interval_name.h"
#include "marketdata/chain/refusal_text.h"
#include "platform/async/dispatch_queue.h"

namespace corvane::cli {
namespace {

std::string intervalNames(std::string_view separator) {
  std::string names;
  for (const QuoteInterval interval : allQuoteIntervals) {
    names += (names.empty() ? "" : std::string(separator)) + std::string(shortName(interval));
  }
  return names;
}

/// Throws Failed, having said what can be had instead, where the provider has no bars of this
/// length in the days of `query`: asking for years of minutes would take hundreds of requests, all
/// in vain.
void requireInterval(const QuoteQuery& query, const QuoteProvider& provider,
                     const Console& console) {
  const QuoteInterval interval = std::get<QuoteQuery::Quotes>(query.seeking).interval;
  const auto available = provider.availableIntervals(query.equity, query.dateRange);
  if (available.contains(interval)) {
    return;
  }
  std::string names;
  for (const QuoteInterval each : allQuoteIntervals) {
    if (available.contains(each)) {
      names += (names.empty() ? "" : ", ") + std::string(shortName(each));
    }
  }
  console.warn("There are no prices every " + std::string(shortName(interval)) +
               " for days as old as " + dateText(query.dateRange.lower(), query.equity->calendar) +
               ". --interval may be one of " + names + ".");
  throw Failed(exitCode::failure);
}

Result<QuoteFetchResult> fetched(QuoteQuery query, const std::shared_ptr<QuoteProvider>& provider) {
  const auto outcome = std::make_shared<std::optional<Result<QuoteFetchResult>>>();
  provider->fetchQuotes(
      std::move(query), std::make_shared<PriceAdjuster>(provider),
      [outcome](Result<QuoteFetchResult> result) {
        DispatchQueue::main()->async(
            [outcome, result = std::move(result)]() mutable { *outcome = std::move(result); });
      });
  waitFor([&] { return outcome->has_value(); });
  return **outcome;
}

}  // namespace

Option intervalOption() {
  static const std::string choices = intervalNames(" ");
  return {.name = "--interval",
          .value = "LENGTH",
          .help = "how far prices are apart, 1m to 3mo; else 1d",
          .choices = choices};
}

QuoteInterval intervalOf(const CommandLine& line) {
  const std::string name = line.value("--interval").value_or("1d");
  const auto interval = intervalNamed(name);
  if (!interval) {
    throw UsageError("--interval is one of " + intervalNames(", ") + ", not “" + name + "”.");
  }
  return *interval;
}

std::vector<Quote> fetchBars(QuoteQuery query, const PriceSource& prices, const Console& console) {
  // Nothing has been traded after now, and services want whole seconds.
  const Date now =
      Date::sinceReferenceDate(std::floor(Date::now().timeIntervalSinceReferenceDate()));
  const DateRange asked = query.dateRange;
  if (now < asked.lower()) {
    throw UsageError("--from lies in the future.");
  }
  query.dateRange = DateRange(asked.lower(), std::min(asked.upper(), now));
  if (!prices.isCacheOnly()) {  // The cache may have a part of the days, which does.
    requireInterval(query, *prices.provider(), console);
  }
  // Prices that are kept already may stem from before a split that nobody has told of yet. Where
  // the events cannot be had, that says nothing about the prices.
  (void)fetched(
      {query.equity, query.equity->fullDateRange(), QuoteQuery::EventsWithoutAdjustment{}},
      prices.provider());
  const auto answer = fetched(query, prices.provider());
  if (!answer) {
    console.warn(refusalText(*answer.error(), query.equity->symbol));
    throw Failed(exitCode::failure);
  }
  if (!answer->quotes || answer->quotes->empty()) {
    console.warn("There are no prices of " + query.equity->symbol + " in these days.");
    throw Failed(exitCode::failure);
  }
  return *answer->quotes;
}

std::string timeText(Date date, const Calendar& calendar) {
  const auto two = [&](CalendarUnit unit) {
    const std::string text = std::to_string(calendar.component(unit, date));
    return (text.size() < 2 ? "0" : "") + text;
  };
  return dateText(date, calendar) + " " + two(CalendarUnit::hour) + ":" + two(CalendarUnit::minute);
}

}  // namespace corvane::cli
