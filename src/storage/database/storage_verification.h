// What can be wrong with a portfolio database although it can be read.
#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <span>
#include <string>

#include "ledger/portfolio/portfolio_snapshot.h"
#include "ledger/portfolio/portfolio_transaction.h"
#include "platform/data/sqlite.h"
#include "platform/time/calendar.h"

namespace corvane {

/// What the engine finds wrong with the structure of the database; none where it is sound.
[[nodiscard]] std::optional<std::string> structuralDamage(SQLiteDatabase& database);

/// The same with a look at whether every index has all rows, which takes several times as long.
[[nodiscard]] std::optional<std::string> anyDamage(SQLiteDatabase& database);

/// The same of the file at `path`, which nobody changes meanwhile. Any thread.
[[nodiscard]] std::optional<std::string> structuralDamage(const std::filesystem::path& path);

/// Throws PortfolioManagerError::LedgerInconsistency where `totals`, by year, are not those of
/// `rows`, whose balances have been verified.
///
/// Where a year ends depends on the time zone, and totals of different years may have been written
/// in different ones: what would be right in any zone of the world counts as right.
void requireTotalsOf(std::span<const TransactionPointer> rows,
                     const std::map<int, PortfolioSnapshot>& totals, const Calendar& calendar);

}  // namespace corvane
