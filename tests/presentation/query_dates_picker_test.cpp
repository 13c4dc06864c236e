// The choice of days and bar lengths.

#include "presentation/controls/query_dates_picker.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace corvane {
namespace {

using Preset = QueryDatesPicker::Preset;
using Selection = QueryDatesPicker::Selection;

class QueryDatesPickerTest : public ::testing::Test {
 protected:
  QueryDatesPickerTest() {
    picker.setCalendar(toronto);
    picker.setDates({2021, 3, 1}, {2021, 3, 10});
    picker.action = [this] { ++actions; };
  }

  static Preset preset(std::string label, Selection selection) {
    return {std::move(label), [=](YearMonthDay, const Calendar&) { return selection; }};
  }

  Calendar toronto{*TimeZone::withIdentifier("America/Toronto")};
  QueryDatesPicker picker{[this] { return YearMonthDay{2021, 3, 10}.startIn(toronto); }};
  int actions = 0;
};

TEST_F(QueryDatesPickerTest, KeepsTheStartBeforeTheEndAndBothWithinTheLimits) {
  picker.setLimits({2021, 2, 1}, {2021, 4, 1});
  picker.chooseStartDate({2021, 3, 20});
  EXPECT_EQ(picker.startDate(), (YearMonthDay{2021, 3, 10}));
  picker.chooseEndDate({2021, 1, 1});
  EXPECT_EQ(picker.endDate(), (YearMonthDay{2021, 3, 10}));
  picker.chooseStartDate({2020, 1, 1});
  EXPECT_EQ(picker.startDate(), (YearMonthDay{2021, 2, 1}));
  picker.chooseEndDate({2022, 1, 1});
  EXPECT_EQ(picker.endDate(), (YearMonthDay{2021, 4, 1}));
  EXPECT_EQ(actions, 4);
  EXPECT_EQ(picker.startDateLimits(), (ClosedRange<YearMonthDay>({2021, 2, 1}, {2021, 4, 1})));
  EXPECT_EQ(picker.endDateLimits(), (ClosedRange<YearMonthDay>({2021, 2, 1}, {2021, 4, 1})));
}

TEST_F(QueryDatesPickerTest, SpansTheWholeOfItsDays) {
  picker.setDates({2021, 3, 14}, {2021, 3, 14});
  // The clocks go forward on this day.
  const DateRange range = picker.nominalDateRange();
  EXPECT_EQ(range.upper().timeIntervalSince(range.lower()), 23 * 3600);
  picker.setDates({2021, 12, 31}, {2021, 12, 31});
  EXPECT_EQ(picker.nominalDateRange().upper(), (YearMonthDay{2022, 1, 1}.startIn(toronto)));
}

TEST_F(QueryDatesPickerTest, NamesThePresetThatIsChosen) {
  EXPECT_TRUE(picker.isPresetMenuHidden());
  picker.setPresets({preset("A", {{2021, 3, 1}, {2021, 3, 10}, QuoteInterval::oneDay}),
                     Preset::separator(),
                     preset("B", {{2021, 1, 1}, {2021, 1, 31}, QuoteInterval::oneWeek})});
  EXPECT_FALSE(picker.isPresetMenuHidden());
  EXPECT_EQ(picker.presetTitle(), "Custom Range") << "an hour is not a day";
  picker.choosePreset(2);
  EXPECT_EQ(picker.presetTitle(), "B");
  EXPECT_EQ(picker.startDate(), (YearMonthDay{2021, 1, 1}));
  EXPECT_EQ(picker.selectedInterval(), QuoteInterval::oneWeek);
  picker.choosePreset(1);
  EXPECT_EQ(actions, 1) << "a separator is no choice";
  picker.chooseEndDate({2021, 2, 1});
  EXPECT_EQ(picker.presetTitle(), "Custom Range");

  picker.setAllowsIntervalSelection(false);
  picker.setDates({2021, 3, 1}, {2021, 3, 10});
  EXPECT_EQ(picker.presetTitle(), "A");
  // Of a year in whose middle the limits begin, the rest is the year.
  picker.setLimits({2021, 1, 15}, {2021, 12, 31});
  picker.choosePreset(2);
  EXPECT_EQ(picker.startDate(), (YearMonthDay{2021, 1, 15}));
  EXPECT_EQ(picker.presetTitle(), "B");
}

TEST_F(QueryDatesPickerTest, StepsToTheNextIntervalThatCanBeHad) {
  std::vector<DateRange> asked;
  std::set<QuoteInterval> available = {QuoteInterval::oneMinute, QuoteInterval::oneDay};
  picker.setAvailableIntervalsFilter([&](const DateRange& range) {
    asked.push_back(range);
    return available;
  });
  EXPECT_EQ(asked.back(), picker.nominalDateRange());
  EXPECT_EQ(picker.selectedInterval(), QuoteInterval::oneDay) << "the one after an hour";
  picker.chooseInterval(QuoteInterval::fiveDays);
  EXPECT_EQ(picker.selectedInterval(), QuoteInterval::oneMinute) << "around the end";
  EXPECT_TRUE(picker.isIntervalEnabled(0));
  EXPECT_FALSE(picker.isIntervalEnabled(1));
  available.clear();
  picker.chooseStartDate({2021, 2, 1});
  EXPECT_EQ(asked.back(), picker.nominalDateRange());
  EXPECT_EQ(picker.selectedInterval(), QuoteInterval::oneMinute) << "without any it stays";
}

}  // namespace
}  // namespace corvane
