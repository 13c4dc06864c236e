// The user of an import or an export is a command line that has said everything beforehand.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/console/console.h"
#include "cli/console/progress_bar.h"
#include "exchange/panels/import_export_field_setup_view_controller.h"
#include "exchange/panels/import_export_progress_view_controller.h"
#include "exchange/panels/import_export_window.h"

namespace corvane::cli {

/// What a command line says about an import or an export.
struct ExchangeAnswers {
  std::filesystem::path file;  ///< to be read or written
  // Of an import.
  /// The fields of the columns; columns beyond them are ignored. None keeps what the program
  /// offers.
  std::optional<std::vector<std::string>> fields = std::nullopt;
  bool includesHeaderRow = true;
  std::optional<std::string> dateFormat = std::nullopt;
  std::optional<std::string> currencyCode = std::nullopt;
};

/// Answers panels and sheets, shows progress on a terminal, and writes errors.
class ConsoleExchangeWindow : public ImportExportWindow {
 public:
  ConsoleExchangeWindow(ExchangeAnswers answers, const Console& console)
      : answers_(std::move(answers)), console_(console) {}

  /// Cancels what is under way, or else the next thing that begins.
  void cancel();
  /// Whether an error was shown.
  [[nodiscard]] bool hasPresentedError() const { return hasPresentedError_; }

  void beginOpenPanel(const OpenPanel& panel, PanelCompletion completion) override;
  void beginSavePanel(const SavePanel& panel, PanelCompletion completion) override;
  void setSavePanelContentTypes(const std::vector<ContentType>& contentTypes) override;
  void beginFieldSetup(const std::shared_ptr<ImportExportFieldSetupViewController>& setup,
                       SheetParent parent) override;
  void endFieldSetup() override {}
  void beginProgress(const std::shared_ptr<ImportExportProgressViewController>& progress) override;
  void endProgress() override;
  void askForReading(const ReadingQuestion& question,
                     std::move_only_function<void(ReadingAnswer)> answered) override;
  void presentError(const Error& error, std::move_only_function<void()> dismissed) override;

 private:
  void setUpColumns(ImportExportFieldSetupViewController& setup);
  void setUpAccessory(ImportExportFieldSetupViewController& setup) const;

  const ExchangeAnswers answers_;
  const Console& console_;
  bool hasPresentedError_ = false;
  bool isCancelled_ = false;
  std::shared_ptr<ImportExportProgressViewController> progress_;
  Subscription progressChanges_;
  std::optional<ProgressBar> bar_;
};

}  // namespace corvane::cli
