#include <optional>

#include "cli/commands/commands.h"
#include "cli/console/date_text.h"
#include "cli/console/listing.h"
#include "cli/console/option_values.h"
#include "cli/console/price_bars.h"
#include "cli/console/price_source.h"

namespace corvane::cli {
namespace {

using PriceAdjustment = QuoteQuery::PriceAdjustment;

PriceAdjustment adjustmentOf(const CommandLine& line) {
  const std::string name = line.value("--adjust").value_or("splits");
  if (name == "none") {
    return PriceAdjustment::marketNominal;
  }
  if (name == "splits") {
    return PriceAdjustment::adjustedForSplits;
  }
  if (name == "dividends") {
    return PriceAdjustment::adjustedForSplitsAndDividends;
  }
  throw UsageError("--adjust is one of none, splits, dividends, not “" + name + "”.");
}

/// The days of the options, in the calendar of the equity; the year up to today without them.
DateRange rangeOf(const CommandLine& line, const Calendar& calendar) {
  const YearMonthDay last =
      dayOption(line, "--to").value_or(YearMonthDay::of(Date::now(), calendar));
  const YearMonthDay first =
      dayOption(line, "--from")
          .value_or(YearMonthDay::normalised(last.year - 1, last.month, last.day + 1, calendar));
  if (last < first) {
    throw UsageError("--to is before --from.");
  }
  return {
      first.startIn(calendar),
      YearMonthDay::normalised(last.year, last.month, last.day + 1, calendar).startIn(calendar)};
}

std::vector<Listing::Field> barFields() {
  using enum Listing::Kind;
  return {{"date", "Date"},         {"open", "Open", number},         {"high", "High", number},
          {"low", "Low", number},   {"close", "Close", number},       {"volume", "Volume", number},
          {"currency", "Currency"}, {"isRunning", "Running", boolean}};
}

Listing listingOf(const std::vector<Quote>& quotes, const EquityInfo& equity, bool isIntraday) {
  Listing bars(barFields());
  const Date now = Date::now();
  const auto price = [](const std::optional<Decimal>& amount) {
    return amount ? amount->description() : "";
  };
  for (const Quote& quote : quotes) {
    bars.add({isIntraday ? timeText(quote.fromDate, equity.calendar)
                         : dateText(quote.fromDate, equity.calendar),
              price(quote.open), price(quote.high), price(quote.low), price(quote.close),
              quote.volume ? std::to_string(*quote.volume) : "", std::string(equity.currency.code),
              quote.toDate > now || (quote.isCached && quote.isPartial) ? "true" : "false"});
  }
  return bars;
}

void writeQuotes(const CommandLine& line, const Console& console) {
  const ListingFormat format = listingFormat(line, ListingFormat::csv);
  const QuoteInterval interval = intervalOf(line);
  const PriceAdjustment adjustment = adjustmentOf(line);
  const PriceSource prices(line);
  const EquityPointer equity = prices.provider()->equityWithId(line.word(0));
  // The calendar of its exchange says where days begin.
  refreshEquities(*prices.provider(), {equity}, console);
  const std::vector<Quote> quotes =
      fetchBars({equity, rangeOf(line, equity->calendar), QuoteQuery::Quotes{interval, adjustment}},
                prices, console);
  listingOf(quotes, *equity, interval < QuoteInterval::oneDay).write(format, console.out);
}

}  // namespace

Command quotesCommand() {
  return {.name = "quotes",
          .summary = "Writes the price history of a symbol.",
          .words = {"SYMBOL"},
          .options = joined(
              {{"--from", "DAY", "the first day, such as 2024-01-01; else a year before the last"},
               {"--to", "DAY", "the last day; else today"},
               intervalOption(),
               {"--adjust", "FOR", "none, splits or dividends, which is for both; else splits",
                false, false, "none splits dividends"}},
              listingOptions(), priceSourceOptions()),
          .explanation =
              "A line for each bar, as delimited text where nothing else is asked for. Days are "
              "those of\nthe exchange, prices are in the currency of the equity. A bar that "
              "has not ended\nis still running.\n",
          .listings = {{"", barFields()}},
          .run = &writeQuotes};
}

}  // namespace corvane::cli
