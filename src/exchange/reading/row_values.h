// The cells of a statement's row as numbers, days and currencies.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "core/money/currency.h"
#include "core/money/year_month_day.h"
#include "exchange/reading/row_texts.h"
#include "exchange/reading/statement_options.h"
#include "exchange/reading/statement_rows.h"
#include "exchange/strict/day_order.h"
#include "exchange/strict/number_form.h"

namespace corvane {

/// How the days and numbers of a file are written.
struct StatementNotation {
  DayOrder days = DayOrder::ymd;
  /// None where each cell has its own.
  std::optional<DecimalMark> decimal;
};

/// Ends the reading of a row that is not to be recorded as it is.
struct RowStopped {
  RowStop stop;
};

/// Reads the cells of one row after the other. Throws StatementError with line and column for a
/// cell that does not hold what it should.
class RowValues {
 public:
  /// All of them outlive it.
  RowValues(const RowTexts& row, const StatementProfile& profile, const StatementOptions& options,
            StatementNotation notation)
      : row_(row), profile_(profile), options_(options), notation_(notation) {}

  /// The number of a field; none where its cell is empty.
  [[nodiscard]] std::optional<Decimal> number(RowField field) const;

  /// The day of a field, which must have one. `time` becomes that of the day, or none.
  [[nodiscard]] YearMonthDay day(RowField field, std::optional<std::int64_t>& time);

  struct RowCurrency {
    Currency currency;
    Decimal divide = 1;  ///< amounts are in a hundredth of it, as in pence
  };
  /// The currency of the row. Throws RowStopped where only the user knows it.
  [[nodiscard]] RowCurrency currency() const;

  [[noreturn]] void fail(RowField field, std::string reason, std::string remedy = {}) const;

 private:
  [[nodiscard]] Decimal numberIn(RowField field, std::string_view text) const;
  [[nodiscard]] DecimalMark markOf(const NumberCell& cell, RowField field,
                                   std::string_view text) const;

  const RowTexts& row_;
  const StatementProfile& profile_;
  const StatementOptions& options_;
  StatementNotation notation_;
  /// The cell that was read last: many rows of one day follow one another.
  std::string lastDayText_;
  std::optional<DayCell> lastDay_;
};

}  // namespace corvane
