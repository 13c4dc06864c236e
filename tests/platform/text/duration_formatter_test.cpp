#include "platform/text/formats/duration_formatter.h"

#include <gtest/gtest.h>

#include <cmath>

namespace corvane {
namespace {

Date at(int y, int m, int d) {
  using enum CalendarUnit;
  return Calendar().date({{year, y}, {month, m}, {day, d}}).value();
}

std::string text(DurationFormatter formatter, Date from, Date to, const char* locale = "en_US") {
  formatter.locale = {locale};
  return formatter.string(from, to, Calendar()).value_or("none");
}

TEST(DurationFormatter, WritesTheLargestUnitsAndDropsTheRest) {
  EXPECT_EQ(text({}, at(2022, 1, 1), at(2024, 4, 20)), "2 years, 3 months");
  EXPECT_EQ(text({}, at(2022, 1, 31), at(2024, 2, 29)), "2 years, 1 month");
  EXPECT_EQ(text({}, at(2024, 3, 4), at(2024, 3, 5)), "1 day");
  EXPECT_EQ(text({}, at(2022, 1, 1), at(2024, 1, 6)), "2 years, 5 days");
  EXPECT_EQ(text({.maximumUnitCount = 9}, at(2021, 1, 1), at(2024, 4, 20)),
            "3 years, 3 months, 2 weeks, 5 days");
  EXPECT_EQ(text({}, at(2022, 1, 1), at(2024, 4, 20), "fr_FR"), "2 ans et 3\u00a0mois");
}

TEST(DurationFormatter, CountsASingleLargestUnitInTheNextWhenItCollapses) {
  const DurationFormatter collapsing{.collapsesLargestUnit = true};
  EXPECT_EQ(text(collapsing, at(2023, 1, 1), at(2024, 2, 1)), "13 months");
  EXPECT_EQ(text(collapsing, at(2024, 1, 1), at(2024, 1, 12)), "11 days");
  EXPECT_EQ(text(collapsing, at(2024, 1, 1), at(2024, 2, 20)), "7 weeks, 1 day");
  EXPECT_EQ(text(collapsing, at(2023, 1, 1), at(2024, 1, 1)), "1 year");
  EXPECT_EQ(text(collapsing, at(2022, 1, 1), at(2024, 2, 1)), "2 years, 1 month");
}

TEST(DurationFormatter, UsesOnlyTheUnitsThatAreAllowedInWhateverOrder) {
  using enum CalendarUnit;
  EXPECT_EQ(text({.allowedUnits = {day, month, day}}, at(2023, 1, 1), at(2024, 4, 20)),
            "15 months, 19 days");
  EXPECT_EQ(text({.allowedUnits = {}}, at(2023, 1, 1), at(2024, 4, 20)), "none");
}

TEST(DurationFormatter, WritesAnEmptySpanInTheSmallestUnit) {
  EXPECT_EQ(text({}, at(2024, 1, 1), at(2024, 1, 1)), "0 days");
  EXPECT_EQ(text({}, at(2024, 1, 1), Date::sinceReferenceDate(std::nan(""))), "none");
}

}  // namespace
}  // namespace corvane
