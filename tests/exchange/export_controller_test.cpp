// An export from its panel to the file: what is written, the settings in the panel, cancelling, and
// a file that cannot be written.

#include "exchange/exports/export_controller.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "exchange/scripted_window.h"
#include "support/temporary_folder.h"

namespace corvane {
namespace {

using testing::completes;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::PlainConfiguration;
using testing::readText;

class TableBroker : public ExportBroker {
 public:
  std::vector<std::map<std::string, std::string, std::less<>>> rows;
  std::optional<Rows> leading, trailing;
  std::optional<std::string> filename, title;
  ConfigurationPointer current = std::make_shared<PlainConfiguration>();
  std::function<void()> atValue;

  [[nodiscard]] std::vector<std::string> allFields() const override { return {"a", "b", "c"}; }
  [[nodiscard]] std::string fieldTitle(std::string_view field) const override {
    return "Title " + std::string(field);
  }
  [[nodiscard]] ConfigurationPointer configuration() const override { return current; }
  void setConfiguration(ConfigurationPointer now) override { current = std::move(now); }
  [[nodiscard]] std::optional<std::string> defaultFilename() const override { return filename; }
  [[nodiscard]] std::optional<std::string> titleForSavePanel() const override { return title; }
  [[nodiscard]] int exportRowCount() const override { return static_cast<int>(rows.size()); }
  [[nodiscard]] std::optional<std::string> exportValue(int row, std::string_view field) override {
    if (atValue) {
      atValue();
    }
    const auto& cells = rows.at(static_cast<std::size_t>(row));
    const auto found = cells.find(field);
    return found == cells.end() ? std::nullopt : std::optional(found->second);
  }
  [[nodiscard]] std::optional<Rows> leadingRows() const override { return leading; }
  [[nodiscard]] std::optional<Rows> trailingRows() const override { return trailing; }
};

class Exporting : public ::testing::Test {
 protected:
  Exporting() {
    broker->rows = {{{"a", "1"}, {"b", "say \"hi\"\n"}}, {{"c", "é,;"}}};
    window->file = folder / "out.csv";
  }

  testing::TemporaryFolder folder;
  std::shared_ptr<TableBroker> broker = std::make_shared<TableBroker>();
  std::shared_ptr<testing::ScriptedWindow> window = std::make_shared<testing::ScriptedWindow>();
  std::shared_ptr<ExportController> controller;

  bool exports() {
    controller = ExportController::make(broker);
    return completes([&](auto completion) { controller->beginExport(window, completion); });
  }
};

TEST_F(Exporting, WritesQuotedCellsAndTitles) {
  EXPECT_TRUE(exports());
  EXPECT_EQ(readText(folder / "out.csv"),
            "\"Title a\",\"Title b\",\"Title c\"\r\n"
            "\"1\",\"say \"\"hi\"\"\n\",\"\"\r\n"
            "\"\",\"\",\"é,;\"\r\n");
  EXPECT_THAT(window->heard, ElementsAre("save panel Export/Export//Untitled",
                                         "progress Exporting out.csv…", "end progress"));
  EXPECT_EQ(controller->progress()->totalUnitCount(), 2);
  EXPECT_EQ(controller->progress()->completedUnitCount(), 2);
  EXPECT_EQ(controller->saveAccessoryViewController(), nullptr);
}

TEST_F(Exporting, FillsRowsUpToTheLongest) {
  broker->leading = {{{"l1", "l2", "l3", "l4"}, {}}};
  broker->trailing = {{{"t"}}};
  EXPECT_TRUE(exports());
  EXPECT_EQ(readText(folder / "out.csv"),
            "\"l1\",\"l2\",\"l3\",\"l4\"\r\n\"\",\"\",\"\",\"\"\r\n"
            "\"Title a\",\"Title b\",\"Title c\",\"\"\r\n"
            "\"1\",\"say \"\"hi\"\"\n\",\"\",\"\"\r\n\"\",\"\",\"é,;\",\"\"\r\n"
            "\"t\",\"\",\"\",\"\"\r\n");
}

TEST_F(Exporting, TakesTheSettingsOfThePanel) {
  broker->filename = "Family";
  broker->title = "Exporting all.";
  window->inSavePanel = [&](ExportSaveAccessoryViewController& accessory) {
    EXPECT_TRUE(accessory.delimitByCommasButton.isOn && accessory.headerRowCheckboxButton.isOn);
    accessory.delimitByTabs();
    EXPECT_TRUE(accessory.delimitByTabsButton.isOn);
    accessory.setIncludesHeaderRow(false);
    window->setUp = [](ImportExportFieldSetupViewController& setup) {
      EXPECT_EQ(setup.totalRows(), 2);
      EXPECT_EQ(setup.exampleCell(0, 0).text, "1");
      setup.setSelectedRows({1});
      setup.removeSelectedFields();
    };
    accessory.configureFields();
    EXPECT_THAT(accessory.configuration()->fieldOrder, ElementsAre("a", "c"));
    // A setup that is cancelled changes nothing.
    window->goesOn = false;
    accessory.configureFields();
    EXPECT_THAT(accessory.configuration()->fieldOrder, ElementsAre("a", "c"));
    EXPECT_EQ(*accessory.configuration(), *broker->current);
  };
  EXPECT_TRUE(exports());
  EXPECT_EQ(window->heard.front(), "save panel Export/Export/Exporting all./Family");
  EXPECT_EQ(window->heard[1], "field setup on panel");
  EXPECT_EQ(window->contentTypes.front(), ImportExportWindow::ContentType::tabSeparatedText);
  EXPECT_EQ(readText(folder / "out.csv"), "\"1\"\t\"\"\r\n\"\"\t\"é,;\"\r\n");

  // Cancelling the panel puts the configuration back.
  window->file.reset();
  const ConfigurationPointer saved = broker->current;
  window->inSavePanel = [](auto& accessory) { accessory.delimitByCommas(); };
  EXPECT_FALSE(exports());
  EXPECT_EQ(*broker->current, *saved);
}

TEST_F(Exporting, OpensNoPanelForNothing) {
  broker->rows.clear();
  EXPECT_FALSE(exports());
  EXPECT_THAT(window->heard, IsEmpty());
}

TEST_F(Exporting, LeavesTheFileAsItWasWhenCancelledOrFailing) {
  testing::writeText(folder / "out.csv", "old");
  broker->rows.resize(100);
  broker->atValue = [&] { controller->progress()->cancel(); };
  EXPECT_FALSE(exports());
  EXPECT_EQ(window->heard.back(), "end progress");
  EXPECT_EQ(readText(folder / "out.csv"), "old");

  broker->atValue = nullptr;
  window->file = folder / "no" / "such" / "folder.csv";
  EXPECT_FALSE(exports());
  EXPECT_THAT(window->heard.back(), HasSubstr("error Cannot"));
}

}  // namespace
}  // namespace corvane
