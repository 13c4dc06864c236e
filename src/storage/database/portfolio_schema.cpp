#include "storage/database/portfolio_schema.h"

#include <cstdint>
#include <string>

#include "platform/data/sqlite_transaction.h"

namespace corvane {
namespace {

// Money is in minor units of its currency, shares are in units of 1/sharesFactor share, dates are
// seconds since 1970, currencies have their ISO 4217 numbers.
constexpr const char* schema = R"sql(
CREATE TABLE portfolios (
  id INTEGER PRIMARY KEY,
  name CHAR,
  dateCreated DATE NOT NULL,
  primaryCurrency INTEGER NOT NULL,
  sharesFactor INTEGER NOT NULL,
  settings CHAR
);
CREATE UNIQUE INDEX portfolioIdIndex ON portfolios (id);

CREATE TABLE equities (
  id INTEGER PRIMARY KEY,
  portfolioId INTEGER NOT NULL REFERENCES portfolios ON DELETE CASCADE,
  equityIdentifier CHAR NOT NULL
);
CREATE INDEX equityPortfolioIndex ON equities (portfolioId);
CREATE UNIQUE INDEX equityPortfolioEquityIndex ON equities (portfolioId, equityIdentifier);

CREATE TABLE equitiesByYear (
  id INTEGER PRIMARY KEY,
  portfolioId INTEGER NOT NULL REFERENCES portfolios ON DELETE CASCADE,
  year INTEGER NOT NULL,
  equityId INTEGER REFERENCES equities NOT NULL,
  shareUnitsHeld INTEGER NOT NULL,
  costBase INTEGER NOT NULL,
  grossCapitalGain INTEGER NOT NULL
);
CREATE INDEX equityByYearPortfolioIndex ON equitiesByYear (portfolioId);
CREATE UNIQUE INDEX equityByYearPortfolioYearSecurityIndex
  ON equitiesByYear (portfolioId, year, equityId);

CREATE TABLE cashByYear (
  id INTEGER PRIMARY KEY,
  portfolioId INTEGER NOT NULL REFERENCES portfolios ON DELETE CASCADE,
  year INTEGER NOT NULL,
  currency INTEGER NOT NULL,
  cashOnHand INTEGER NOT NULL,
  netDeposited INTEGER NOT NULL
);
CREATE INDEX cashByYearPortfolioIndex ON cashByYear (portfolioId);
CREATE UNIQUE INDEX cashByYearPortfolioYearCurrencyIndex
  ON cashByYear (portfolioId, year, currency);

CREATE TABLE transactions (
  id INTEGER PRIMARY KEY,
  portfolioId INTEGER NOT NULL REFERENCES portfolios ON DELETE CASCADE,
  type INTEGER NOT NULL,
  tradeDate DATE NOT NULL,
  settlementDate DATE NOT NULL,
  sequence INTEGER NOT NULL DEFAULT 0,
  currency INTEGER NOT NULL,
  cashAdded INTEGER NOT NULL,
  cashNet INTEGER NOT NULL,
  equityId INTEGER REFERENCES equities,
  shareUnitsAdded INTEGER,
  shareUnitsNet INTEGER,
  equivalentCashAdded INTEGER,
  costBasePrior INTEGER,
  note CHAR
);
CREATE INDEX transactionPortfolioIndex ON transactions (portfolioId);
CREATE INDEX transactionSettlementDateIndex ON transactions (settlementDate);
)sql";

constexpr const char* fromVersion1 = R"sql(
ALTER TABLE portfolios ADD COLUMN settings CHAR;
ALTER TABLE transactions ADD COLUMN sequence INTEGER NOT NULL DEFAULT 0;
)sql";

/// The version of the file; one with its sign bit set reads as a very new one.
std::uint32_t versionOf(SQLiteDatabase& database) {
  SQLiteStatement statement = database.query("PRAGMA user_version");
  statement.step();
  return static_cast<std::uint32_t>(statement.integer(0).value());
}

}  // namespace

void migratePortfolioSchema(SQLiteDatabase& database) {
  const std::uint32_t version = versionOf(database);
  if (version >= portfolioSchemaVersion) {
    return;
  }
  inTransaction(database, [&] {
    database.executeScript(version == 0 ? schema : fromVersion1);
    database.executeScript("PRAGMA user_version = " + std::to_string(portfolioSchemaVersion));
  });
}

}  // namespace corvane
