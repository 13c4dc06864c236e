// Our calendar against ICU's, an independent implementation, on random dates of 1900 to 2100.
//
// CORVANE_TEST_CASES sets the number of dates, CORVANE_TEST_SEED chooses others than the usual
// ones; a failure prints the seed it was found with.
#include <gtest/gtest.h>
#include <unicode/basictz.h>
#include <unicode/gregocal.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "platform/time/calendar.h"

namespace corvane {
namespace {

using enum CalendarUnit;

std::uint64_t setting(const char* name, std::uint64_t otherwise) {
  const char* text = std::getenv(name);
  return text != nullptr ? std::strtoull(text, nullptr, 10) : otherwise;
}

/// ICU's Gregorian calendar without the Julian one before 1582, with ISO weeks and with our rules
/// for skipped and repeated times.
class Reference {
 public:
  explicit Reference(const char* zone)
      : calendar_(icu::TimeZone::createTimeZone(zone), icu::Locale("en_GB"), status_) {
    calendar_.setGregorianChange(-1e17, status_);
    calendar_.setFirstDayOfWeek(UCAL_MONDAY);
    calendar_.setMinimalDaysInFirstWeek(4);
    calendar_.setRepeatedWallTimeOption(UCAL_WALLTIME_FIRST);
  }
  ~Reference() { EXPECT_TRUE(U_SUCCESS(status_)) << u_errorName(status_); }
  Reference(const Reference&) = delete;
  Reference& operator=(const Reference&) = delete;

  static UCalendarDateFields field(CalendarUnit unit) {
    constexpr std::array fields = {UCAL_EXTENDED_YEAR, UCAL_MONTH,  UCAL_WEEK_OF_YEAR, UCAL_DATE,
                                   UCAL_HOUR_OF_DAY,   UCAL_MINUTE, UCAL_SECOND};
    return fields[static_cast<std::size_t>(unit)];
  }

  int component(CalendarUnit unit, Date date) {
    setTime(date);
    return calendar_.get(field(unit), status_) + (unit == month ? 1 : 0);
  }

  Date date(const DateComponents& components) {
    calendar_.clear();
    set(components);
    return time();
  }

  Date adding(CalendarUnit unit, int value, Date date) {
    setTime(date);
    const int offset = offsetOfTime();
    const int timeOfDay = calendar_.get(UCAL_MILLISECONDS_IN_DAY, status_);
    DateComponents target = fieldsOfTime();
    calendar_.add(unit == year ? UCAL_YEAR : field(unit), value, status_);
    const Date moved = time();
    if (unit == hour || unit == minute || unit == second) {
      return moved;
    }
    const bool countsDays = unit == day || unit == weekOfYear;
    if (countsDays && (calendar_.get(UCAL_MILLISECONDS_IN_DAY, status_) != timeOfDay ||
                       isAcrossDateLine(date, moved))) {
      // ICU goes by elapsed time here: it takes a skipped time with the offset of `date`, however
      // long out of use, and counts the day that a zone left out in one season and not in another.
      target.set(day, *target.day() + value * (unit == day ? 1 : 7));
      return occurrence(this->date(target), offset);
    }
    // Where the time occurs twice ICU takes one by the field that was added, we the one with the
    // offset that the date had.
    return occurrence(moved, offset);
  }

  Date startOfDay(Date date) {
    setTime(date);
    calendar_.setSkippedWallTimeOption(UCAL_WALLTIME_NEXT_VALID);
    for (const auto unit : {UCAL_HOUR_OF_DAY, UCAL_MINUTE, UCAL_SECOND, UCAL_MILLISECOND}) {
      calendar_.set(unit, 0);
    }
    const Date start = time();
    calendar_.setSkippedWallTimeOption(UCAL_WALLTIME_LAST);
    return start;
  }

  int difference(CalendarUnit unit, Date from, Date to) {
    setTime(from);
    return calendar_.fieldDifference(milliseconds(to), unit == year ? UCAL_YEAR : field(unit),
                                     status_);
  }

