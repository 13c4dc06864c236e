// The one rule by which the databases are written.
#pragma once

#include "platform/data/sqlite.h"

namespace corvane {

/// Runs `body` in a transaction of its own, or in the one that is open already, so that nested use
/// costs nothing and the outermost call commits. What `body` or the commit throws goes on to the
/// caller once the transaction has been rolled back; should the rollback itself fail, its error
/// does instead.
template <typename Body>
void inTransaction(SQLiteDatabase& database, Body&& body) {
  if (database.isInTransaction()) {
    body();
    return;
  }
  database.begin(SQLiteDatabase::TransactionKind::exclusive);
  try {
    body();
    database.commit();
  } catch (...) {
    // After a full disk or a failed read the engine has rolled back by itself.
    if (database.isInTransaction()) {
      database.rollback();
    }
    throw;
  }
}

}  // namespace corvane
