// The tables of the portfolio database, and how older files get them.
#pragma once

#include "platform/data/sqlite.h"

namespace corvane {

/// What stands in `PRAGMA user_version` of a file with the present tables.
inline constexpr int portfolioSchemaVersion = 2;

/// Gives a new file the tables, brings an older one to the present version, and leaves one of the
/// present or a newer version alone. All or nothing; throws SQLiteError.
void migratePortfolioSchema(SQLiteDatabase& database);

}  // namespace corvane
