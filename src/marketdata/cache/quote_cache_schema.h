// The tables of the cache file, and what becomes of older files.
#pragma once

#include "platform/data/sqlite.h"

namespace corvane {

/// What stands in `PRAGMA user_version` of a file with the present tables.
inline constexpr int quoteCacheSchemaVersion = 4;

/// Gives a new file the tables, and leaves one of the present or a newer version alone. An older
/// one loses its data, since all of it can be fetched again. All or nothing; throws SQLiteError.
void migrateQuoteCacheSchema(SQLiteDatabase& database);

}  // namespace corvane
