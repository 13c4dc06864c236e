#include "platform/time/date.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace corvane {
namespace {

TEST(Date, DescribesTheSecondItFallsInAlsoBefore1970) {
  EXPECT_EQ(Date().description(), "2001-01-01 00:00:00 +0000");
  EXPECT_EQ(Date::since1970(-0.25).description(), "1969-12-31 23:59:59 +0000");
  EXPECT_EQ(Date::since1970(1709251199.999).description(), "2024-02-29 23:59:59 +0000");
  EXPECT_EQ(Date::distantPast().description(), "0001-01-01 00:00:00 +0000");
  EXPECT_EQ(Date::distantFuture().description(), "4001-01-01 00:00:00 +0000");
}

TEST(Date, DescribesWhatNoCalendarCanExpressAsANumber) {
  EXPECT_EQ(Date::sinceReferenceDate(1e300).description(), "1.0000000000000001e+300 s since 2001");
  EXPECT_EQ(Date::sinceReferenceDate(-std::numeric_limits<double>::infinity()).description(),
            "-inf s since 2001");
  EXPECT_EQ(Date::sinceReferenceDate(std::nan("")).description(), "nan s since 2001");
}

TEST(Date, NowAdvancesAndLiesInThisCentury) {
  const Date first = Date::now();
  EXPECT_LE(first, Date::now());
  EXPECT_GT(first, Date::since1970(1704067200));
  EXPECT_LT(first, Date::since1970(4102444800));
}

}  // namespace
}  // namespace corvane