  bool isWeekend(Date date) {
    setTime(date);
    const int weekday = calendar_.get(UCAL_DAY_OF_WEEK, status_);
    return weekday == UCAL_SATURDAY || weekday == UCAL_SUNDAY;
  }

  /// Whether the zone changed to the other side of the date line between the two, or close by.
  bool isAcrossDateLine(Date first, Date second) {
    constexpr int halfADay = 12 * 3600 * 1000;
    constexpr double twoDays = 2 * 86400;
    setTime(std::min(first, second) - twoDays);
    const int offset = offsetOfTime();
    setTime(std::max(first, second) + twoDays);
    return std::abs(offsetOfTime() - offset) > halfADay;
  }

 private:
  /// Whether clocks show the civil time of `date` at another moment too.
  bool isRepeated(Date date) {
    std::int32_t raw = 0;
    std::int32_t savings = 0;
    const auto& zone = dynamic_cast<const icu::BasicTimeZone&>(calendar_.getTimeZone());
    setTime(date);
    const double wall = milliseconds(date) + offsetOfTime();
    zone.getOffsetFromLocal(wall, UCAL_TZ_LOCAL_FORMER, UCAL_TZ_LOCAL_FORMER, raw, savings,
                            status_);
    const int former = raw + savings;
    zone.getOffsetFromLocal(wall, UCAL_TZ_LOCAL_LATTER, UCAL_TZ_LOCAL_LATTER, raw, savings,
                            status_);
    return former != raw + savings;
  }

  static double milliseconds(Date date) { return date.timeIntervalSince1970() * 1000; }
  void setTime(Date date) { calendar_.setTime(milliseconds(date), status_); }
  Date time() { return Date::since1970(calendar_.getTime(status_) / 1000); }
  int offsetOfTime() {
    return calendar_.get(UCAL_ZONE_OFFSET, status_) + calendar_.get(UCAL_DST_OFFSET, status_);
  }
  DateComponents fieldsOfTime() {
    DateComponents fields;
    for (const CalendarUnit unit : {year, month, day, hour, minute, second}) {
      fields.set(unit, calendar_.get(field(unit), status_) + (unit == month ? 1 : 0));
    }
    return fields;
  }
  void set(const DateComponents& components) {
    for (const CalendarUnit unit : {year, month, day, hour, minute, second}) {
      if (const auto value = components.get(unit)) {
        calendar_.set(field(unit), *value - (unit == month ? 1 : 0));
      }
    }
  }
  Date occurrence(Date date, int preferredOffset) {
    if (!isRepeated(date)) {
      return date;
    }
    setTime(date);
    const Date preferred = date + (offsetOfTime() - preferredOffset) / 1000;
    setTime(preferred);
    if (offsetOfTime() == preferredOffset) {
      return preferred;
    }
    setTime(date);
    return this->date(fieldsOfTime());
  }

  UErrorCode status_ = U_ZERO_ERROR;
  icu::GregorianCalendar calendar_;
};

constexpr std::array zones = {
    "America/Toronto",  "America/New_York",  "Europe/London",     "Europe/Berlin",
    "Asia/Tokyo",       "Asia/Kolkata",      "Asia/Kathmandu",    "Australia/Sydney",
    "Asia/Beirut",      "Pacific/Apia",      "America/Sao_Paulo", "Australia/Lord_Howe",
    "America/St_Johns", "Africa/Casablanca", "Pacific/Auckland",  "UTC"};

using Units = std::initializer_list<CalendarUnit>;
constexpr Units calendarUnits = {year, month, day, hour, minute, second};
constexpr Units weekUnits = {year, month, weekOfYear, day};
constexpr Units monthUnits = {month, day, second};
constexpr Units dayUnits = {weekOfYear, day, hour};
constexpr Units timeUnits = {hour, minute, second};
constexpr std::array differenceUnits = {calendarUnits, weekUnits, monthUnits, dayUnits, timeUnits};

class Comparison {
 public:
  explicit Comparison(const char* zone, std::mt19937_64& random)
      : reference_(zone), ours_(TimeZone::withIdentifier(zone).value()), random_(random) {}

