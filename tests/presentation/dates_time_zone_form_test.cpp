#include "presentation/frame/dates_time_zone_form.h"

#include "platform/text/formats/date_formatter.h"
#include "storage/workspace_world.h"

namespace corvane::testing {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;

TimeZone zone(const std::string& name) {
  return *TimeZone::withIdentifier(name);
}

class DatesTimeZoneFormTest : public ::testing::Test {
 protected:
  WorkspaceWorld world;

  void travelTo(const std::string& name) {
    world.surroundings.presentTimeZone = [name] { return zone(name); };
  }
  /// A workspace with one row, of New Year in Tokyo, open in Toronto.
  std::shared_ptr<WorkspaceDocument> travelled() {
    travelTo("Asia/Tokyo");
    const auto written = world.newDocument();
    world.make.on(YearMonthDay{2025, 1, 1}.startIn(Calendar(zone("Asia/Tokyo"))));
    world.deposit(*written, "100");
    written->save(world.file);
    travelTo("America/Toronto");
    return world.open(world.file);
  }
  static YearMonthDay dayOf(const WorkspaceDocument& document) {
    const auto& manager = document.model()->portfolioManagers.front();
    const auto& rows = manager->portfolios().front()->transactions();
    return YearMonthDay::of(rows.front()->settlementDate(), manager->calendar);
  }
  static std::string textOf(const YearMonthDay& day) {
    const Calendar calendar;
    return DateFormatter{.dateStyle = DateFormatter::Style::mediumStyle,
                         .timeZone = calendar.timeZone()}
        .string(day.startIn(calendar));
  }

  const std::string newYear = textOf({2025, 1, 1});
  const std::string newYearsEve = textOf({2024, 12, 31});
};

TEST_F(DatesTimeZoneFormTest, ProposesTheZoneOfDoubtfulDaysAndSaysWhatItDoes) {
  const auto document = travelled();
  DatesTimeZoneForm form(*document);
  EXPECT_THAT(form.stateLabel.text, HasSubstr("written in the time zone Asia/Tokyo"));
  EXPECT_TRUE(form.fixedButton.isOn);
  EXPECT_EQ(form.zoneField.text, "Asia/Tokyo");
  EXPECT_THAT(form.effectLabel.text,
              HasSubstr("what is " + newYearsEve + " now will be " + newYear + "."));
  form.choosePresent();
  EXPECT_EQ(form.effectLabel.text, "All days stay as you see them now.");
  EXPECT_TRUE(document->model()->datesDoubt) << "nothing is decided yet";
  form.chooseFixed();
  form.apply();
  EXPECT_EQ(dayOf(*document), (YearMonthDay{2025, 1, 1}));
  EXPECT_FALSE(document->model()->datesDoubt);
}

TEST_F(DatesTimeZoneFormTest, ChangesADecisionOfBefore) {
  const auto document = travelled();
  document->useDatesTimeZone(zone("Asia/Tokyo"));
  {
    DatesTimeZoneForm form(*document);
    EXPECT_EQ(form.stateLabel.text,
              "The days of this workspace are those of Asia/Tokyo, wherever you open it.");
    EXPECT_TRUE(form.fixedButton.isOn);
    form.choosePresent();
    EXPECT_THAT(form.effectLabel.text,
                HasSubstr("what is " + newYear + " now will be " + newYearsEve + "."));
    form.apply();
  }
  EXPECT_EQ(dayOf(*document), (YearMonthDay{2024, 12, 31}));
  DatesTimeZoneForm form(*document);
  EXPECT_THAT(form.stateLabel.text, HasSubstr("your own time zone, which is America/Toronto now"));
  EXPECT_TRUE(form.presentButton.isOn);
  form.typeZone("Asia/Tokyo");
  EXPECT_TRUE(form.fixedButton.isOn) << "who names a zone means it";
  form.apply();
  EXPECT_EQ(dayOf(*document), (YearMonthDay{2025, 1, 1}));
}

TEST_F(DatesTimeZoneFormTest, TakesOnlyAZoneThatIsKnown) {
  const auto document = travelled();
  DatesTimeZoneForm form(*document);
  form.typeZone("Toronto");
  EXPECT_FALSE(form.goButton.isEnabled);
  EXPECT_THAT(form.zoneField.error, HasSubstr("“Toronto” is no time zone"));
  EXPECT_EQ(form.effectLabel.text, "");
  form.typeZone("");
  EXPECT_FALSE(form.goButton.isEnabled);
  EXPECT_EQ(form.zoneField.error, "");
  form.choosePresent();
  EXPECT_TRUE(form.goButton.isEnabled);
}

TEST_F(DatesTimeZoneFormTest, NamesAZoneThatIsNotKnownHere) {
  travelled()->save(world.file);
  writeText(world.file / WorkspaceDocument::generalPropertiesName,
            R"({"datesTimeZone":{"identifier":"Mars/Olympus","isUsedEverywhere":true}})");
  const auto document = world.open(world.file);
  DatesTimeZoneForm form(*document);
  EXPECT_THAT(form.stateLabel.text,
              AllOf(HasSubstr("Mars/Olympus, a time zone that is not known here"),
                    HasSubstr("America/Toronto")));
  EXPECT_FALSE(form.goButton.isEnabled);
}

}  // namespace
}  // namespace corvane::testing
