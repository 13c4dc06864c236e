#include "platform/text/formats/date_formatter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace corvane {
namespace {

using Style = DateFormatter::Style;

DateFormatter formatter(Style dateStyle, Style timeStyle, const char* locale = "en_US",
                        const char* zone = "America/Toronto") {
  DateFormatter result;
  result.dateStyle = dateStyle;
  result.timeStyle = timeStyle;
  result.locale = {locale};
  result.timeZone = TimeZone::withIdentifier(zone).value();
  return result;
}

DateFormatter reader(const char* pattern, bool isLenient, const char* locale = "en_US") {
  DateFormatter result = formatter(Style::none, Style::none, locale, "UTC");
  result.format = pattern;
  result.isLenient = isLenient;
  return result;
}

/// The day that `text` describes, "none" where it describes no date.
std::string dayRead(const DateFormatter& formatter, const char* text) {
  const auto date = formatter.date(text);
  return date ? date->description().substr(0, 10) : "none";
}

const Date saturday = Date::since1970(1709999999);  // 2024-03-09 10:59:59 in Toronto

TEST(DateFormatter, WritesTheStylesOfTheLocale) {
  EXPECT_EQ(formatter(Style::shortStyle, Style::none).string(saturday), "3/9/24");
  EXPECT_EQ(formatter(Style::mediumStyle, Style::none).string(saturday), "Mar 9, 2024");
  EXPECT_EQ(formatter(Style::longStyle, Style::shortStyle).string(saturday),
            "March 9, 2024 at 10:59\u202fAM");
  EXPECT_EQ(formatter(Style::none, Style::mediumStyle).string(saturday), "10:59:59\u202fAM");
  EXPECT_EQ(formatter(Style::longStyle, Style::longStyle).string(saturday),
            "March 9, 2024 at 10:59:59\u202fAM EST");
  EXPECT_EQ(formatter(Style::fullStyle, Style::none, "de_DE").string(saturday),
            "Samstag, 9. März 2024");
  EXPECT_EQ(formatter(Style::none, Style::none).string(saturday), "");
}

TEST(DateFormatter, FollowsTheClockChangesOfItsZone) {
  const DateFormatter toronto = formatter(Style::none, Style::longStyle);
  EXPECT_EQ(toronto.string(Date::since1970(1710053999)), "1:59:59\u202fAM EST");
  EXPECT_EQ(toronto.string(Date::since1970(1710054000)), "3:00:00\u202fAM EDT");
  DateFormatter offset = toronto;
  offset.timeZone = TimeZone::withSecondsFromGMT(19800).value();
  EXPECT_EQ(offset.string(Date()), "5:30:00\u202fAM GMT+5:30");
}

TEST(DateFormatter, OrdersATemplateAsTheLocaleDoes) {
  DateFormatter parts = formatter(Style::none, Style::none);
  const auto text = [&](const char* locale, const char* localizedTemplate) {
    parts.locale = {locale};
    parts.localizedTemplate = localizedTemplate;
    return parts.string(saturday);
  };
  EXPECT_EQ(text("en_US", "jjmm"), "10:59\u202fAM");
  EXPECT_EQ(text("de_DE", "jjmm"), "10:59");
  EXPECT_EQ(text("en_US", "jjmmzzz"), "10:59\u202fAM EST");
  EXPECT_EQ(text("en_US", "MMMdd"), "Mar 09");
  EXPECT_EQ(text("de_DE", "MMMdd"), "09. März");
}

TEST(DateFormatter, CapitalisesAsItsPlaceInTheTextAsks) {
  DateFormatter month = formatter(Style::none, Style::none, "fr_FR");
  month.format = "LLLL";
  EXPECT_EQ(month.string(saturday), "mars");
  month.context = FormattingContext::beginningOfSentence;
  EXPECT_EQ(month.string(saturday), "Mars");
}

TEST(DateFormatter, StaysInTheGregorianCalendar) {
  EXPECT_EQ(formatter(Style::longStyle, Style::none, "th_TH").string(saturday),
            "9 มีนาคม ค.ศ. 2024");
  EXPECT_EQ(reader("yyyy-MM-dd", false).string(Date::distantPast()), "0001-01-01");
}

TEST(DateFormatter, TakesAWeekYearWithoutAWeekAsThePlainYear) {
  const Date dayBeforeNewYearsEve = Date::since1970(1735516800);  // 2024-12-30
  EXPECT_EQ(reader("YYYY-MM-dd", false).string(dayBeforeNewYearsEve), "2024-12-30");
  EXPECT_EQ(dayRead(reader("YYYY-MM-dd", true), "2024-12-30"), "2024-12-30");
  EXPECT_EQ(reader("YYYY-'W'ww", false, "en_GB").string(dayBeforeNewYearsEve), "2025-W01");
  EXPECT_EQ(reader("'Year' YYYY", false).string(dayBeforeNewYearsEve), "Year 2024");
}

TEST(DateFormatter, ReadsBackWhatItWrites) {
  const Date noon = Date::since1970(1710002400);
  for (const char* locale : {"en_US", "en_CA", "de_DE", "fr_FR", "ja_JP", "th_TH", "fa_IR"}) {
    for (const Style style :
         {Style::shortStyle, Style::mediumStyle, Style::longStyle, Style::fullStyle}) {
      for (const bool isLenient : {false, true}) {
        DateFormatter both = formatter(style, style, locale);
        both.isLenient = isLenient;
        EXPECT_EQ(both.date(both.string(noon)), noon) << both.string(noon);
      }
    }
  }
}

TEST(DateFormatter, ReadsADayWhoseMidnightTheZoneSkips) {
  DateFormatter day = formatter(Style::none, Style::none, "en_US", "America/Sao_Paulo");
  day.format = "yyyy-MM-dd";
  EXPECT_EQ(day.date("2018-11-04").value().description(), "2018-11-04 03:00:00 +0000");
  day.format = "yyyy-MM-dd HH:mm:ss.SSS";
  EXPECT_EQ(day.date("2018-11-04 12:00:00.250"), Date::since1970(1541340000.25));
}

TEST(DateFormatter, ReadsOnlyTheWholeOfAText) {
  const DateFormatter strict = reader("yyyy-MM-dd", false);
  EXPECT_EQ(dayRead(strict, "2021-03-04"), "2021-03-04");
  for (const char* text : {"", "2021-03-04x", "2021-03", "2021/03/04", "x2021-03-04",
                           "2021-03-04 10:00", "99999999999999-03-04"}) {
    EXPECT_EQ(dayRead(strict, text), "none") << text;
  }
  EXPECT_EQ(dayRead(reader("y M d", true), "2021-03-04 10:00"), "none");
  EXPECT_EQ(dayRead(reader("y M d", true), "--- / ---"), "none");
}

TEST(DateFormatter, ForgivesSeparatorsWidthsAndMonthNamesWhenLenient) {
  struct Case {
    const char* pattern;
    const char* text;
    const char* day;
    const char* locale = "en_US";
  };
  for (const Case& c :
       {Case{"y M d", "2021-03-04", "2021-03-04"}, Case{"y M d", "2021/3/4", "2021-03-04"},
        Case{"y M d", "  2021. 3. 4.", "2021-03-04"}, Case{"M d y", "Mar 4, 2021", "2021-03-04"},
        Case{"M d y", "March 4 2021", "2021-03-04"}, Case{"d M y", "04-DEC-21", "2021-12-04"},
        Case{"d M y", "4 Sept. 2021", "2021-09-04"},
        Case{"d M y", "4. März 2021", "2021-03-04", "de_DE"},
        Case{"d M y", "4 October 2021", "2021-10-04", "de_DE"},
        Case{"d M y", "1er févr. 2021", "none", "fr_FR"},
        Case{"d M y", "1 févr. 2021", "2021-02-01", "fr_FR"},
        Case{"MMM d, yyyy", "3/4/2021", "2021-03-04"}, Case{"M d y", "3/4/99", "1999-03-04"},
        Case{"yyyyMMdd", "20210304", "2021-03-04"}}) {
    EXPECT_EQ(dayRead(reader(c.pattern, true, c.locale), c.text), c.day) << c.text;
  }
}

TEST(DateFormatter, NeverForgivesADayThatDoesNotExist) {
  for (const bool isLenient : {false, true}) {
    EXPECT_EQ(dayRead(reader("d/M/y", isLenient), "15/13/2021"), "none");
    EXPECT_EQ(dayRead(reader("d/M/y", isLenient), "30/2/2021"), "none");
    EXPECT_EQ(dayRead(reader("d/M/y", isLenient), "29/2/2024"), "2024-02-29");
  }
}

TEST(DateFormatter, HasNoTextForATimeThatIsNoNumber) {
  const DateFormatter day = formatter(Style::shortStyle, Style::none);
  EXPECT_EQ(day.string(Date::sinceReferenceDate(std::nan(""))), "");
  EXPECT_EQ(day.string(Date::sinceReferenceDate(HUGE_VAL)), "");
}

}  // namespace
}  // namespace corvane
