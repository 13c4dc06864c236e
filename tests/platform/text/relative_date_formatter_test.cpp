#include "platform/text/formats/relative_date_formatter.h"

#include <gtest/gtest.h>

#include <cmath>

namespace corvane {
namespace {

using Style = RelativeDateFormatter::Style;

const Calendar toronto(TimeZone::withIdentifier("America/Toronto").value());

Date at(int y, int mo, int d, int h = 0, int mi = 0) {
  using enum CalendarUnit;
  return toronto.date({{year, y}, {month, mo}, {day, d}, {hour, h}, {minute, mi}}).value();
}

std::string text(Style style, Date date, Date reference, const char* locale = "en_US") {
  RelativeDateFormatter formatter;
  formatter.style = style;
  formatter.locale = {locale};
  return formatter.string(date, reference, toronto);
}

TEST(RelativeDateFormatter, CountsTheLargestWholeUnit) {
  const Date now = at(2024, 3, 31, 9);
  EXPECT_EQ(text(Style::numeric, at(2022, 3, 31, 9), now), "2 years ago");
  EXPECT_EQ(text(Style::numeric, at(2023, 4, 1), now), "11 months ago");
  EXPECT_EQ(text(Style::numeric, at(2024, 2, 29, 9), now), "1 month ago");
  EXPECT_EQ(text(Style::numeric, at(2024, 3, 17, 10), now), "1 week ago");
  EXPECT_EQ(text(Style::numeric, at(2024, 3, 30, 10), now), "23 hours ago");
  EXPECT_EQ(text(Style::numeric, at(2024, 3, 31, 12, 59), now), "in 3 hours");
  EXPECT_EQ(text(Style::numeric, now + 59.9, now), "in 59 seconds");
}

TEST(RelativeDateFormatter, NamesTheDaysAroundToday) {
  const Date today = at(2024, 3, 11);
  EXPECT_EQ(text(Style::named, at(2024, 3, 12), today), "tomorrow");
  // The day before lasted 23 hours.
  EXPECT_EQ(text(Style::named, at(2024, 3, 10), today), "yesterday");
  EXPECT_EQ(text(Style::named, at(2024, 3, 9), today), "2 days ago");
  EXPECT_EQ(text(Style::named, at(2024, 3, 9), today, "de_DE"), "vorgestern");
  EXPECT_EQ(text(Style::named, today, today + 0.5), "now");
  EXPECT_EQ(text(Style::named, Date::sinceReferenceDate(HUGE_VAL), today), "");
}

TEST(RelativeDateFormatter, UsesANameOnlyWhereItIsTrue) {
  const Date morning = at(2024, 3, 5, 9);
  EXPECT_EQ(text(Style::named, at(2024, 3, 4, 8), morning), "yesterday");
  EXPECT_EQ(text(Style::named, at(2024, 3, 3, 10), morning), "1 day ago");
  EXPECT_EQ(text(Style::named, at(2024, 2, 1), morning), "last month");
  EXPECT_EQ(text(Style::named, at(2024, 1, 31), morning), "1 month ago");
  EXPECT_EQ(text(Style::named, at(2022, 12, 31), morning), "1 year ago");
  EXPECT_EQ(text(Style::named, at(2024, 3, 12, 9), morning), "next week");
  EXPECT_EQ(text(Style::named, at(2024, 3, 18, 9), morning), "in 1 week");
}

TEST(RelativeDateFormatter, CrossesMidnightInHours) {
  EXPECT_EQ(text(Style::named, at(2024, 3, 4, 23, 30), at(2024, 3, 5, 0, 45)), "1 hour ago");
}

TEST(RelativeDateFormatter, CapitalisesAsItsPlaceInTheTextAsks) {
  RelativeDateFormatter formatter{.style = Style::named, .locale = {"en_US"}};
  formatter.context = FormattingContext::middleOfSentence;
  EXPECT_EQ(formatter.string(at(2024, 3, 4), at(2024, 3, 5), toronto), "yesterday");
  formatter.context = FormattingContext::beginningOfSentence;
  EXPECT_EQ(formatter.string(at(2024, 3, 4), at(2024, 3, 5), toronto), "Yesterday");
}

}  // namespace
}  // namespace corvane
