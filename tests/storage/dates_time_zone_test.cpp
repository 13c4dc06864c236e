// Workspaces that go with their user from one time zone to another.

#include <ranges>

#include "platform/text/formats/date_formatter.h"
#include "storage/workspace_world.h"

namespace corvane::testing {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;

TimeZone zone(const std::string& name) {
  return *TimeZone::withIdentifier(name);
}

class TravellingWorkspace : public ::testing::Test {
 protected:
  WorkspaceWorld world;

  void travelTo(const std::string& name) {
    world.surroundings.presentTimeZone = [name] { return zone(name); };
  }
  /// Records a deposit on the day that the workspace, open in the present zone, has for it.
  void record(WorkspaceDocument& document, const YearMonthDay& day) {
    world.make.on(day.startIn(document.model()->portfolioManagers.front()->calendar));
    world.deposit(document, "100");
  }
  /// A workspace with deposits on these days, recorded in the zone called `name`.
  void writeIn(const std::string& name, const std::vector<YearMonthDay>& days) {
    travelTo(name);
    const auto document = world.newDocument();
    for (const YearMonthDay& day : days) {
      record(*document, day);
    }
    document->save(world.file);
  }
  void addADayIn(const std::string& name) {
    travelTo(name);
    const auto document = world.open(world.file);
    record(*document, {2025, 3, 9});
    document->save(world.file);
  }
  /// Takes the note away, as in the file of an older program.
  void forgetZone() { writeText(world.file / WorkspaceDocument::generalPropertiesName, "{}"); }

