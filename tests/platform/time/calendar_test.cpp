#include "platform/time/calendar.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "platform/time/civil_day.h"

namespace corvane {
namespace {

using enum CalendarUnit;

Calendar in(std::string_view identifier) {
  return Calendar(TimeZone::withIdentifier(identifier).value());
}

/// The moment of `fields` (year, month, day, hour, minute, second) in UTC.
Date utc(int y, int mo, int d, int h = 0, int mi = 0, int s = 0) {
  return Calendar()
      .date({{year, y}, {month, mo}, {day, d}, {hour, h}, {minute, mi}, {second, s}})
      .value();
}

/// The moment of the same fields on the clocks of `calendar`, as UTC text.
std::string momentIn(const Calendar& calendar, int y, int mo, int d, int h = 0, int mi = 0) {
  return calendar.date({{year, y}, {month, mo}, {day, d}, {hour, h}, {minute, mi}})
      .value()
      .description();
}

std::string added(const Calendar& calendar, CalendarUnit unit, int value, Date date) {
  return calendar.dateByAdding(unit, value, date).value().description();
}

TEST(CivilDay, CountsDaysBothWaysAcrossCenturies) {
  EXPECT_EQ(dayCount(1970, 1, 1), 0);
  EXPECT_EQ(dayCount(2000, 3, 1), 11017);
  std::int64_t count = dayCount(-401, 1, 1);
  for (std::int64_t y = -401; y <= 2401; ++y) {
    for (int m = 1; m <= 12; ++m) {
      for (int d = 1; d <= daysInMonth(y, m); ++d, ++count) {
        const CivilDay civil = civilDay(count);
        ASSERT_TRUE(civil.year == y && civil.month == m && civil.day == d) << y << '-' << m;
        ASSERT_EQ(dayCount(y, m, d), count);
      }
    }
  }
}

TEST(Calendar, RollsMonthsAndDaysOver) {
  const Calendar calendar;
  EXPECT_EQ(calendar.date({{year, 2023}, {month, 13}, {day, 1}}), utc(2024, 1, 1));
  EXPECT_EQ(calendar.date({{year, 2023}, {month, 0}, {day, 15}}), utc(2022, 12, 15));
  EXPECT_EQ(calendar.date({{year, 2024}, {month, 3}, {day, 0}}), utc(2024, 2, 29));
  EXPECT_EQ(calendar.date({{year, 2023}, {month, 1}, {day, 32}}), utc(2023, 2, 1));
  EXPECT_EQ(calendar.date({{year, 2023}, {month, -11}, {hour, -1}}), utc(2021, 12, 31, 23));
  EXPECT_EQ(calendar.date({}), Date::distantPast());
}

TEST(Calendar, GivesOnlyTheFieldsItIsAskedFor) {
  const Date date = utc(1969, 7, 20, 20, 17, 40);
  EXPECT_EQ(Calendar().dateComponents({year, day}, date),
            (DateComponents{{year, 1969}, {day, 20}}));
  EXPECT_EQ(Calendar().dateComponents({hour, minute, second}, date),
            (DateComponents{{hour, 20}, {minute, 17}, {second, 40}}));
  EXPECT_EQ(in("Australia/Sydney").component(day, date), 21);
}

TEST(Calendar, CountsIsoWeeks) {
  EXPECT_EQ(Calendar().component(weekOfYear, utc(2021, 1, 3)), 53);
  EXPECT_EQ(Calendar().component(weekOfYear, utc(2021, 1, 4)), 1);
  EXPECT_EQ(Calendar().component(weekOfYear, utc(2024, 12, 30)), 1);
}

TEST(Calendar, MovesASkippedTimeOnByTheGap) {
  EXPECT_EQ(momentIn(in("America/Toronto"), 2024, 3, 10, 2, 30), "2024-03-10 07:30:00 +0000");
  EXPECT_EQ(momentIn(in("Europe/Berlin"), 2024, 3, 31, 2, 30), "2024-03-31 01:30:00 +0000");
  EXPECT_EQ(momentIn(in("Australia/Lord_Howe"), 2024, 10, 6, 2, 15), "2024-10-05 15:45:00 +0000");
  EXPECT_EQ(added(in("America/Toronto"), day, 1, utc(2024, 3, 9, 7, 30)),
            "2024-03-10 07:30:00 +0000");
}

TEST(Calendar, TakesARepeatedTimeAtItsFirstOccurrence) {
  EXPECT_EQ(momentIn(in("America/Toronto"), 2024, 11, 3, 1, 30), "2024-11-03 05:30:00 +0000");
  EXPECT_EQ(momentIn(in("Australia/Sydney"), 2024, 4, 7, 2, 30), "2024-04-06 15:30:00 +0000");
}

TEST(Calendar, KeepsTheSecondOccurrenceOfADateThatIsMovedWithTheSameOffset) {
  const Calendar toronto = in("America/Toronto");
  const Date second = utc(2024, 11, 3, 6, 30);  // 01:30 in standard time
  EXPECT_EQ(toronto.dateByAdding(day, 0, second), second);
  EXPECT_EQ(toronto.dateByAdding(year, 0, second), second);
  EXPECT_EQ(added(toronto, day, -1, utc(2024, 11, 4, 6, 30)), "2024-11-03 06:30:00 +0000");
}

TEST(Calendar, CountsDaysByTheClockAndHoursByElapsedTime) {
  const Calendar toronto = in("America/Toronto");
  const Date eve = utc(2024, 3, 9, 17);  // noon of the day before the clocks go forward
  EXPECT_EQ(added(toronto, day, 1, eve), "2024-03-10 16:00:00 +0000");
  EXPECT_EQ(added(toronto, hour, 24, eve), "2024-03-10 17:00:00 +0000");
  EXPECT_EQ(toronto.dateComponents({day, hour}, eve, utc(2024, 3, 10, 16)),
            (DateComponents{{day, 1}, {hour, 0}}));
}

TEST(Calendar, PinsTheDayOfTheMonth) {
  const Calendar calendar;
  EXPECT_EQ(calendar.dateByAdding(month, 1, utc(2024, 1, 31)), utc(2024, 2, 29));
  EXPECT_EQ(calendar.dateByAdding(year, 1, utc(2024, 2, 29)), utc(2025, 2, 28));
  EXPECT_EQ(calendar.dateByAdding(month, -25, utc(2024, 3, 31)), utc(2022, 2, 28));
  EXPECT_EQ(calendar.dateByAdding({{year, 1}, {month, 1}, {weekOfYear, 1}, {day, -1}, {second, 5}},
                                  utc(2023, 1, 31)),
            utc(2024, 3, 6, 0, 0, 5));
}

TEST(Calendar, KeepsThePartOfASecond) {
  const Date date = utc(1960, 2, 29) + 0.75;
  EXPECT_EQ(Calendar().dateByAdding(year, 1, date), utc(1961, 2, 28) + 0.75);
  EXPECT_EQ(Calendar().component(second, utc(1960, 1, 1) - 0.25), 59);
}

TEST(Calendar, StartsADayAfterTheGapWhereMidnightIsSkipped) {
  const auto start = [](std::string_view zone, Date date) {
    return in(zone).startOfDay(date).description();
  };
  EXPECT_EQ(start("America/Sao_Paulo", utc(2018, 11, 4, 15)), "2018-11-04 03:00:00 +0000");
  EXPECT_EQ(start("Asia/Beirut", utc(2022, 3, 27, 12)), "2022-03-26 22:00:00 +0000");
  // Clocks went from 23:30 to 00:30.
  EXPECT_EQ(start("America/Toronto", utc(1919, 3, 31, 12)), "1919-03-31 04:30:00 +0000");
  // Clocks went back from midnight to 23:00, so the evening hour came twice but midnight once.
  EXPECT_EQ(start("America/Sao_Paulo", utc(2018, 2, 18, 12)), "2018-02-18 03:00:00 +0000");
}

TEST(Calendar, GoesFromThe29thToThe31stWhereApiaSkippedADay) {
  const Calendar apia = in("Pacific/Apia");
  const Date evening = utc(2011, 12, 30, 9, 59, 59);
  EXPECT_EQ(apia.component(day, evening), 29);
  EXPECT_EQ(apia.component(day, evening + 1), 31);
  EXPECT_EQ(apia.startOfDay(evening + 1), evening + 1);
  EXPECT_FALSE(apia.isDateInSameDay(evening, evening + 1));
  EXPECT_EQ(apia.dateByAdding(day, 1, evening), evening + 86400);
  EXPECT_EQ(apia.dateByAdding(day, 2, evening), evening + 86400);
  EXPECT_EQ(apia.dateComponents({day}, evening, evening + 86400), (DateComponents{{day, 2}}));
}

TEST(Calendar, MeasuresSpansInBothDirections) {
  const Calendar calendar;
  const Date from = utc(2021, 11, 30, 12);
  const Date to = utc(2024, 3, 1, 6);
  EXPECT_EQ(calendar.dateComponents({year, month, day, hour}, from, to),
            (DateComponents{{year, 2}, {month, 3}, {day, 0}, {hour, 18}}));
  EXPECT_EQ(calendar.dateComponents({year, month, day, hour}, to, from),
            (DateComponents{{year, -2}, {month, -3}, {day, 0}, {hour, -18}}));
  EXPECT_EQ(calendar.dateComponents({day, second}, from, from + 86399.5),
            (DateComponents{{day, 0}, {second, 86399}}));
  EXPECT_EQ(calendar.dateComponents({second}, Date::distantPast(), Date::distantFuture()),
            (DateComponents{{second, std::numeric_limits<int>::max()}}));
}

TEST(Calendar, CallsSaturdayAndSundayTheWeekend) {
  const Calendar tokyo = in("Asia/Tokyo");
  EXPECT_FALSE(tokyo.isDateInWeekend(utc(2024, 5, 3, 14, 59)));
  EXPECT_TRUE(tokyo.isDateInWeekend(utc(2024, 5, 3, 15)));
  EXPECT_TRUE(tokyo.isDateInWeekend(utc(2024, 5, 5, 14, 59)));
  EXPECT_FALSE(tokyo.isDateInWeekend(utc(2024, 5, 5, 15)));
}

TEST(Calendar, FindsTheNearestFullMinuteStrictlyBefore) {
  const Calendar toronto = in("America/Toronto");
  const DateComponents fullMinute{{second, 0}};
  const auto before = [&](Date date) {
    return toronto.nextDate(date, fullMinute, SearchDirection::backward);
  };
  EXPECT_EQ(before(utc(2024, 5, 3, 14, 30, 20)), utc(2024, 5, 3, 14, 30));
  EXPECT_EQ(before(utc(2024, 5, 3, 14, 30)), utc(2024, 5, 3, 14, 29));
  EXPECT_EQ(before(utc(2024, 5, 3, 14, 30) + 0.5), utc(2024, 5, 3, 14, 30));
  // The second 01:30 of an autumn night belongs to its own hour.
  EXPECT_EQ(before(utc(2024, 11, 3, 6, 30, 20)), utc(2024, 11, 3, 6, 30));
  EXPECT_EQ(before(utc(2024, 11, 3, 6)), utc(2024, 11, 3, 5, 59));
  // Local mean time was 5:17:32 behind: full minutes of the clock fall on the 32nd second.
  EXPECT_EQ(before(utc(1890, 1, 1)), utc(1889, 12, 31, 23, 59, 32));
}

TEST(Calendar, FindsTheNextTimeOfDayAcrossClockChanges) {
  const Calendar toronto = in("America/Toronto");
  const DateComponents halfPastTwo{{hour, 2}, {minute, 30}};
  EXPECT_EQ(toronto.nextDate(utc(2024, 3, 10, 5), halfPastTwo, SearchDirection::forward),
            utc(2024, 3, 10, 7));
  EXPECT_EQ(toronto.nextDate(utc(2024, 3, 10, 7), halfPastTwo, SearchDirection::forward),
            utc(2024, 3, 11, 6, 30));
  EXPECT_EQ(toronto.nextDate(utc(2024, 11, 3, 12), {{hour, 1}}, SearchDirection::backward),
            utc(2024, 11, 3, 5));
  EXPECT_EQ(toronto.nextDate(utc(2024, 5, 3), {{minute, 15}}, SearchDirection::forward),
            utc(2024, 5, 3, 0, 15));
  EXPECT_FALSE(toronto.nextDate(Date(), {{day, 1}}, SearchDirection::forward));
  EXPECT_FALSE(toronto.nextDate(Date(), {{minute, 60}}, SearchDirection::forward));
}

TEST(Calendar, RefusesDatesOutOfItsReachAndStaysDefined) {
  const Calendar calendar = in("America/Toronto");
  const double infinity = std::numeric_limits<double>::infinity();
  const int most = std::numeric_limits<int>::max();
  const int least = std::numeric_limits<int>::min();
  for (const double seconds : {std::nan(""), infinity, -infinity, 1e300, -1e300, 4.5e12, -4.5e12}) {
    const Date date = Date::sinceReferenceDate(seconds);
    EXPECT_EQ(calendar.dateComponents({year, second}, date), DateComponents());
    EXPECT_EQ(calendar.dateComponents({year, second}, Date(), date), DateComponents());
    EXPECT_FALSE(calendar.dateByAdding(day, 1, date));
    EXPECT_FALSE(calendar.nextDate(date, {{second, 0}}, SearchDirection::backward));
    EXPECT_NEAR(std::abs(calendar.component(year, date) - 2001), 140000, 1);
    EXPECT_TRUE(std::isfinite(calendar.startOfDay(date).timeIntervalSinceReferenceDate()));
  }
  for (const CalendarUnit unit : {year, month, weekOfYear, day}) {
    EXPECT_FALSE(calendar.dateByAdding(unit, most, Date()));
    EXPECT_FALSE(calendar.dateByAdding(unit, least, Date()));
  }
  EXPECT_EQ(calendar.dateByAdding(second, least, Date()), Date() + -2147483648.0);
  EXPECT_FALSE(calendar.date({{year, most}, {month, most}, {day, most}, {hour, most}}));
  EXPECT_FALSE(calendar.date({{year, least}, {month, least}, {day, least}, {second, least}}));
}

}  // namespace
}  // namespace corvane