  void compareAt(Date date) {
    compareFields(date);
    compareSums(date);
    compareDifferences(date, date + static_cast<double>(between(-1'500'000'000, 1'500'000'000)));
    compareDifferences(date, date + static_cast<double>(between(-200'000, 200'000)));
  }

 private:
  int between(int least, int most) { return std::uniform_int_distribution(least, most)(random_); }

  void compareFields(Date date) {
    for (const CalendarUnit unit : {year, month, weekOfYear, day, hour, minute, second}) {
      ASSERT_EQ(ours_.component(unit, date), reference_.component(unit, date));
    }
    const DateComponents fields =
        ours_.dateComponents({year, month, day, hour, minute, second}, date);
    ASSERT_EQ(ours_.date(fields), reference_.date(fields));
    ASSERT_EQ(ours_.startOfDay(date), reference_.startOfDay(date));
    ASSERT_EQ(ours_.isDateInWeekend(date), reference_.isWeekend(date));

    // Months, days and times outside their range, and times that a clock change skips.
    const DateComponents rolling{{year, between(1900, 2099)}, {month, between(-20, 30)},
                                 {day, between(-60, 90)},     {hour, between(-30, 50)},
                                 {minute, between(-70, 130)}, {second, between(0, 59)}};
    ASSERT_EQ(ours_.date(rolling), reference_.date(rolling));
  }

  void compareSums(Date date) {
    const std::array<std::pair<CalendarUnit, int>, 7> sums = {{{year, between(-90, 90)},
                                                               {month, between(-400, 400)},
                                                               {weekOfYear, between(-3000, 3000)},
                                                               {day, between(-9000, 9000)},
                                                               {day, between(-2, 2)},
                                                               {hour, between(-90000, 90000)},
                                                               {minute, between(-90000, 90000)}}};
    for (const auto& [unit, value] : sums) {
      ASSERT_EQ(ours_.dateByAdding(unit, value, date), reference_.adding(unit, value, date))
          << "adding " << value << " of unit " << static_cast<int>(unit);
    }
  }

  void compareDifferences(Date from, Date to) {
    if (reference_.isAcrossDateLine(from, to)) {
      return;
    }
    const Units units = differenceUnits[static_cast<std::size_t>(between(0, 4))];
    DateComponents span;
    Date cursor = from;
    for (const CalendarUnit unit : units) {
      const int count = reference_.difference(unit, cursor, to);
      ASSERT_EQ(ours_.dateComponents({unit}, cursor, to).get(unit), count)
          << "unit " << static_cast<int>(unit) << " to " << to.description();
      span.set(unit, count);
      cursor = ours_.dateByAdding(unit, count, cursor).value();
    }
    ASSERT_EQ(ours_.dateComponents(units, from, to), span) << "to " << to.description();
    ASSERT_EQ(ours_.dateByAdding(span, from), cursor);
  }

  Reference reference_;
  Calendar ours_;
  std::mt19937_64& random_;
};

TEST(CalendarReference, AgreesWithIcuOnRandomDates) {
  const std::uint64_t cases = setting("CORVANE_TEST_CASES", 30'000);
  const std::uint64_t seed = setting("CORVANE_TEST_SEED", 1);
  std::mt19937_64 random(seed);
  std::uniform_int_distribution<std::int64_t> seconds(-2208988800, 4102444799);
  std::vector<std::unique_ptr<Comparison>> comparisons;
  for (const char* zone : zones) {
    comparisons.push_back(std::make_unique<Comparison>(zone, random));
  }
  for (std::uint64_t count = 0; count < cases; ++count) {
    const std::size_t zone = count % zones.size();
    const Date date = Date::since1970(static_cast<double>(seconds(random)));
    comparisons[zone]->compareAt(date);
    if (::testing::Test::HasFatalFailure()) {
      FAIL() << zones[zone] << " at " << date.description() << ", CORVANE_TEST_SEED=" << seed;
    }
  }
}

}  // namespace
}  // namespace corvane
