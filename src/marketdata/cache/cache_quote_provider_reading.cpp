// What the cache reads: equities, bars and events, and what it covers.

#include <algorithm>

#include "core/money/currency_almanac.h"
#include "marketdata/cache/cache_quote_provider.h"
#include "marketdata/cache/quote_cache_codes.h"
#include "marketdata/cache/quote_cache_rows.h"
#include "platform/overloaded.h"

namespace corvane {
namespace {

template <typename Text>
std::optional<std::string> copied(const Text& text) {
  return text ? std::optional(std::string(*text)) : std::nullopt;
}

/// What a query reads from the tables.
struct Reading {
  std::optional<std::int64_t> intervalCode;  ///< none where events are read
  PriceAdjustment prices;
};

Reading readingOf(const QuoteQuery::Subject& subject) {
  return std::visit(
      Overloaded{
          [](const QuoteQuery::Quotes& quotes) {
            return Reading{intervalCode(quotes.interval), quotes.prices};
          },
          [](const QuoteQuery::CurrentPeriodQuotes& current) {
            if (current.usingSnapshots) {
              throw QuoteProviderError(QuoteProviderError::NotAvailable{});
            }
            return Reading{intervalCode(QuoteInterval::oneMinute), PriceAdjustment::marketNominal};
          },
          [](const QuoteQuery::EventsOnly& events) {
            return Reading{std::nullopt, events.prices};
          },
          [](QuoteQuery::EventsWithoutAdjustment) -> Reading {
            throw dataInconsistency(
                "To retrieve unadjusted events, first seek coverage and then retrieve "
                "events with specific price adjustments.");
          }},
      subject);
}

std::vector<Quote> readQuotes(SQLiteDatabase& database, std::int64_t rowId, std::int64_t interval,
                              PriceAdjustment prices, const DateRange& range) {
  std::vector<Quote> quotes;
  SQLiteStatement row = database.query(
      "SELECT * FROM quotes\n"
      "WHERE equityId = ?\n"
      "AND intervalType = ?\n"
      "AND fromDate >= ?\n"
      "AND fromDate < ?\n"
      "AND priceType = ?\n"
      "ORDER BY fromDate ASC;",
      {rowId, interval, storedDate(range.lower()), storedDate(range.upper()), priceCode(prices)});
  if (!row.step()) {
    return quotes;
  }
  const QuoteRowReader reader(row);
  do {
    quotes.push_back(reader.quoteIn(row));
    quotes.back().isPartial = prices == PriceAdjustment::marketNominalSnapshot;
  } while (row.step());
  return quotes;
}

std::vector<EquityEvent> readEvents(SQLiteDatabase& database, std::int64_t rowId,
                                    PriceAdjustment prices, const DateRange& range) {
  std::vector<EquityEvent> events;
  SQLiteStatement row = database.query(
      "SELECT * FROM events\n"
      "WHERE equityId = ?\n"
      "AND date >= ?\n"
      "AND date < ?\n"
      "AND priceType = ?\n"
      "ORDER BY date ASC;",
      {rowId, storedDate(range.lower()), storedDate(range.upper()), priceCode(prices)});
  while (row.step()) {
    events.push_back(eventIn(row, prices));
  }
  return events;
}

/// The ranges within the query of a result of the table `coverage` that are on a basis known here.
class CoveredRangesReader {
 public:
  explicit CoveredRangesReader(const DateRange& query) : query_(query) {}

  std::vector<CoveredRange> read(SQLiteStatement& row) const {
    std::vector<CoveredRange> covered;
    while (row.step()) {
      const auto from = row.real("clampedFromDate");
      const auto to = row.real("clampedToDate");
      if (!from || !to) {
        throw dataInconsistency("Missing data in the coverage table.");
      }
      const auto prices = row.integer("priceType").and_then(pricesWithCode);
      const Date lower = dateOf(*from);
      const Date upper = dateOf(*to);
      // A range that ends before it starts can only come from a damaged file, and covers nothing.
      if (prices && lower < upper) {
        covered.push_back({{lower, upper}, *prices});
      }
    }
    return covered;
  }

 private:
  /// Seconds since 1970 have fewer digits after the point than those of a Date, so a bound of the
  /// query that has some would not come back as itself, and the plan would look for the sliver
  /// between the two elsewhere.
  [[nodiscard]] Date dateOf(double seconds) const {
    for (const Date bound : {query_.lower(), query_.upper()}) {
      if (seconds == bound.timeIntervalSince1970()) {
        return bound;
      }
    }
    return Date::since1970(seconds);
  }

