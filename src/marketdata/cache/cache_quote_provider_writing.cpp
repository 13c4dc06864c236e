// What the cache writes: equities, answers of a source, and what they cover.

#include <algorithm>
#include <cassert>
#include <cmath>

#include "marketdata/cache/cache_quote_provider.h"
#include "marketdata/cache/quote_cache_codes.h"
#include "marketdata/cache/quote_cache_rows.h"
#include "platform/data/sqlite_transaction.h"

namespace corvane {
namespace {

/// Rows that one statement deletes by their ids. The engine limits the number of values of a
/// statement, and the handle keeps each length of statement prepared.
constexpr std::size_t idsAtOnce = 100;

SQLiteValue storedText(const std::optional<std::string>& text) {
  return text ? SQLiteValue(std::string_view(*text)) : nullptr;
}

bool isWholeSeconds(Date date) {
  const double seconds = date.timeIntervalSinceReferenceDate();
  return std::isfinite(seconds) && std::trunc(seconds) == seconds;
}

/// Where the lists of an answer belong.
struct Place {
  std::int64_t intervalCode;
  PriceAdjustment prices;
};

Place placeOf(const QuoteFetchResult& result, const QuoteQuery& query) {
  const CoverageTarget target = CoverageTarget::of(query.seeking);
  if (target.intervalCode != eventsIntervalCode) {
    return {target.intervalCode, target.prices};
  }
  const bool hasEvents = result.events && !result.events->empty();
  return {eventsIntervalCode,
          hasEvents ? result.events->front().priceAdjustment : PriceAdjustment::marketNominal};
}

bool isWithin(const Quote& quote, const DateRange& range) {
  return quote.fromDate >= range.lower() && quote.toDate <= range.upper() &&
         quote.fromDate <= quote.toDate;
}

void replaceQuotes(SQLiteDatabase& database, std::int64_t rowId, const Place& place,
                   const DateRange& range, const std::vector<Quote>& quotes) {
  database.execute(
      "DELETE FROM quotes\n"
      "WHERE equityId = ?\n"
      "AND intervalType = ?\n"
      "AND fromDate >= ?\n"
      "AND toDate <= ?\n"
      "AND priceType = ?;",
      {rowId, place.intervalCode, storedDate(range.lower()), storedDate(range.upper()),
       priceCode(place.prices)});
  for (const Quote& quote : quotes) {
    if (!isWithin(quote, range)) {
      continue;
    }
    database.execute(
        "INSERT INTO quotes\n"
        "(equityId, fromDate, toDate, intervalType, priceType, open, close, low, high, volume)\n"
        "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
        {rowId, storedDate(quote.fromDate), storedDate(quote.toDate), place.intervalCode,
         priceCode(place.prices), storedDecimal(quote.open), storedDecimal(quote.close),
         storedDecimal(quote.low), storedDecimal(quote.high),
         quote.volume ? SQLiteValue(*quote.volume) : nullptr});
  }
}

void replaceEvents(SQLiteDatabase& database, std::int64_t rowId, PriceAdjustment prices,
                   const DateRange& range, const std::vector<EquityEvent>& events) {
  database.execute(
      "DELETE FROM events\n"
      "WHERE equityId = ?\n"
      "AND date >= ?\n"
      "AND date < ?\n"
      "AND priceType = ?;",
      {rowId, storedDate(range.lower()), storedDate(range.upper()), priceCode(prices)});
  for (const EquityEvent& event : events) {
    if (!range.contains(event.date)) {
      continue;
    }
    const StoredEventKind kind = StoredEventKind::of(event.kind);
    database.execute(
        "INSERT INTO events\n"
        "(equityId, date, eventType, priceType, value1, value2)\n"
        "VALUES (?, ?, ?, ?, ?, ?)",
        {rowId, storedDate(event.date), kind.type, priceCode(prices), kind.value1, kind.value2});
  }
}

}  // namespace

void CacheQuoteProvider::storeEquity(const EquityPointer& equity) {
  auto rowId = rowIdOf(*equity);
  if (!rowId) {
    SQLiteStatement row = database().query("SELECT id FROM equities WHERE identifier = ? LIMIT 1;",
                                           {std::string_view(equity->id())});
    if (row.step()) {
      rowId = row.integer("id");
    }
  }
  constexpr std::string_view columns =
      "(currencyCode, exchange, identifier, name, previousClosePrice, recentDate, "
      "recentPeriodCloseDate, recentPeriodOpenDate, recentPrice, symbol, timeZoneName)";
  constexpr std::string_view placeholders = "(?,?,?,?,?,?,?,?,?,?,?)";
  const auto& period = equity->recentTradingPeriod;
  std::vector<SQLiteValue> values = {std::string_view(equity->currency.code),
                                     storedText(equity->exchange),
                                     std::string_view(equity->id()),
                                     storedText(equity->name),
                                     storedDecimal(equity->previousClosePrice),
                                     storedDate(equity->recentDate),
                                     period ? storedDate(period->upper()) : nullptr,
                                     period ? storedDate(period->lower()) : nullptr,
                                     storedDecimal(equity->recentPrice),
                                     std::string_view(equity->symbol),
                                     std::string_view(equity->calendar.timeZone().identifier())};
  if (rowId) {
    values.emplace_back(*rowId);
    database().execute("UPDATE equities SET " + std::string(columns) + " = " +
                           std::string(placeholders) + " WHERE id = ?;",
                       values);
    values.pop_back();
  }
  // Another program may have emptied the file, and the row is gone.
  if (!rowId || database().changesCount() == 0) {
    database().execute("INSERT INTO equities " + std::string(columns) + " VALUES " +
                           std::string(placeholders) + ";",
                       values);
    rowId = database().lastInsertedRowId();
  }
  equityRowIdsById_.insert_or_assign(equity->id(), *rowId);
  equitiesById()->insert(equity);
  equity->isAuthoritative = true;
}

void CacheQuoteProvider::storeFetchResult(const QuoteFetchResult& result, const QuoteQuery& query) {
  const DateRange& range = result.durableDateRange;
  if (range.isEmpty()) {
    return;
  }
  const Place place = placeOf(result, query);
  if (!isWholeSeconds(range.lower()) || !isWholeSeconds(range.upper())) {
    throw dataInconsistency("Date range does not represent an integral number of seconds.");
  }
  if (result.quotes && !std::ranges::all_of(*result.quotes, [](const Quote& quote) {
        return isWholeSeconds(quote.fromDate) && isWholeSeconds(quote.toDate);
      })) {
    throw dataInconsistency("Quote dates do not represent an integral number of seconds.");
  }
  if (result.events && !std::ranges::all_of(*result.events, [&](const EquityEvent& event) {
        return event.priceAdjustment == place.prices;
      })) {
    throw dataInconsistency(
        "Events have heterogeneous price adjustments and/or do not match the query.");
  }
  storeEquity(query.equity);
  const auto rowId = rowIdOf(*query.equity);
  if (!rowId) {
    throw dataInconsistency("Equity is missing row ID after caching.");
  }
  inTransaction(database(), [&] {
    // Bars that come along with events have no length to be kept under, and must not count as an
    // answer about events.
    if (result.quotes && place.intervalCode != eventsIntervalCode) {
      replaceQuotes(database(), *rowId, place, range, *result.quotes);
      recordCoverage(*rowId, place.intervalCode, priceCode(place.prices), range);
    }
    if (result.events) {
      replaceEvents(database(), *rowId, place.prices, range, *result.events);
      recordCoverage(*rowId, eventsIntervalCode, priceCode(place.prices), range);
    }
  });
  if (!database().isInTransaction()) {
    checkpoint_.runWhereDue();
  }
}

void CacheQuoteProvider::recordCoverage(std::int64_t equityRowId, std::int64_t intervalCode,
                                        std::int64_t priceCode, const DateRange& range) {
  if (range.isEmpty()) {
    return;
  }
  inTransaction(database(), [&] {
    Date from = range.lower();
    Date to = range.upper();
    std::vector<SQLiteValue> absorbedIds;
    {
      SQLiteStatement row = database().query(
          "SELECT * FROM coverage\n"
          "WHERE equityId = ?\n"
          "AND intervalType = ?\n"
          "AND fromDate <= ?    -- starts at or before the query end\n"
          "AND toDate >= ?      -- ends at or after the query start\n"
          "AND priceType = ?\n"
          "ORDER BY fromDate ASC, toDate ASC;",
          {equityRowId, intervalCode, storedDate(to), storedDate(from), priceCode});
      while (row.step()) {
        const auto rowFrom = dateIn(row, row.column("fromDate"));
        const auto rowTo = dateIn(row, row.column("toDate"));
        if (!rowFrom || !rowTo) {
          throw dataInconsistency("Missing dates in the coverage table.");
        }
        from = std::min(from, *rowFrom);
        to = std::max(to, *rowTo);
        absorbedIds.emplace_back(row.integer("id").value());
      }
    }
    for (std::size_t start = 0; start < absorbedIds.size(); start += idsAtOnce) {
      const std::size_t count = std::min(idsAtOnce, absorbedIds.size() - start);
      std::string placeholders = "(?";
      for (std::size_t i = 1; i < count; ++i) {
        placeholders += ", ?";
      }
      const auto first = absorbedIds.begin() + static_cast<std::ptrdiff_t>(start);
      database().execute("DELETE FROM coverage\nWHERE id IN " + placeholders + ");",
                         {first, first + static_cast<std::ptrdiff_t>(count)});
    }
    database().execute(
        "INSERT INTO coverage\n"
        "(equityId, intervalType, priceType, fromDate, toDate)\n"
        "VALUES (?, ?, ?, ?, ?)",
        {equityRowId, intervalCode, priceCode, storedDate(from), storedDate(to)});
  });
}

void CacheQuoteProvider::storeSnapshotQuote(const EquityPointer& equity) {
  if (!equity->recentDate || !equity->recentPrice) {
    throw dataInconsistency("Equity is missing date and/or price for recent snapshot quote.");
  }
  const auto start = equity->calendar.nextDate(*equity->recentDate, {{CalendarUnit::second, 0}},
                                               SearchDirection::backward);
  const auto end =
      start ? equity->calendar.dateByAdding(CalendarUnit::minute, 1, *start) : std::nullopt;
  if (!end) {
    throw dataInconsistency("Failed to construct date for a snapshot quote.");
  }
  const DateRange minute(*start, *end);
  Quote bar;
  bar.fromDate = minute.lower();
  bar.toDate = minute.upper();
  bar.close = equity->recentPrice;
  bar.isPartial = true;
  storeFetchResult(
      {.quotes = std::vector{bar},
       .prices = PriceAdjustment::marketNominalSnapshot,
       .events = std::nullopt,
       .durableDateRange = minute},
      {equity, minute,
       QuoteQuery::Quotes{QuoteInterval::oneMinute, PriceAdjustment::marketNominalSnapshot}});
}

void CacheQuoteProvider::clearCachedData(const EquityPointer& equity) {
  const auto rowId = rowIdOf(*equity);
  if (!rowId) {
    return;
  }
  inTransaction(database(), [&] {
    for (const std::string table : {"coverage", "quotes"}) {
      database().execute("DELETE FROM " + table + "\nWHERE equityId = ?;", {*rowId});
    }
  });
}

void CacheQuoteProvider::atOnce(const std::function<void()>& work) {
  inTransaction(database(), work);
  checkpoint_.runWhereDue();
}

void CacheQuoteProvider::empty() {
  inTransaction(database(), [&] {
    database().executeScript(
        "DELETE FROM equities;\nDELETE FROM quotes;\nDELETE FROM events;\nDELETE FROM coverage;");
  });
  equityRowIdsById_.clear();
}

}  // namespace corvane
