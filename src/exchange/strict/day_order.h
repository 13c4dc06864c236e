// Days of statements, read only where the order of their parts is certain.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/money/year_month_day.h"

namespace corvane {

/// What comes first in a written day. A cell with the month in words has an order too.
enum class DayOrder { ymd, dmy, mdy };

/// "ymd", "dmy", "mdy"
[[nodiscard]] std::string_view rawValue(DayOrder order);
[[nodiscard]] std::optional<DayOrder> dayOrderWithRawValue(std::string_view rawValue);

/// "3 April 2024", for messages.
[[nodiscard]] std::string spelledDay(const YearMonthDay& day);

/// A cell that may be a day: three groups of digits, one of which may be the name of a month, or
/// eight digits, with or without a time of day behind. Whether it is a day depends on the order.
class DayCell {
 public:
  /// None where `text` is of no such form.
  [[nodiscard]] static std::optional<DayCell> read(std::string_view text);

  /// The day, where the calendar has it. Four digits in front are a year, as they are behind; two
  /// digits mean 1950 to 2049. A year of two digits does not stand before the name of a month.
  [[nodiscard]] std::optional<YearMonthDay> day(DayOrder order) const;

  /// The time behind the day, in nanoseconds since midnight. It is of the place that the statement
  /// was written at: nothing is converted.
  [[nodiscard]] const std::optional<std::int64_t>& time() const { return time_; }

 private:
  struct Part {
    int value = 0;
    int digits = 0;  ///< 0 for the name of a month
  };

  [[nodiscard]] bool readDay(std::string_view text);
  [[nodiscard]] bool readTime(std::string_view text);

  std::array<Part, 3> parts_;
  std::string eightDigits_;
  std::optional<std::int64_t> time_;
};

/// Works out the order from all days of a file, and says why.
class DayOrderRecognition {
 public:
  /// Takes the cells of a row, which may be empty: of the day of the trade and that of settlement.
  /// Rows come in the order of the file.
  void add(std::uint32_t line, std::string_view tradeColumn, std::string_view tradeCell,
           std::string_view settlementColumn = {}, std::string_view settlementCell = {});
  /// Whether the row that was taken last has these cells, so that to take this one changes nothing:
  /// many rows of one day follow one another.
  [[nodiscard]] bool isLike(std::string_view tradeCell, std::string_view settlementCell) const {
    return !rows_.empty() && tradeCell == lastTrade_ && settlementCell == lastSettlement_;
  }

  struct Verdict {
    DayOrder order = DayOrder::ymd;
    /// A sentence for the user: "Days are day, month, year: 31/12/2020 on line 4 is no other."
    std::string why;
  };

  /// `today` is the last day that a trade can have. With `told` nothing is worked out, but all
  /// cells are read. Throws StatementError where a cell is no day, where no order fits all cells,
  /// and where several do and nothing tells them apart.
  [[nodiscard]] Verdict verdict(YearMonthDay today, std::optional<DayOrder> told) const;

 private:
  struct Cell {
    std::uint32_t line = 0;
    std::string_view column;
    std::string_view text;
  };
  /// A cell that somebody may want to be told of.
  struct KeptCell {
    explicit KeptCell(const Cell& cell) : line(cell.line), column(cell.column), text(cell.text) {}
    std::uint32_t line;
    std::string column;
    std::string text;
  };
  /// The days of a cell in each order, counted from 1970.
  struct Days {
    static constexpr std::int32_t none = INT32_MIN;
    std::array<std::int32_t, 3> counts = {none, none, none};
    [[nodiscard]] std::optional<std::int32_t> in(DayOrder order) const;
    friend bool operator==(const Days&, const Days&) = default;
  };
  struct Row {
    Days trade;
    Days settlement;
    /// The day that tells where the row belongs in time.
    [[nodiscard]] std::optional<std::int32_t> dayIn(DayOrder order) const;
    friend bool operator==(const Row&, const Row&) = default;
  };

  [[nodiscard]] Days daysIn(std::uint32_t line, std::string_view column, std::string_view text);
  void strike(const Cell& cell, const Days& days);
  [[nodiscard]] std::string whyStruck(DayOrder order) const;
  [[nodiscard]] bool hasDaysToCome(DayOrder order, YearMonthDay today) const;
  [[nodiscard]] bool settlesOddly(DayOrder order) const;
  [[nodiscard]] bool isInOrder(DayOrder order) const;
  [[nodiscard]] std::size_t dayCount(DayOrder order) const;
  [[nodiscard]] bool isAlwaysDay(DayOrder order) const;
  [[noreturn]] void failOfTwoOrders() const;
  [[noreturn]] void failUndecided(const std::vector<DayOrder>& orders) const;

  std::vector<Row> rows_;  ///< of rows that follow one another and have the same days, the first
  std::optional<KeptCell> noDay_;  ///< the first cell that is none in any order
  /// The cells that have struck out each order, the first ones, and which orders those allow.
  std::array<std::optional<KeptCell>, 3> strikers_;
  std::array<std::vector<DayOrder>, 3> strikerOrders_;
  /// The first cell that is another day in one order than in another, for each pair of orders.
  std::array<std::optional<KeptCell>, 3> differing_;
  std::string lastTrade_;
  std::string lastSettlement_;
};

}  // namespace corvane
