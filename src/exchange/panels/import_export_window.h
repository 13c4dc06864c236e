// The window in front of an import or an export: the panels, sheets and alerts that a desktop or a
// console shows for it.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/error.h"

namespace corvane {

class ExportSaveAccessoryViewController;
class ImportExportFieldSetupViewController;
class ImportExportProgressViewController;

/// A statement that would be recorded otherwise than its cells say, or not at all.
struct ReadingQuestion {
  std::string problem;  ///< the first cell that is read in two ways, or why the file was refused
  /// The first transactions that come out different; empty for a reading that cannot be used.
  std::vector<std::string> fileReading = {};
  std::vector<std::string> standardReading = {};
};

enum class ReadingAnswer {
  file,      ///< "Use the File's Reading": what each cell means by itself
  standard,  ///< "Use the Standard Reading": the forgiving rules
  cancel
};

/// What a shell implements. Every begin… returns at once or after the user has answered, as the
/// shell likes; a completion is called exactly once. The shell holds what it shows, and lets go of
/// it when the panel or sheet has ended. Main queue only.
class ImportExportWindow {
 public:
  enum class ContentType { commaSeparatedText, tabSeparatedText, plainText };

  /// Asks for one existing file. Other types than the content types may be chosen too.
  struct OpenPanel {
    std::string title;
    std::string prompt;  ///< on the button that chooses
    std::vector<ContentType> contentTypes;
  };
  /// Asks for a place to write to; the panel asks before it gives one where a file stands already.
  /// Other types than the content types may be chosen too.
  struct SavePanel {
    std::string title;
    std::string prompt;
    std::string message;    ///< above the panel; may be empty
    std::string nameField;  ///< the name offered, without an extension
    std::vector<ContentType> contentTypes;
    std::shared_ptr<ExportSaveAccessoryViewController> accessory;
  };
  /// With the file that was chosen, or none where the user thinks better of it.
  using PanelCompletion = std::move_only_function<void(std::optional<std::filesystem::path>)>;

  /// What a sheet hangs on.
  enum class SheetParent { window, savePanel };

  virtual ~ImportExportWindow() = default;

  virtual void beginOpenPanel(const OpenPanel& panel, PanelCompletion completion) = 0;
  virtual void beginSavePanel(const SavePanel& panel, PanelCompletion completion) = 0;
  /// The save panel's format has changed, and with it the first of its content types.
  virtual void setSavePanelContentTypes(const std::vector<ContentType>& contentTypes) = 0;

  /// Shows the field setup until endFieldSetup. Its buttons call submit() and cancel() of `setup`.
  virtual void beginFieldSetup(const std::shared_ptr<ImportExportFieldSetupViewController>& setup,
                               SheetParent parent) = 0;
  virtual void endFieldSetup() = 0;

  /// Shows the progress until endProgress. Its button calls cancel() of `progress`.
  virtual void beginProgress(
      const std::shared_ptr<ImportExportProgressViewController>& progress) = 0;
  virtual void endProgress() = 0;

  /// Asks which reading is meant. A shell that asks nobody takes the standard one where it can be
  /// used.
  virtual void askForReading(const ReadingQuestion& question,
                             std::move_only_function<void(ReadingAnswer)> answered) {
    answered(question.standardReading.empty() ? ReadingAnswer::cancel : ReadingAnswer::standard);
  }

  /// Shows an error as an alert on the window; `dismissed` is called at its end.
  virtual void presentError(const Error& error, std::move_only_function<void()> dismissed) = 0;
};

}  // namespace corvane