  const DateRange& query_;
};

}  // namespace

void CacheQuoteProvider::loadEquityRow(EquityInfo& equity, const SQLiteStatement& row) {
  const auto symbol = row.text("symbol");
  const auto currencyCode = row.text("currencyCode");
  const auto timeZoneName = row.text("timeZoneName");
  const auto identifier = row.text("identifier");
  if (!symbol || !currencyCode || !timeZoneName || !identifier) {
    throw dataInconsistency("We should always have complete rows in the equities table.");
  }
  if (*identifier != equity.id()) {
    throw dataInconsistency("Identifier for " + equity.symbol + " has changed!");
  }
  equityRowIdsById_.insert_or_assign(equity.id(), row.integer("id").value());

  const auto timeZone = TimeZone::withIdentifier(*timeZoneName);
  if (!timeZone) {
    throw QuoteProviderError(QuoteProviderError::UnrecognizedTimeZone{std::string(*timeZoneName)});
  }
  const auto& currencies = CurrencyAlmanac::allCurrenciesByCode();
  const auto currency = currencies.find(*currencyCode);
  if (currency == currencies.end()) {
    throw QuoteProviderError(QuoteProviderError::UnsupportedCurrency{std::string(*currencyCode)});
  }
  const auto exchange = row.text("exchange");
  const auto name = row.text("name");
  const auto recentPrice = decimalIn(row, row.column("recentPrice"));
  const auto recentDate = dateIn(row, row.column("recentDate"));
  const auto previousClosePrice = decimalIn(row, row.column("previousClosePrice"));
  const auto opens = dateIn(row, row.column("recentPeriodOpenDate"));
  const auto closes = dateIn(row, row.column("recentPeriodCloseDate"));

  equity.calendar = Calendar(*timeZone);
  equity.currency = currency->second;
  equity.symbol = *symbol;
  equity.exchange = copied(exchange);
  equity.name = copied(name);
  equity.recentPrice = recentPrice;
  equity.recentDate = recentDate;
  equity.previousClosePrice = previousClosePrice;
  const bool isPeriod = opens && closes && *opens <= *closes;
  equity.recentTradingPeriod = isPeriod ? std::optional(DateRange(*opens, *closes)) : std::nullopt;
  equity.isAuthoritative = true;
}

QuoteFetchResult CacheQuoteProvider::readQuery(const QuoteQuery& query) const {
  const Reading reading = readingOf(query.seeking);
  QuoteFetchResult result = {.quotes = std::nullopt,
                             .prices = reading.prices,
                             .events = std::nullopt,
                             .durableDateRange = query.dateRange};
  const auto rowId = rowIdOf(*query.equity);
  const bool hasData = rowId && !query.dateRange.isEmpty();
  if (reading.intervalCode) {
    result.quotes = hasData ? readQuotes(database(), *rowId, *reading.intervalCode, reading.prices,
                                         query.dateRange)
                            : std::vector<Quote>();
  } else {
    result.events = hasData ? readEvents(database(), *rowId, reading.prices, query.dateRange)
                            : std::vector<EquityEvent>();
  }
  return result;
}

CoveragePlan CacheQuoteProvider::coveragePlan(const QuoteQuery& query) const {
  const auto rowId = rowIdOf(*query.equity);
  if (!rowId || query.dateRange.isEmpty()) {
    return {.exactQueries = {}, .convertibleQueries = {}, .missingQueries = {query}};
  }
  const CoverageTarget target = CoverageTarget::of(query.seeking);
  const SQLiteValue lower = storedDate(query.dateRange.lower());
  const SQLiteValue upper = storedDate(query.dateRange.upper());
  SQLiteStatement row = database().query(
      "SELECT *,\n"
      "    MAX(fromDate, ?) AS clampedFromDate,     -- Truncate to the start of query.\n"
      "    MIN(toDate, ?) AS clampedToDate,         -- Truncate to the end of query.\n"
      "    IIF(priceType = ?, 0, 1) AS typeBias     -- Create a bias for favouring the target "
      "price type as a `fromDate` tie-breaker.\n"
      "FROM coverage\n"
      "WHERE equityId = ?\n"
      "AND intervalType = ?\n"
      "AND fromDate < ?     -- starts before the query end\n"
      "AND toDate > ?       -- ends after the query start\n"
      "ORDER BY clampedFromDate ASC, typeBias ASC, clampedToDate DESC;",
      {lower, upper, priceCode(target.prices), *rowId, target.intervalCode, upper, lower});
  return corvane::coveragePlan(query, CoveredRangesReader(query.dateRange).read(row));
}

std::optional<Date> CacheQuoteProvider::latestEventDate(const EquityPointer& equity) const {
  const CoveragePlan plan = coveragePlan({equity,
                                          {Date::distantPast(), Date::distantFuture()},
                                          QuoteQuery::EventsOnly{PriceAdjustment::marketNominal}});
  std::vector<DateRange> covered;
  for (const auto* queries : {&plan.exactQueries, &plan.convertibleQueries}) {
    for (const QuoteQuery& query : *queries) {
      covered.push_back(query.dateRange);
    }
  }
  if (covered.empty()) {
    return std::nullopt;
  }
  std::ranges::sort(covered, {}, &DateRange::lower);
  const auto hole = std::ranges::adjacent_find(
      covered,
      [](const DateRange& range, const DateRange& next) { return next.lower() != range.upper(); });
  return hole == covered.end() ? covered.back().upper() : hole->upper();
}

}  // namespace corvane
