// A window whose user answers as a test tells him, and which notes what it was asked to show.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "exchange/panels/export_save_accessory_view_controller.h"
#include "exchange/panels/import_export_controller.h"
#include "platform/async/dispatch_queue.h"

namespace corvane::testing {

/// What a broker of a test is set up with.
struct PlainConfiguration : ImportExportConfigurationValue<PlainConfiguration> {
  int setting = 0;
  [[nodiscard]] bool hasSameSettings(const PlainConfiguration& other) const {
    return setting == other.setting;
  }
};

class ScriptedWindow : public ImportExportWindow {
 public:
  /// The answer to a panel.
  std::optional<std::filesystem::path> file;
  /// What the user does in the field setup before he leaves it, and how he leaves it.
  std::function<void(ImportExportFieldSetupViewController&)> setUp;
  bool goesOn = true;
  /// What the user does in the save panel.
  std::function<void(ExportSaveAccessoryViewController&)> inSavePanel;
  /// Called when the progress sheet appears.
  std::function<void(ImportExportProgressViewController&)> atProgress;

  /// What was shown, in order.
  std::vector<std::string> heard;
  std::vector<ContentType> contentTypes;

  std::vector<std::string> takeHeard() { return std::exchange(heard, {}); }

  void beginOpenPanel(const OpenPanel& panel, PanelCompletion completion) override {
    heard.push_back("open panel " + panel.title + "/" + panel.prompt);
    contentTypes = panel.contentTypes;
    completion(file);
  }
  void beginSavePanel(const SavePanel& panel, PanelCompletion completion) override {
    heard.push_back("save panel " + panel.title + "/" + panel.prompt + "/" + panel.message + "/" +
                    panel.nameField);
    contentTypes = panel.contentTypes;
    if (inSavePanel) {
      inSavePanel(*panel.accessory);
    }
    completion(file);
  }
  void setSavePanelContentTypes(const std::vector<ContentType>& types) override {
    contentTypes = types;
  }
  void beginFieldSetup(const std::shared_ptr<ImportExportFieldSetupViewController>& setup,
                       SheetParent parent) override {
    heard.push_back(parent == SheetParent::window ? "field setup" : "field setup on panel");
    if (setUp) {
      setUp(*setup);
    }
    goesOn ? setup->submit() : setup->cancel();
  }
  void endFieldSetup() override { heard.push_back("end field setup"); }
  void beginProgress(const std::shared_ptr<ImportExportProgressViewController>& progress) override {
    heard.push_back("progress " + progress->statusLabel.text);
    sheet = progress;
    if (atProgress) {
      atProgress(*progress);
    }
  }
  void endProgress() override {
    heard.push_back("end progress");
    sheet.reset();
  }
  void askForReading(const ReadingQuestion& question,
                     std::move_only_function<void(ReadingAnswer)> answered) override {
    heard.push_back("asked " + question.problem);
    lastQuestion = question;
    answered(reading);
  }
  /// The answer to a question about two readings.
  ReadingAnswer reading = ReadingAnswer::cancel;
  std::optional<ReadingQuestion> lastQuestion;
  void presentError(const Error& error, std::move_only_function<void()> dismissed) override {
    const auto suggestion = error.recoverySuggestion();
    heard.push_back("error " + error.description().value_or("(none)") +
                    (suggestion ? " / " + *suggestion : ""));
    dismissed();
  }

  std::shared_ptr<ImportExportProgressViewController> sheet;
};

/// Pumps the main queue until what `begin` starts has completed, and says with what.
template <typename Begin>
bool completes(Begin begin) {
  std::optional<bool> outcome;
  begin([&](bool succeeded) {
    EXPECT_FALSE(outcome) << "completed twice";
    outcome = succeeded;
  });
  EXPECT_TRUE(MainLoop::runUntil([&] { return outcome.has_value(); }, std::chrono::seconds(60)));
  // Whatever still waits must not complete it once more.
  MainLoop::drain();
  return outcome.value_or(false);
}

}  // namespace corvane::testing
