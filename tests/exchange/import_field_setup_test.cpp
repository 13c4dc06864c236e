// The field setup: samples, titles, pop-ups, what the buttons do, and undo.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "exchange/panels/import_export_field_setup_view_controller.h"

namespace corvane {
namespace {

using ::testing::ElementsAre;
using View = ImportExportFieldSetupViewController;
using Mode = View::Mode;

class FieldSetup : public ::testing::Test {
 protected:
  std::shared_ptr<View> setup = std::make_shared<View>();
  std::vector<ConfigurationPointer> told;

  void prepare(Mode mode, int totalRows, std::vector<std::string> order = {"a", "b", "c"},
               bool hasHeader = true) {
    setup = std::make_shared<View>();
    View::DefaultBasicConfiguration configuration;
    configuration.fieldOrder = std::move(order);
    configuration.includesHeaderRow = hasHeader;
    setup->configurationChangedHandler = [this](auto made) { told.push_back(std::move(made)); };
    setup->prepare(
        mode, {"a", "b", "c", "d"}, {{"a", "A"}, {"b", "B"}, {"c", "C"}}, totalRows,
        [](int row, int column) { return std::to_string(row) + "/" + std::to_string(column); },
        std::make_shared<View::DefaultBasicConfiguration>(configuration));
  }
  [[nodiscard]] const std::vector<std::string>& order() const {
    return setup->configuration()->fieldOrder;
  }
};

TEST_F(FieldSetup, DrawsItsSamples) {
  prepare(Mode::importing, 0);
  EXPECT_EQ(setup->sampleIndex1(), std::nullopt);
  EXPECT_EQ(setup->exampleTitle(0), "");
  prepare(Mode::importing, 1);
  EXPECT_EQ(setup->sampleIndex1(), 0);
  EXPECT_EQ(setup->sampleIndex2(), std::nullopt);
  prepare(Mode::importing, 2);
  EXPECT_EQ(setup->sampleIndex1(), 1);
  EXPECT_EQ(setup->sampleIndex2(), 1);
  for (int attempt = 0; attempt < 50; ++attempt) {
    prepare(Mode::importing, 5);
    EXPECT_THAT(setup->sampleIndex2().value(),
                ::testing::AllOf(::testing::Ge(2), ::testing::Lt(5)));
  }
  const auto second = setup->sampleIndex2();
  setup->setIncludesHeaderRow(false);
  EXPECT_EQ(setup->sampleIndex1(), 0);
  EXPECT_EQ(setup->sampleIndex2(), second);
  EXPECT_EQ(setup->exampleCell(2, 0), (View::ExampleCell{"0/2", false}));
}

TEST_F(FieldSetup, NamesThePreviewByTheLineOfTheFile) {
  prepare(Mode::importing, 5);
  EXPECT_EQ(setup->exampleTitle(0), "Preview (Row 2)");
  prepare(Mode::exporting, 5);
  EXPECT_EQ(setup->exampleTitle(0), "Preview (Row 2)");
  prepare(Mode::exporting, 5, {"a"}, /*hasHeader=*/false);
  EXPECT_EQ(setup->exampleTitle(0), "Preview (Row 1)");
}

TEST_F(FieldSetup, OffersTheFieldsOfAColumn) {
  using enum View::CheckState;
  prepare(Mode::importing, 3, {"b", "", "d"});
  EXPECT_THAT(setup->fieldItems(0),
              ElementsAre(View::FieldItem{"A", "a", off}, View::FieldItem{"B", "b", on},
                          View::FieldItem{"C", "c", off}, View::FieldItem{"?", "d", mixed},
                          View::FieldItem{"Ignore Field 1", "", off}));
  EXPECT_EQ(setup->fieldItems(1).back(), (View::FieldItem{"Ignore Field 2", "", on}));
  EXPECT_EQ(setup->orderText(2), "3.");
  EXPECT_TRUE(setup->exampleCell(1, 0).isSecondary);
  prepare(Mode::exporting, 3);
  EXPECT_EQ(setup->fieldItems(0).size(), 4U);
}

TEST_F(FieldSetup, ShowsWhatBelongsToAnImport) {
  prepare(Mode::importing, 3);
  EXPECT_FALSE(setup->allowsMultipleSelection());
  EXPECT_TRUE(setup->addButton().isHidden && setup->removeButton().isHidden &&
              setup->resetButton().isHidden);
  EXPECT_EQ(setup->importHasHeaderRowCheckboxButton().title,
            "File includes header row (2 data rows, 3 fields)");
  setup->setIncludesHeaderRow(false);
  EXPECT_EQ(setup->importHasHeaderRowCheckboxButton().title,
            "File includes header row (3 data rows, 3 fields)");
  ASSERT_EQ(told.size(), 1U);
  EXPECT_FALSE(told.back()->includesHeaderRow);
}

TEST_F(FieldSetup, LeavesAFieldInOneRowOnly) {
  prepare(Mode::importing, 3, {"a", "b", "", ""});
  setup->changeField(0, "b");
  EXPECT_THAT(order(), ElementsAre("b", "a", "", ""));
  setup->changeField(0, "");
  EXPECT_THAT(order(), ElementsAre("", "a", "", ""));
  setup->changeField(2, "a");
  EXPECT_THAT(order(), ElementsAre("", "", "a", ""));
  EXPECT_EQ(told.size(), 3U);
  EXPECT_EQ(told.back()->fieldOrder, order());
}

TEST_F(FieldSetup, AddsRemovesAndResetsFieldsOfAnExport) {
  prepare(Mode::exporting, 3, {"c", "a"});
  EXPECT_TRUE(setup->importHasHeaderRowCheckboxButton().isHidden);
  EXPECT_FALSE(setup->removeButton().isEnabled);
  setup->setSelectedRows({0});
  setup->addField();
  EXPECT_THAT(order(), ElementsAre("c", "b", "a"));
  EXPECT_THAT(setup->selectedRows(), ElementsAre(1U));
  setup->setSelectedRows({});
  setup->addField();
  EXPECT_THAT(order(), ElementsAre("c", "b", "a", "d"));
  EXPECT_FALSE(setup->addButton().isEnabled);
  setup->setSelectedRows({0, 1, 2, 3});
  EXPECT_FALSE(setup->removeButton().isEnabled);
  setup->removeSelectedFields();
  EXPECT_EQ(order().size(), 4U);
  setup->setSelectedRows({0, 2});
  setup->removeSelectedFields();
  EXPECT_THAT(order(), ElementsAre("b", "d"));
  EXPECT_TRUE(setup->resetButton().isEnabled);
  setup->resetFields();
  EXPECT_THAT(order(), ElementsAre("a", "b", "c", "d"));
  EXPECT_FALSE(setup->resetButton().isEnabled);
  setup->moveFields({0, 2}, 4);
  EXPECT_THAT(order(), ElementsAre("b", "d", "a", "c"));
  setup->moveFields({3}, 1);
  EXPECT_THAT(order(), ElementsAre("b", "c", "d", "a"));
}

TEST_F(FieldSetup, UndoesAndRedoesEveryChangeByItsName) {
  prepare(Mode::exporting, 3, {"a", "b"});
  const std::vector<std::pair<std::string, std::function<void()>>> changes = {
      {"Add “C”", [&] { setup->addField(); }},
      {"Add “?”", [&] { setup->addField(); }},
      {"Remove “C”",
       [&] {
         setup->setSelectedRows({2});
         setup->removeSelectedFields();
       }},
      {"Remove 2 Fields",
       [&] {
         setup->setSelectedRows({0, 1});
         setup->removeSelectedFields();
       }},
      {"Reset Field Order", [&] { setup->resetFields(); }},
      {"Change to “B”", [&] { setup->changeField(0, "b"); }},
      {"Change to Ignore Field", [&] { setup->changeField(0, ""); }},
      {"Move “A”", [&] { setup->moveFields({1}, 3); }},
      {"Move 2 Fields",
       [&] {
         setup->moveFields({0, 1}, 4);
       }},
  };
  std::vector<std::vector<std::string>> states = {order()};
  for (const auto& [name, change] : changes) {
    change();
    EXPECT_EQ(setup->undoManager->undoActionName(), name);
    EXPECT_NE(order(), states.back());
    states.push_back(order());
  }
  for (std::size_t step = changes.size(); step > 0; --step) {
    EXPECT_EQ(setup->undoManager->undoActionName(), changes[step - 1].first);
    EXPECT_TRUE(setup->undoManager->undo());
    EXPECT_EQ(order(), states[step - 1]);
    EXPECT_EQ(told.back()->fieldOrder, order());
  }
  for (std::size_t step = 0; step < changes.size(); ++step) {
    EXPECT_EQ(setup->undoManager->redoActionName(), changes[step].first);
    EXPECT_TRUE(setup->undoManager->redo());
    EXPECT_EQ(order(), states[step + 1]);
  }
}

TEST_F(FieldSetup, CompletesOnce) {
  prepare(Mode::importing, 1);
  int completions = 0;
  setup->completionHandler = [&](bool goesOn) {
    EXPECT_TRUE(goesOn);
    ++completions;
  };
  setup->submit();
  setup->cancel();
  EXPECT_EQ(completions, 1);
}

TEST_F(FieldSetup, StartsWithAPlainConfigurationThatCanBeKept) {
  const View view;
  const auto& plain = dynamic_cast<const View::DefaultBasicConfiguration&>(*view.configuration());
  EXPECT_EQ(plain.json().text(),
            R"({"fieldDelimiter":"comma","includesHeaderRow":true,"fieldOrder":[]})");
  EXPECT_EQ(View::DefaultBasicConfiguration::fromJSON(plain.json()), plain);
}

}  // namespace
}  // namespace corvane
