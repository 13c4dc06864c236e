#include "platform/time/time_zone.h"

#include <gtest/gtest.h>
#include <unicode/basictz.h>
#include <unicode/strenum.h>
#include <unicode/timezone.h>
#include <unicode/tztrans.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "platform/time/time_zone_names.h"

namespace corvane {
namespace {

TimeZone zone(std::string_view identifier) {
  return TimeZone::withIdentifier(identifier).value();
}

/// Sets TZ for one test and puts back what was there.
class SystemZone {
 public:
  explicit SystemZone(const char* identifier) {
    if (const char* before = std::getenv("TZ")) {
      before_ = before;
    }
    setenv("TZ", identifier, 1);
  }
  ~SystemZone() {
    if (before_) {
      setenv("TZ", before_->c_str(), 1);
    } else {
      unsetenv("TZ");
    }
  }
  SystemZone(const SystemZone&) = delete;
  SystemZone& operator=(const SystemZone&) = delete;

 private:
  std::optional<std::string> before_;
};

TEST(TimeZone, IsFoundOnlyByItsExactName) {
  EXPECT_EQ(zone("America/Toronto").identifier(), "America/Toronto");
  for (const char* unknown :
       {"america/toronto", "", "Mars/Olympus", "GMT+5", "Etc/Unknown", "GMT+0570", "GMT+1900",
        "GMT+-530", "GMT 0530", "America/Toronto ", "\xff\xfe"}) {
    EXPECT_FALSE(TimeZone::withIdentifier(unknown)) << unknown;
  }
}

TEST(TimeZone, NamesAndLimitsItsFixedOffsets) {
  EXPECT_EQ(TimeZone::withSecondsFromGMT(0)->identifier(), "GMT");
  EXPECT_EQ(TimeZone::withSecondsFromGMT(19800)->identifier(), "GMT+0530");
  EXPECT_EQ(TimeZone::withSecondsFromGMT(-12344)->identifier(), "GMT-032544");
  for (const int seconds : {0, 60, 19800, -12344, 64800, -64800}) {
    const TimeZone fixed = TimeZone::withSecondsFromGMT(seconds).value();
    EXPECT_EQ(zone(fixed.identifier()).secondsFromGMT(Date()), seconds);
  }
  EXPECT_EQ(TimeZone::withSecondsFromGMT(-64800)->secondsFromGMT(Date()), -64800);
  EXPECT_FALSE(TimeZone::withSecondsFromGMT(64801));
  EXPECT_FALSE(TimeZone::withSecondsFromGMT(std::numeric_limits<int>::min()));
}

TEST(TimeZone, NamesEveryPlaceOnceAndOnlyThose) {
  const auto& names = timeZoneNames();
  EXPECT_GT(names.size(), 400U);
  EXPECT_EQ(std::ranges::adjacent_find(names), names.end());
  for (const char* place : {"America/Toronto", "Asia/Kolkata", "Asia/Calcutta", "UTC"}) {
    EXPECT_EQ(std::ranges::count(names, place), 1) << place;
  }
  for (const char* other : {"EST", "Etc/GMT+5", "SystemV/EST5EDT"}) {
    EXPECT_EQ(std::ranges::count(names, other), 0) << other;
  }
  for (const std::string& name : names) {
    EXPECT_TRUE(TimeZone::withIdentifier(name)) << name;
  }
}

TEST(TimeZone, FollowsTheSystemsZoneFromOneCallToTheNext) {
  {
    const SystemZone tokyo("Asia/Tokyo");
    EXPECT_EQ(TimeZone::current().identifier(), "Asia/Tokyo");
  }
  const SystemZone berlin("Europe/Berlin");
  EXPECT_EQ(TimeZone::current().identifier(), "Europe/Berlin");
}

TEST(TimeZone, TakesDatesBeyondTheCalendarAsTheNearestInReach) {
  const TimeZone toronto = zone("America/Toronto");
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(toronto.secondsFromGMT(Date::sinceReferenceDate(-infinity)), -19052);
  EXPECT_EQ(toronto.secondsFromGMT(Date::sinceReferenceDate(std::nan(""))), -19052);
  EXPECT_EQ(toronto.secondsFromGMT(Date::sinceReferenceDate(infinity)),
            toronto.secondsFromGMT(Date::sinceReferenceDate(1e300)));
}

// The table of every zone of the database against the database's own answer: at random moments,
// also far beyond the years that the table holds, and around every change.
TEST(TimeZone, AgreesWithTheDatabaseInEveryZone) {
  std::mt19937_64 random(11);
  std::uniform_int_distribution<std::int64_t> far(-9'000'000'000, 100'000'000'000);
  UErrorCode status = U_ZERO_ERROR;
  const std::unique_ptr<icu::StringEnumeration> names(icu::TimeZone::createTimeZoneIDEnumeration(
      UCAL_ZONE_TYPE_CANONICAL, nullptr, nullptr, status));
  int zones = 0;
  while (const icu::UnicodeString* name = names->snext(status)) {
    std::string identifier;
    name->toUTF8String(identifier);
    if (identifier == "Etc/Unknown") {
      continue;
    }
    ++zones;
    const std::unique_ptr<icu::TimeZone> reference(icu::TimeZone::createTimeZone(*name));
    const auto& rules = dynamic_cast<const icu::BasicTimeZone&>(*reference);
    const TimeZone ours = zone(identifier);
    const auto expectSameAt = [&](double seconds) {
      std::int32_t raw = 0;
      std::int32_t savings = 0;
      reference->getOffset(seconds * 1000, false, raw, savings, status);
      ASSERT_EQ(ours.secondsFromGMT(Date::since1970(seconds)), (raw + savings) / 1000)
          << identifier << " at " << Date::since1970(seconds).description();
    };
    for (int count = 0; count < 40; ++count) {
      expectSameAt(static_cast<double>(far(random)));
    }
    icu::TimeZoneTransition change;
    double cursor = -5e9;
    while (cursor < 4.2e9 && rules.getNextTransition(cursor * 1000, false, change)) {
      cursor = change.getTime() / 1000;
      expectSameAt(cursor - 1);
      expectSameAt(cursor);
    }
  }
  EXPECT_GT(zones, 300);
}

TEST(TimeZone, IsReadOnceHoweverManyThreadsAskForIt) {
  std::vector<std::thread> threads;
  for (int count = 0; count < 8; ++count) {
    threads.emplace_back([] {
      for (const char* name : {"Europe/Oslo", "Asia/Kolkata", "Australia/Lord_Howe"}) {
        EXPECT_EQ(zone(name).identifier(), name);
        EXPECT_NE(zone(name).secondsFromGMT(Date()), 0);
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
}

}  // namespace
}  // namespace corvane
