#include "storage/database/storage_verification.h"

#include <utility>

#include "ledger/accounting/calendar_years.h"
#include "ledger/manager/portfolio_manager.h"

namespace corvane {
namespace {

/// The clocks of no two zones are further apart.
constexpr double widestZoneDistance = 26.0 * 3600.0;

/// Goes through the rows of a ledger and knows the state after each.
class LedgerProgress {
 public:
  explicit LedgerProgress(std::span<const TransactionPointer> rows) : rest_(rows) {}

  void advanceTo(Date date) {
    std::size_t count = 0;
    while (count < rest_.size() && rest_[count]->settlementDate() < date) {
      ++count;
    }
    state_ = PortfolioManager::replay(rest_.first(count), std::move(state_));
    rest_ = rest_.subspan(count);
  }

  /// Whether `total` is the state now, or after one of the rows before `date`.
  [[nodiscard]] bool comesTo(const PortfolioSnapshot& total, std::optional<Date> date) const {
    LedgerProgress ahead = *this;
    while (!(ahead.state_ == total)) {
      if (!date || ahead.rest_.empty() || !(ahead.rest_.front()->settlementDate() < *date)) {
        return false;
      }
      ahead.state_ = PortfolioManager::replay(ahead.rest_.first(1), std::move(ahead.state_));
      ahead.rest_ = ahead.rest_.subspan(1);
    }
    return true;
  }

  void advanceToEnd() {
    state_ = PortfolioManager::replay(rest_, std::move(state_));
    rest_ = {};
  }

 private:
  std::span<const TransactionPointer> rest_;
  PortfolioSnapshot state_;
};

[[noreturn]] void failTotals(int year) {
  throw PortfolioManagerError(PortfolioManagerError::LedgerInconsistency{
      "The totals of " + std::to_string(year) + " are not those of the transactions."});
}

std::optional<std::string> damageFoundBy(std::string_view sql, SQLiteDatabase& database) {
  try {
    SQLiteStatement check = database.query(sql);
    if (check.step() && check.text(0) != "ok") {
      return std::string(check.text(0).value_or("unknown damage"));
    }
    return std::nullopt;
  } catch (const SQLiteError& error) {
    return error.message;
  }
}

}  // namespace

std::optional<std::string> structuralDamage(SQLiteDatabase& database) {
  return damageFoundBy("PRAGMA quick_check(1);", database);
}

std::optional<std::string> anyDamage(SQLiteDatabase& database) {
  return damageFoundBy("PRAGMA integrity_check(1);", database);
}

std::optional<std::string> structuralDamage(const std::filesystem::path& path) {
  try {
    SQLiteDatabase database(path, SQLiteDatabase::Mode::immutable);
    return structuralDamage(database);
  } catch (const SQLiteError& error) {
    return error.message;
  }
}

void requireTotalsOf(std::span<const TransactionPointer> rows,
                     const std::map<int, PortfolioSnapshot>& totals, const Calendar& calendar) {
  const auto startOf = [&](int year) { return calendar.date({{CalendarUnit::year, year}}); };
  LedgerProgress progress(rows);
  for (const auto& [year, total] : totals) {
    const auto end = startOf(year + 1);
    if (end) {
      progress.advanceTo(*end - widestZoneDistance);
    } else {
      progress.advanceToEnd();
    }
    const auto latest = end ? std::optional(*end + widestZoneDistance) : std::nullopt;
    if (!progress.comesTo(total, latest)) {
      failTotals(year);
    }
  }
  CalendarYears years(calendar);
  for (const TransactionPointer& row : rows) {
    const Date date = row->settlementDate();
    const int year = years.yearOf(date);
    const auto isSurelyOf = [&] {
      const auto start = startOf(year);
      const auto end = startOf(year + 1);
      return start && end && *start + widestZoneDistance < date && date < *end - widestZoneDistance;
    };
    if (!totals.contains(year) && isSurelyOf()) {
      failTotals(year);
    }
  }
}

}  // namespace corvane
