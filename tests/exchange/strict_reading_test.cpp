// Days and numbers, read strictly: what a cell may mean, what a column tells, what is asked.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "exchange/strict/day_order.h"
#include "exchange/strict/number_form.h"
#include "exchange/strict/statement_error.h"
#include "platform/time/civil_day.h"

namespace corvane {
namespace {

constexpr YearMonthDay today{2026, 1, 31};

std::string textOf(const std::optional<YearMonthDay>& day) {
  return day ? std::to_string(day->year) + "-" + std::to_string(day->month) + "-" +
                   std::to_string(day->day)
             : "none";
}

std::string dayIn(std::string_view text, DayOrder order) {
  const auto cell = DayCell::read(text);
  return cell ? textOf(cell->day(order)) : "no form of a day";
}

/// The order of the days in `cells`, or the error, whose lines count from 2.
std::string orderOf(const std::vector<std::string>& cells,
                    std::optional<DayOrder> told = std::nullopt) {
  DayOrderRecognition recognition;
  for (std::size_t i = 0; i < cells.size(); ++i) {
    recognition.add(static_cast<std::uint32_t>(i + 2), "Date", cells[i]);
  }
  try {
    return std::string(rawValue(recognition.verdict(today, told).order));
  } catch (const StatementError& error) {
    return error.description().value();
  }
}

TEST(DayCell, ReadsWhatStatementsWrite) {
  using enum DayOrder;
  const std::vector<std::tuple<std::string, DayOrder, std::string>> cases = {
      {"2010-03-01", ymd, "2010-3-1"},
      {"2010-03-01", mdy, "none"},
      {"12/31/24", mdy, "2024-12-31"},
      {"31.12.49", dmy, "2049-12-31"},
      {"31.12.50", dmy, "1950-12-31"},
      {"50/12/31", ymd, "1950-12-31"},
      {"15-Jan-21", dmy, "2021-1-15"},
      {"15-Jan-21", ymd, "none"},
      {"2021-Jan-15", ymd, "2021-1-15"},
      {"January 10, 2025", mdy, "2025-1-10"},
      {"4 févr. 2021", dmy, "2021-2-4"},
      {"14. März 2024", dmy, "2024-3-14"},
      {"2 de enero de 2024", dmy, "2024-1-2"},
      {"20230522", ymd, "2023-5-22"},
      {"20230522", dmy, "none"},
      {"22052023", dmy, "2023-5-22"},
      {"29/02/2023", dmy, "none"},
      {"2024-01-16T10:01:02.811Z", ymd, "2024-1-16"},
      {"2019-12-02T23:59:59.459586-05:00", ymd, "2019-12-2"},
      {"23/12/24 15:18:12", dmy, "2024-12-23"},
      {"2024-05-22, 10:11:12", ymd, "2024-5-22"},
      {"20240522;101112", ymd, "2024-5-22"},
      {"Aug 5, 2024 12:05 AM EDT", mdy, "2024-8-5"},
      {" 1/2/2024 ", mdy, "2024-1-2"},
      {"1/2/2024 25:00", mdy, "no form of a day"},
      {"1/2/2024 noon", mdy, "no form of a day"},
      {"1/2", mdy, "no form of a day"},
      {"1/2/2024/5", mdy, "no form of a day"},
      {"12.50 DR", mdy, "no form of a day"},
      {"", ymd, "no form of a day"},
  };
  for (const auto& [text, order, day] : cases) {
    EXPECT_EQ(dayIn(text, order), day) << text << " as " << rawValue(order);
  }
  EXPECT_LT(DayCell::read("1/2/2024 12:05 AM")->time(), DayCell::read("1/2/2024 1:04")->time());
  EXPECT_LT(DayCell::read("1/2/2024 12:05:06.1")->time(),
            DayCell::read("1/2/2024 12:05:06.100001")->time());
}

TEST(DayOrderRecognitionOfFiles, TellsTheOrderOrAsks) {
  EXPECT_EQ(orderOf({"03/04/2024", "13/04/2024"}), "dmy");
  EXPECT_EQ(orderOf({"03/04/2024", "04/13/2024"}), "mdy");
  EXPECT_EQ(orderOf({"2010-03-01", "2010-12-11"}), "ymd");
  EXPECT_EQ(orderOf({"15-Jan-21"}), "dmy");
  EXPECT_EQ(orderOf({"12/31/24", "01/02/25"}), "mdy");
  EXPECT_EQ(orderOf({"31/06/2024"}), "Line 2, column “Date”: “31/06/2024” is not a day.");
  EXPECT_EQ(orderOf({"13/04/2024", "01/02/2024", "04/13/2024"}),
            "Line 4, column “Date”: “04/13/2024” is month, day, year, but line 2 (“13/04/2024”) is "
            "day, month, year.");
  EXPECT_EQ(orderOf({"03/04/2024", "04/04/2024"}),
            "Line 2, column “Date”: “03/04/2024” may be 3 April or 4 March 2024, and no other row "
            "tells. Say --days dmy or --days mdy.");
  EXPECT_EQ(orderOf({"04/04/2024", "05/05/2024"}), "dmy") << "the same either way";
  EXPECT_EQ(orderOf({"03/04/2024"}, DayOrder::mdy), "mdy");
  EXPECT_EQ(orderOf({"13/04/2024"}, DayOrder::mdy),
            "Line 2, column “Date”: “13/04/2024” is not a day written as month, day, year.");
  // 2 December 2026 is still to come.
  EXPECT_EQ(orderOf({"12/01/2026", "02/12/2025"}), "dmy");
  // In order as days of January, not as first days of months.
  EXPECT_EQ(
      orderOf({"01/02/2024", "01/03/2024", "01/05/2024", "01/08/2024", "01/11/2024", "02/01/2024"}),
      "mdy");
}

TEST(DayOrderRecognitionOfFiles, LooksAtSettlement) {
  DayOrderRecognition recognition;
  recognition.add(2, "Trade", "03/04/2024", "Settlement", "05/04/2024");
  EXPECT_EQ(recognition.verdict(today, {}).order, DayOrder::dmy) << "not two months behind";
  DayOrderRecognition withoutTrade;
  withoutTrade.add(2, "Trade", "", "Settlement", "25/04/2024");
  EXPECT_EQ(withoutTrade.verdict(today, {}).order, DayOrder::dmy);
}

/// A day in one of the orders, with two or four digits for the year.
std::string written(std::int64_t count, DayOrder order, bool isShort) {
  const CivilDay day = civilDay(count);
  const auto two = [](std::int64_t number) {
    return (number < 10 ? "0" : "") + std::to_string(number);
  };
  const std::string year = isShort ? two(day.year % 100) : std::to_string(day.year);
  switch (order) {
    case DayOrder::ymd:
      return year + "/" + two(day.month) + "/" + two(day.day);
    case DayOrder::dmy:
      return two(day.day) + "/" + two(day.month) + "/" + year;
    case DayOrder::mdy:
      break;
  }
  return two(day.month) + "/" + two(day.day) + "/" + year;
}

TEST(DayOrderRecognitionOfFiles, IsNeverWrongAboutRandomFiles) {
  std::mt19937 random(20260131);
  const auto below = [&](std::int64_t bound) {
    return std::uniform_int_distribution<std::int64_t>(0, bound - 1)(random);
  };
  int decided = 0;
  for (int file = 0; file < 3000; ++file) {
    const auto order = static_cast<DayOrder>(below(3));
    const bool isShort = below(2) == 0;
    std::vector<std::int64_t> days;
    const auto rows = 1 + below(20);
    std::int64_t day = dayCount(2000 + below(25), 1, 1) + below(300);
    for (int row = 0; row < rows; ++row) {
      days.push_back(day);
      day = std::min(day + below(40), dayCount(2026, 1, 31));
    }
    if (below(2) == 0) {
      std::ranges::reverse(days);
    }
    std::vector<std::string> cells;
    std::ranges::transform(days, std::back_inserter(cells),
                           [&](std::int64_t count) { return written(count, order, isShort); });
    const std::string found = orderOf(cells);
    if (const auto told = dayOrderWithRawValue(found)) {
      ++decided;
      for (std::size_t i = 0; i < cells.size(); ++i) {
        const auto read = DayCell::read(cells[i])->day(*told);
        ASSERT_TRUE(read) << cells[i];
        ASSERT_EQ(dayCount(read->year, read->month, read->day), days[i])
            << cells[i] << " of " << ::testing::PrintToString(cells) << " as " << found;
      }
    }
  }
  EXPECT_GT(decided, 2000);
}

std::string numberIn(std::string_view text, DecimalMark mark = DecimalMark::point) {
  const auto cell = NumberCell::read(text);
  const auto value = cell ? cell->value(mark) : std::nullopt;
  return !cell ? "no number" : value ? value->description() : "no groups";
}

TEST(NumberCell, IsTheWholeCellOrNothing) {
  const std::vector<std::pair<std::string, std::string>> numbers = {
      {"12", "12"},
      {"-12.50", "-12.5"},
      {"12.50-", "-12.5"},
      {"(12.50)", "-12.5"},
      {"−5", "-5"},
      {"+5", "5"},
      {"$1,234.50", "1234.5"},
      {"-$30.93", "-30.93"},
      {"$-30.93", "-30.93"},
      {"($5,000.00)", "-5000"},
      {"$5,000.00-", "-5000"},
      {"US$12", "12"},
      {"12.50 CAD", "12.5"},
      {"CHF -5", "-5"},
      {"1'234.50", "1234.5"},
      {"1’234’567.5", "1234567.5"},
      {"1 234.5", "1234.5"},
      {"2.5E-4", "0.00025"},
      {"-2.637591265E-4", "-0.0002637591265"},
      {".5", "0.5"},
      {"0.5", "0.5"},
      {" 7 ", "7"},
  };
  for (const auto& [text, value] : numbers) {
    EXPECT_EQ(numberIn(text), value) << text;
  }
  for (const std::string text :
       {"",      " ",    "12 abc", "12.50 DR", "abc",   "-",   "n/a",     "1-2",
        "--5",   "(-5)", "5.",     "1,2.3.4",  "12/31", "$",   "1 234 5", "$5 USD",
        "1e999", "e5",   "1,,234", "ten",      "5%",    "１２"}) {
    EXPECT_EQ(numberIn(text), "no number") << text;
  }
  EXPECT_EQ(numberIn("1,23"), "no groups") << "a comma that does not group in threes";
  EXPECT_EQ(numberIn("1.234,5", DecimalMark::comma), "1234.5");
  EXPECT_EQ(NumberCell::read("US$12")->currencyCode(), "USD");
  EXPECT_EQ(NumberCell::read("$12")->currencyCode(), "");
}

/// The mark that `cells` tell of, or the error, whose lines count from 2.
std::string markOf(const std::vector<std::string>& cells) {
  DecimalMarkRecognition recognition;
  for (std::size_t i = 0; i < cells.size(); ++i) {
    recognition.add(static_cast<std::uint32_t>(i + 2), "Amount", cells[i]);
  }
  try {
    return recognition.mark() == DecimalMark::point ? "." : ",";
  } catch (const StatementError& error) {
    return error.description().value();
  }
}

TEST(DecimalMarkRecognition, LooksAtTheWholeColumn) {
  EXPECT_EQ(markOf({"1,234", "5.5"}), ".");
  EXPECT_EQ(markOf({"1.234", "5,5"}), ",");
  EXPECT_EQ(markOf({"1,234,567"}), ".");
  EXPECT_EQ(markOf({"1.234,56"}), ",");
  EXPECT_EQ(markOf({"0,123"}), ",");
  EXPECT_EQ(markOf({"1234,567"}), ",") << "ungrouped in front, so nothing groups";
  EXPECT_EQ(markOf({"1 234,567"}), ",") << "a blank groups, so the comma does not";
  EXPECT_EQ(markOf({"12", "n/a", ""}), ".");
  EXPECT_EQ(markOf({"1.000,00", "7,36"}), ",");
  EXPECT_EQ(markOf({"1.5", "x", "x", "5,50"}),
            "Line 5, column “Amount”: “5,50” has a decimal comma, but “1.5” on line 2 a decimal "
            "point.");
  EXPECT_EQ(
      markOf({"1,234"}),
      "Line 2, column “Amount”: “1,234” may be 1234 or 1.234. Say --decimal . or --decimal ,");
}

TEST(DecimalMarkRecognition, LetsATradeTell) {
  DecimalMarkRecognition recognition;
  recognition.add(2, "Shares", "1,234");
  EXPECT_TRUE(recognition.isUndecided());
  recognition.addTrade("1,234", "10", "12340");
  EXPECT_EQ(recognition.mark(), DecimalMark::point);
  DecimalMarkRecognition other;
  other.add(2, "Shares", "1,234");
  other.addTrade("1,234", "1000", "1,235");
  EXPECT_TRUE(other.isUndecided()) << "neither comes to the amount";
}

}  // namespace
}  // namespace corvane
