#include "marketdata/cache/quote_cache_schema.h"

#include <cstdint>
#include <string>

#include "platform/data/sqlite_transaction.h"

namespace corvane {
namespace {

constexpr const char* creationScript = R"sql(
CREATE TABLE equities (
  id INTEGER PRIMARY KEY,
  identifier CHAR UNIQUE NOT NULL,
  symbol CHAR NOT NULL,
  exchange CHAR,
  name CHAR,
  currencyCode CHAR NOT NULL,
  timeZoneName CHAR,
  recentPrice NUMERIC,
  recentDate DATE,
  recentPeriodOpenDate DATE,
  recentPeriodCloseDate DATE,
  previousClosePrice NUMERIC
);
CREATE UNIQUE INDEX equityIdIndex ON equities (id);
CREATE UNIQUE INDEX equityIdentifierIndex ON equities (identifier);

CREATE TABLE quotes (
  id INTEGER PRIMARY KEY,
  equityId INTEGER NOT NULL REFERENCES equities ON DELETE CASCADE,
  fromDate DATE NOT NULL,
  toDate DATE NOT NULL,
  intervalType INTEGER NOT NULL, -- a code corresponding to QuoteInterval
  priceType INTEGER NOT NULL, -- a code corresponding to QuoteQuery.PriceAdjustment
  open NUMERIC,
  close NUMERIC,
  low NUMERIC,
  high NUMERIC,
  volume INTEGER
);
CREATE UNIQUE INDEX quotesIndex ON quotes (equityId, intervalType, fromDate, toDate, priceType);

-- coverage describes for what ranges we have authoritative data in the cache.
-- affords distinguishing between an empty data set and a range not yet queried from the source.
CREATE TABLE coverage (
  id INTEGER PRIMARY KEY,
  equityId INTEGER NOT NULL REFERENCES equities ON DELETE CASCADE,
  fromDate DATE NOT NULL,
  toDate DATE NOT NULL,
  intervalType INTEGER NOT NULL, -- a code corresponding to QuoteInterval
  priceType INTEGER NOT NULL -- a code corresponding to QuoteQuery.PriceAdjustment
);
CREATE UNIQUE INDEX coverageIndex ON coverage (equityId, intervalType, fromDate, toDate, priceType);

CREATE TABLE events (
  id INTEGER PRIMARY KEY,
  equityId INTEGER NOT NULL REFERENCES equities ON DELETE CASCADE,
  date DATE NOT NULL,
  eventType INTEGER NOT NULL, -- per EventType enum
  priceType INTEGER NOT NULL, -- a code corresponding to QuoteQuery.PriceAdjustment
  value1 INTEGER NOT NULL,
  value2 INTEGER NOT NULL
);
CREATE UNIQUE INDEX eventsIndex ON events (equityId, date, eventType, priceType);
)sql";

constexpr const char* removalScript =
    "DROP TABLE equities;\n"
    "DROP TABLE quotes;\n"
    "DROP TABLE quoteCoverage; -- old renamed in V4.";

/// The version of the file; one with its sign bit set reads as a very new one.
std::uint32_t versionOf(SQLiteDatabase& database) {
  SQLiteStatement statement = database.query("PRAGMA user_version");
  statement.step();
  return static_cast<std::uint32_t>(statement.integer(0).value());
}

}  // namespace

void migrateQuoteCacheSchema(SQLiteDatabase& database) {
  if (versionOf(database) >= quoteCacheSchemaVersion) {
    return;
  }
  inTransaction(database, [&] {
    // Another program may have made the tables in the meantime.
    const std::uint32_t version = versionOf(database);
    if (version >= quoteCacheSchemaVersion) {
      return;
    }
    if (version > 0) {
      database.executeScript(removalScript);
    }
    database.executeScript(creationScript);
    database.executeScript("PRAGMA user_version = " + std::to_string(quoteCacheSchemaVersion));
  });
}

}  // namespace corvane
