#include "cli/console/price_bars.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

#include "cli/console/date_text.h"
#include "cli/console/price_source.h"
#include "core/market/price_adjuster.h"
#include "core/market/quote_interval_name.h"
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

std::vector<Quote> fetchBars(QuoteQuery query, const std::shared_ptr<QuoteProvider>& provider) {
  // Nothing has been traded after now, and services want whole seconds.
  const Date now =
      Date::sinceReferenceDate(std::floor(Date::now().timeIntervalSinceReferenceDate()));
  if (now < query.dateRange.lower()) {
    throw UsageError("--from lies in the future.");
  }
  query.dateRange = DateRange(query.dateRange.lower(), std::min(query.dateRange.upper(), now));
  const auto outcome = std::make_shared<std::optional<Result<QuoteFetchResult>>>();
  provider->fetchQuotes(
      std::move(query), std::make_shared<PriceAdjuster>(provider),
      [outcome](Result<QuoteFetchResult> result) {
        DispatchQueue::main()->async(
            [outcome, result = std::move(result)]() mutable { *outcome = std::move(result); });
      });
  waitFor([&] { return outcome->has_value(); });
  if (!**outcome) {
    (**outcome).error()->raise();
  }
  return (**outcome)->quotes.value_or(std::vector<Quote>());
}

std::string timeText(Date date, const Calendar& calendar) {
  const auto two = [&](CalendarUnit unit) {
    const std::string text = std::to_string(calendar.component(unit, date));
    return (text.size() < 2 ? "0" : "") + text;
  };
  return dateText(date, calendar) + " " + two(CalendarUnit::hour) + ":" + two(CalendarUnit::minute);
}

}  // namespace corvane::cli