  static std::vector<YearMonthDay> daysOf(const WorkspaceDocument& document) {
    const auto& manager = document.model()->portfolioManagers.front();
    std::vector<YearMonthDay> days;
    for (const auto& row : manager->portfolios().front()->transactions()) {
      days.push_back(YearMonthDay::of(row->settlementDate(), manager->calendar));
    }
    return days;
  }
  [[nodiscard]] bool isDoubtfulIn(const std::string& name) {
    travelTo(name);
    return world.open(world.file)->model()->datesDoubt.has_value();
  }
};

const std::vector<YearMonthDay> winterAndSummer = {{2024, 1, 1}, {2024, 7, 1}, {2025, 1, 1}};

TEST_F(TravellingWorkspace, SaysSoWhereItsDaysComeOutDifferently) {
  struct Case {
    const char* written;
    const char* open;
    bool isDoubtful;
    bool isDoubtfulWithoutNote;
  };
  const Case cases[] = {{"Asia/Tokyo", "America/Toronto", true, true},
                        {"America/Toronto", "America/Vancouver", true, true},
                        {"Europe/London", "America/Toronto", true, true},
                        // Only the days of summer start an hour before midnight there.
                        {"Europe/London", "Atlantic/Reykjavik", true, true},
                        {"America/Vancouver", "America/Toronto", false, false},
                        {"America/Toronto", "Asia/Tokyo", false, false},
                        {"America/Toronto", "America/New_York", false, false},
                        {"Europe/London", "Europe/London", false, false},
                        // Half a day from Greenwich nobody can tell from the rows alone.
                        {"Pacific/Auckland", "Europe/London", true, false}};
  for (const auto& [written, open, isDoubtful, isDoubtfulWithoutNote] : cases) {
    writeIn(written, winterAndSummer);
    EXPECT_EQ(isDoubtfulIn(open), isDoubtful) << written << " in " << open;
    forgetZone();
    EXPECT_EQ(isDoubtfulIn(open), isDoubtfulWithoutNote) << written << " in " << open;
    EXPECT_FALSE(isDoubtfulIn(written)) << written;
    fs::remove_all(world.file);
  }
}

/// As the user's language writes it.
std::string textOf(const YearMonthDay& day) {
  const Calendar calendar(zone("America/Toronto"));
  return DateFormatter{.dateStyle = DateFormatter::Style::mediumStyle,
                       .timeZone = calendar.timeZone()}
      .string(day.startIn(calendar));
}

TEST_F(TravellingWorkspace, NamesTheZoneAndADay) {
  const std::string written = textOf({2025, 1, 1});
  const std::string shown = textOf({2024, 12, 31});
  writeIn("Asia/Tokyo", winterAndSummer);
  travelTo("America/Toronto");
  EXPECT_THAT(
      world.open(world.file)->model()->datesDoubt.value().description(),
      AllOf(HasSubstr("were written in the time zone Asia/Tokyo. In America/Toronto, where"),
            HasSubstr(written + " is shown as " + shown + ".")));
  forgetZone();
  EXPECT_THAT(world.open(world.file)->model()->datesDoubt.value().description(),
              AllOf(HasSubstr("seem to have been written in another time zone."),
                    HasSubstr("shown as " + shown + " was perhaps " + written + ".")));
}

TEST_F(TravellingWorkspace, TakesRowsWithATimeOfDayForWhatTheyAre) {
  writeIn("America/Toronto", {});
  const auto document = world.open(world.file);
  for (const double hour : {14.0, 20.5, 15.25}) {
    world.make.on(Date::since1970(hour * 3600));
    world.deposit(*document, "100");
  }
  document->save(world.file);
  forgetZone();
  EXPECT_FALSE(isDoubtfulIn("America/Vancouver"));
}

TEST_F(TravellingWorkspace, HasItsDaysBackInItsOwnZone) {
  writeIn("Asia/Tokyo", winterAndSummer);
  travelTo("America/Toronto");
  const auto document = world.open(world.file);
  EXPECT_NE(daysOf(*document), winterAndSummer);
  record(*document, {2025, 3, 9});

  document->useDatesTimeZone(zone("Asia/Tokyo"));
  EXPECT_EQ(document->model()->datesDoubt, std::nullopt);
  auto days = winterAndSummer;
  days.push_back({2025, 3, 9});
  EXPECT_EQ(daysOf(*document), days);  // the unsaved row is there as well
  EXPECT_TRUE(document->isDocumentEdited());
  const auto portfolio = document->model()->portfolios().front();
  EXPECT_FALSE(portfolio->snapshotsByYear.contains(2023));
  record(*document, {2025, 3, 10});
  document->save(world.file);
  days.push_back({2025, 3, 10});
  for (const char* place : {"America/Toronto", "Asia/Tokyo", "Pacific/Honolulu"}) {
    EXPECT_FALSE(isDoubtfulIn(place));
    EXPECT_EQ(daysOf(*world.open(world.file)), days) << place;
  }
}

TEST_F(TravellingWorkspace, KeepsUndoStepsWhenTheUserDecides) {
  writeIn("Asia/Tokyo", winterAndSummer);
  travelTo("America/Toronto");
  const auto document = world.open(world.file);
  record(*document, {2025, 3, 9});
  const auto portfolio = document->model()->portfolios().front();
  int changes = 0;
  const auto news = NotificationCenter::defaultCenter().addObserver(
      PortfolioManager::didChangePortfolio, document->model()->portfolioManagers.front().get(),
      [&](const auto& change) { changes += change.portfolio == portfolio ? 1 : 0; });

  document->useDatesTimeZone(zone("Asia/Tokyo"));
  EXPECT_EQ(changes, 1) << "the screens have other days to show";
  auto days = winterAndSummer;
  days.push_back({2025, 3, 9});
  EXPECT_EQ(daysOf(*document), days);
  document->undoManager()->undo();
  EXPECT_EQ(daysOf(*document), winterAndSummer);
  EXPECT_TRUE(document->isDocumentEdited()) << "the decision is not undone";
  document->undoManager()->redo();
  EXPECT_EQ(daysOf(*document), days);
}

TEST_F(TravellingWorkspace, LetsTheUserDecideAgain) {
  writeIn("Asia/Tokyo", winterAndSummer);
  travelTo("America/Toronto");
  const auto document = world.open(world.file);
  const auto shown = daysOf(*document);
  for (int i = 0; i < 2; ++i) {
    document->useDatesTimeZone(zone("Asia/Tokyo"));
    EXPECT_EQ(daysOf(*document), winterAndSummer);
    document->usePresentTimeZone();
    EXPECT_EQ(daysOf(*document), shown);
  }
  EXPECT_EQ(document->model()->datesTimeZone, DatesTimeZone{"America/Toronto"});
}

TEST_F(TravellingWorkspace, CountsARowInNoYearButItsOwn) {
  writeIn("Asia/Tokyo", {{2024, 1, 1}, {2024, 7, 1}});
  travelTo("America/Toronto");
  const auto yearsOf = [](const WorkspaceDocument& document) {
    const auto portfolio = document.model()->portfolios().front();
    EXPECT_FALSE(portfolio->transactions().empty());
    const auto years = std::views::keys(portfolio->snapshotsByYear);
    return std::vector(years.begin(), years.end());
  };
  const auto expectCash = [&](const WorkspaceDocument& document, const char* amount) {
    const auto& end = document.model()->portfolios().front()->snapshotsByYear.rbegin()->second;
    EXPECT_EQ(end.currencySnapshots.get(Currency::cad()).cashOnHand,
              Decimal::fromWholeString(amount));
  };
  const auto document = world.open(world.file);
  record(*document,
         {2023, 6, 1});  // and with it the totals of 2023, to which New Year belongs here
  document->undoManager()->undo();
  EXPECT_EQ(yearsOf(*document), std::vector({2023, 2024}));
  document->save(world.file);

  document->useDatesTimeZone(zone("Asia/Tokyo"));
  EXPECT_EQ(yearsOf(*document), std::vector({2024}));
  record(*document, {2024, 3, 1});
  expectCash(*document, "300");
  travelTo("Asia/Tokyo");
  const auto reopened = world.open(world.file);
  EXPECT_EQ(yearsOf(*reopened), std::vector({2024}));
  record(*reopened, {2024, 3, 1});
  expectCash(*reopened, "300");
}

TEST_F(TravellingWorkspace, KeepsThePresentZoneWhereTheUserSaysSo) {
  writeIn("Asia/Tokyo", winterAndSummer);
  travelTo("America/Toronto");
  const auto document = world.open(world.file);
  const auto shown = daysOf(*document);
  document->usePresentTimeZone();
  EXPECT_EQ(document->model()->datesDoubt, std::nullopt);
  document->save(world.file);
  EXPECT_FALSE(isDoubtfulIn("America/Toronto"));
  EXPECT_EQ(daysOf(*world.open(world.file)), shown);
  EXPECT_TRUE(isDoubtfulIn("Asia/Tokyo"));
}

TEST_F(TravellingWorkspace, StaysDoubtfulUntilTheUserDecides) {
  writeIn("Asia/Tokyo", winterAndSummer);
  addADayIn("America/Toronto");
  EXPECT_TRUE(isDoubtfulIn("America/Toronto"));
  forgetZone();
  const auto older = world.open(world.file);
  EXPECT_EQ(older->model()->datesTimeZone.value().identifier, "America/Toronto");
}

TEST_F(TravellingWorkspace, NotesTheZoneInWhichItWasWrittenLast) {
  writeIn("America/Vancouver", winterAndSummer);
  // In Toronto these are the same days, but those of Toronto are others in Vancouver.
  addADayIn("America/Toronto");
  EXPECT_TRUE(isDoubtfulIn("America/Vancouver"));
  const auto doubt = world.open(world.file)->model()->datesDoubt;
  ASSERT_TRUE(doubt);
  EXPECT_EQ(doubt->written, zone("America/Toronto"));
}

TEST_F(TravellingWorkspace, GoesOnWithAZoneThatIsNotKnownHere) {
  writeIn("America/Toronto", winterAndSummer);
  const std::string note =
      R"("datesTimeZone":{"identifier":"Mars/Olympus","isUsedEverywhere":true})";
  writeText(world.file / WorkspaceDocument::generalPropertiesName, "{" + note + "}");
  const auto document = world.open(world.file);
  EXPECT_EQ(document->model()->datesDoubt, std::nullopt);
  EXPECT_EQ(daysOf(*document), winterAndSummer);
  document->save(world.file);
  EXPECT_THAT(readText(world.file / WorkspaceDocument::generalPropertiesName), HasSubstr(note));
}

}  // namespace
}  // namespace corvane::testing
