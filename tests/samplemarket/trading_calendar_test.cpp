#include "samplemarket/prices/trading_calendar.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "platform/time/civil_day.h"
#include "samplemarket/prices/holidays.h"

namespace corvane::samplemarket {
namespace {

std::set<std::int64_t> days(std::int64_t year, std::vector<std::pair<int, int>> monthsAndDays) {
  std::set<std::int64_t> result;
  for (const auto& [month, day] : monthsAndDays) {
    result.insert(dayCount(year, month, day));
  }
  return result;
}

TEST(Holidays, AreThoseOfTheExchanges) {
  using enum ExchangeID;
  EXPECT_EQ(
      holidays(newYork, 2021).closed,
      days(2021, {{1, 1}, {1, 18}, {2, 15}, {4, 2}, {5, 31}, {7, 5}, {9, 6}, {11, 25}, {12, 24}}));
  EXPECT_EQ(holidays(newYork, 2026).closed, days(2026, {{1, 1},
                                                        {1, 19},
                                                        {2, 16},
                                                        {4, 3},
                                                        {5, 25},
                                                        {6, 19},
                                                        {7, 3},
                                                        {9, 7},
                                                        {11, 26},
                                                        {12, 25}}));
  EXPECT_EQ(holidays(newYork, 2022).closed.contains(dayCount(2022, 1, 3)), false)
      << "a New Year's Day on a Saturday is lost";
  EXPECT_EQ(holidays(toronto, 2022).closed, days(2022, {{1, 3},
                                                        {2, 21},
                                                        {4, 15},
                                                        {5, 23},
                                                        {7, 1},
                                                        {8, 1},
                                                        {9, 5},
                                                        {10, 10},
                                                        {12, 26},
                                                        {12, 27}}));
  EXPECT_EQ(holidays(london, 2021).closed,
            days(2021, {{1, 1}, {4, 2}, {4, 5}, {5, 3}, {5, 31}, {8, 30}, {12, 27}, {12, 28}}));
  EXPECT_EQ(holidays(frankfurt, 2024).closed,
            days(2024, {{1, 1}, {3, 29}, {4, 1}, {5, 1}, {12, 24}, {12, 25}, {12, 26}, {12, 31}}));
  const auto tokyoDays = holidays(tokyo, 2025).closed;
  EXPECT_TRUE(tokyoDays.contains(dayCount(2025, 5, 6)))
      << "the 4th was a Sunday, the 5th a holiday";
  EXPECT_TRUE(tokyoDays.contains(dayCount(2025, 11, 24)));
}

TEST(Holidays, FollowEaster) {
  for (const auto& [year, month, day] : {std::tuple{1990, 4, 13},
                                         {2000, 4, 21},
                                         {2008, 3, 21},
                                         {2011, 4, 22},
                                         {2019, 4, 19},
                                         {2024, 3, 29},
                                         {2025, 4, 18},
                                         {2038, 4, 23},
                                         {2049, 4, 16}}) {
    EXPECT_TRUE(holidays(ExchangeID::newYork, year).closed.contains(dayCount(year, month, day)))
        << year;
  }
}

const Session& sessionOf(ExchangeID id, std::int64_t year, int month, int day) {
  const auto& sessions = TradingCalendar::of(id).sessions();
  const std::int64_t wanted = dayCount(year, month, day);
  return *std::ranges::find(sessions, wanted, &Session::day);
}

TEST(TradingCalendar, KnowsClockChangesAndHalfDays) {
  using enum ExchangeID;
  EXPECT_EQ(sessionOf(newYork, 2026, 3, 6).open % secondsPerDay, (14 * 60 + 30) * 60);
  EXPECT_EQ(sessionOf(newYork, 2026, 3, 9).open % secondsPerDay, (13 * 60 + 30) * 60);
  EXPECT_EQ(sessionOf(newYork, 2026, 3, 9).gmtOffset, -4 * 3600);
  EXPECT_EQ(sessionOf(newYork, 2026, 11, 27).minutes(), 210) << "the day after Thanksgiving";
  EXPECT_EQ(sessionOf(newYork, 2026, 11, 30).minutes(), 390);
  EXPECT_EQ(sessionOf(london, 2026, 12, 24).minutes(), 270);
  EXPECT_EQ(sessionOf(tokyo, 2024, 11, 1).minutes(), 360);
  EXPECT_EQ(sessionOf(tokyo, 2024, 11, 5).minutes(), 390);
  EXPECT_EQ(sessionOf(currencies, 2026, 3, 30).minutes(), 1439);
}

TEST(TradingCalendar, SaysWhichSessionIsTheCurrentOne) {
  const TradingCalendar& calendar = TradingCalendar::of(ExchangeID::toronto);
  const Session& friday = sessionOf(ExchangeID::toronto, 2026, 3, 6);
  const Session& monday = sessionOf(ExchangeID::toronto, 2026, 3, 9);
  const auto place = [&](const Session& session) {
    return static_cast<std::size_t>(&session - calendar.sessions().data());
  };
  const std::int64_t mondayMidnight = calendar.midnight(monday.day);
  EXPECT_EQ(mondayMidnight, monday.open - (9 * 60 + 30) * 60);
  EXPECT_EQ(calendar.currentAt(mondayMidnight - 1), place(friday)) << "all weekend";
  EXPECT_EQ(calendar.currentAt(mondayMidnight), place(monday)) << "before it opens";
  EXPECT_EQ(calendar.lastOpenedBy(monday.open - 1), place(friday));
  EXPECT_EQ(calendar.lastOpenedBy(monday.open), place(monday));
  EXPECT_EQ(calendar.firstOpeningFrom(friday.open + 1), place(monday));
  EXPECT_EQ(calendar.lastOpenedBy(0), std::nullopt);
  // Midnight of the day on which clocks change is before the change.
  const std::int64_t sunday = dayCount(2026, 3, 8);
  EXPECT_EQ(calendar.midnight(sunday + 1) - calendar.midnight(sunday), 23 * 3600);
}

}  // namespace
}  // namespace corvane::samplemarket
