// What a document asks of whoever sits in front of it.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/error.h"
#include "storage/workspace/document_error.h"
#include "storage/workspace/workspace_model.h"

namespace corvane {

class WorkspaceDocument;

/// A text with buttons that belongs to the window of a document.
struct DocumentAlert {
  std::string messageText;
  std::string informativeText;
  std::vector<std::string> buttons;
  friend bool operator==(const DocumentAlert&, const DocumentAlert&) = default;
};

/// A desktop or a console, as seen by documents. Questions are answered before they return; a
/// dialog runs the event loop meanwhile. Main queue only.
class DocumentShell {
 public:
  enum class ChangesAnswer { save, discard, cancel };
  enum class RecoveryAnswer { recover, later, discard };

  virtual ~DocumentShell() = default;

  /// Shows a window for `document`, or one that comes to the front where there is one already. Null
  /// for a shell without windows. The window may hold the document; the document does not hold it.
  virtual std::shared_ptr<WorkspaceDocumentModelHaving> showWindow(
      const std::shared_ptr<WorkspaceDocument>& document) = 0;

  /// What is to become of the unsaved changes of a document that is about to close.
  virtual ChangesAnswer askToSaveChanges(WorkspaceDocument& document) = 0;

  /// Where a document is to be saved; none where the user thinks better of it. What stands there
  /// already is asked about with askToReplace.
  virtual std::optional<std::filesystem::path> askForLocation(WorkspaceDocument& document) = 0;

  /// Whether to save in spite of `problem`, which is a ChangedElsewhere or an AlreadyExists.
  virtual bool askToReplace(WorkspaceDocument& document, const DocumentError& problem) = 0;

  /// What is to become of unsaved work that programs which run no more have left, in documents of
  /// these names; there is at least one.
  virtual RecoveryAnswer askToRecover(const std::vector<std::string>& names) = 0;

  /// Shows `alert` and returns; `pressed` is told the position of the button, at most once.
  virtual void showAlert(WorkspaceDocument& document, const DocumentAlert& alert,
                         std::function<void(std::size_t)> pressed) = 0;

  virtual void presentError(WorkspaceDocument& document, const Error& error) = 0;
};

}  // namespace corvane
