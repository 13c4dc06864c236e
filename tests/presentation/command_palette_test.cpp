#include "presentation/frame/command_palette.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "presentation/portfolio_screen_world.h"

namespace corvane::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

int scoreOf(std::string_view query, std::string_view text) {
  const auto match = matchSubsequence(query, text);
  return match ? match->score : -1;
}

TEST(SubsequenceMatch, FindsLettersInTheirOrderWhateverTheirCase) {
  EXPECT_THAT(matchSubsequence("nt", "New Transaction…")->places, ElementsAre(0, 4));
  EXPECT_THAT(matchSubsequence("ÉTA", "bonds d’État")->places, ElementsAre(8, 9, 10));
  EXPECT_THAT(matchSubsequence("new por", "New Portfolio")->places, ElementsAre(0, 1, 2, 4, 5, 6));
  EXPECT_FALSE(matchSubsequence("ba", "ab"));
  EXPECT_FALSE(matchSubsequence("aa", "a"));
  EXPECT_FALSE(matchSubsequence("a", ""));
  EXPECT_EQ(matchSubsequence("  ", "anything"), SubsequenceMatch());
}

TEST(SubsequenceMatch, TakesTheBestOfManyWays) {
  // Not the first "p" and "r": those that begin a word and stand in a row.
  EXPECT_THAT(matchSubsequence("pr", "Empty Prices")->places, ElementsAre(6, 7));
  EXPECT_GT(scoreOf("pr", "Prices"), scoreOf("pr", "Empty Prices"));
  EXPECT_GT(scoreOf("rp", "Refresh Prices"), scoreOf("rp", "Carpenter"));
  EXPECT_GT(scoreOf("tra", "New Transaction…"), scoreOf("tra", "Portfolio Details of Arthur"));
}

TEST(SubsequenceMatch, LooksNoFurtherThanItSays) {
  const std::string longText(256, 'a');
  EXPECT_TRUE(matchSubsequence(std::string(200, 'a'), longText));
  EXPECT_FALSE(matchSubsequence("b", longText + "b"));
}

class CommandPaletteTest : public ::testing::Test {
 protected:
  CommandPaletteEntry entry(std::string title, std::string context, bool isEnabled = true) {
    return {.title = title,
            .context = std::move(context),
            .isEnabled = isEnabled,
            .perform = [this, title] { performed.push_back(title); }};
  }
  std::vector<std::string> titles() const {
    std::vector<std::string> all;
    for (const auto& row : palette.rows()) {
      all.push_back(row.entry->title);
    }
    return all;
  }

  CommandPalette palette;
  std::vector<std::string> performed;
};

TEST_F(CommandPaletteTest, ShowsAllThenTheBestFirst) {
  palette.setEntries({entry("Import Transactions…", "File"), entry("New Transaction…", "Portfolio"),
                      entry("Note", "Portfolio", false), entry("NOT", "Watched equity"),
                      entry("Pension", "Portfolio")});
  EXPECT_THAT(titles(),
              ElementsAre("Import Transactions…", "New Transaction…", "Note", "NOT", "Pension"));
  palette.setQuery("NT");
  EXPECT_THAT(titles(), ElementsAre("New Transaction…", "NOT", "Import Transactions…", "Note"))
      << "what cannot be done comes last";
  EXPECT_THAT(palette.rows().front().foundInTitle, ElementsAre(0, 4));
  palette.setQuery("port pens");
  EXPECT_THAT(titles(), ElementsAre("Pension"));
  EXPECT_THAT(palette.rows().front().foundInTitle, IsEmpty());
  palette.setQuery("xyz");
  EXPECT_EQ(palette.selectedRow(), std::nullopt);
  EXPECT_EQ(palette.status(), "Nothing fits these letters.");
  EXPECT_FALSE(palette.chosen());
}

TEST_F(CommandPaletteTest, MovesItsSelectionAndPerformsWhatCanBeDone) {
  CommandPaletteEntry sidebar = entry("Show Source List", "View");
  sidebar.shortcut = "F9";
  sidebar.isOn = true;
  palette.setEntries({entry("Undo", "Edit", false), sidebar, entry("Quit", "File")});
  EXPECT_FALSE(palette.chosen()) << "nothing can be undone";
  EXPECT_EQ(palette.status(), "Undo, Edit, not available now. 1 of 3.");
  palette.moveSelection(1);
  EXPECT_EQ(palette.status(), "Show Source List, F9, View, on. 2 of 3.");
  palette.moveSelection(10);
  EXPECT_EQ(palette.selectedRow(), 2U);
  palette.moveSelection(-1);
  palette.selectRow(7);
  (*palette.chosen())();
  EXPECT_THAT(performed, ElementsAre("Show Source List"));
}

class PaletteOfAWorkspace : public PortfolioScreenWorld {};

TEST_F(PaletteOfAWorkspace, HasPortfoliosWatchedAndHeldEquitiesOnce) {
  WorkspaceModel model;
  model.portfolioManagers = {manager};
  portfolio->name = "Pension";
  record({deposit("9000"), buy("100", "3000"), depositDollars("500"), buyForeign("5", "50", "60"),
          sell("100", "3500")});
  const auto watched = prices->equityWithId("WAT");
  watched->name = "Watts & Sons";
  model.watchlistEquities = {watched};
  std::vector<std::string> shown;
  CommandPalette palette;
  palette.setEntries(paletteEntriesOf(
      model, [&](const PortfolioPointer& one) { shown.push_back(one->name); },
      [&](const EquityPointer& one) { shown.push_back(one->symbol); }));
  std::vector<std::string> texts;
  for (std::size_t i = 0; i < palette.rows().size(); ++i) {
    texts.push_back(palette.accessibleText(i));
  }
  EXPECT_THAT(texts, ElementsAre("Pension, Portfolio", "WAT — Watts & Sons, Watched equity",
                                 "XYZ, Held equity"));
  palette.setQuery("sons");
  (*palette.chosen())();
  palette.setQuery("pen");
  (*palette.chosen())();
  EXPECT_THAT(shown, ElementsAre("WAT", "Pension"));
}

}  // namespace
}  // namespace corvane::testing
