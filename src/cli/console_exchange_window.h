// A terminal in the place of the panels and sheets of imports and exports.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "cli/command.h"
#include "exchange/import_export_window.h"

namespace corvane::cli {

/// Answers panels with the file of the command line and field setups with its options, shows
/// progress as a bar on a terminal, and writes errors. Main thread only.
class ConsoleExchangeWindow final : public ImportExportWindow {
 public:
  using SetUp = std::function<void(ImportExportFieldSetupViewController&)>;

  /// `setUp` is to make the settings of a field setup, which is submitted then.
  ConsoleExchangeWindow(Console& console, std::filesystem::path file, SetUp setUp)
      : console_(console), file_(std::move(file)), setUp_(std::move(setUp)) {}

  void beginOpenPanel(const OpenPanel& panel, PanelCompletion completion) override;
  void beginSavePanel(const SavePanel& panel, PanelCompletion completion) override;
  void setSavePanelContentTypes(const std::vector<ContentType>& /*contentTypes*/) override {}
  void beginFieldSetup(const std::shared_ptr<ImportExportFieldSetupViewController>& setup,
                       SheetParent parent) override;
  void endFieldSetup() override {}
  void beginProgress(const std::shared_ptr<ImportExportProgressViewController>& progress) override;
  void endProgress() override;
  void presentError(const Error& error, std::move_only_function<void()> dismissed) override;

 private:
  void drawProgress();

  Console& console_;
  const std::filesystem::path file_;
  const SetUp setUp_;
  std::shared_ptr<ImportExportProgressViewController> progress_;
  std::string drawn_;  ///< the bar as it stands on the terminal
};

}  // namespace corvane::cli
