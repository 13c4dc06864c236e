// The windows of the open documents, and the questions that documents ask in them.
#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>

#include "storage/workspace/document_shell.h"

class QWidget;

namespace corvane::desktop {

class MainWindow;

/// What the desktop is to documents: one main window for each, panels and alerts on it. Main queue
/// only.
class DocumentWindows : public DocumentShell {
 public:
  using MakeWindow =
      std::function<std::shared_ptr<MainWindow>(const std::shared_ptr<WorkspaceDocument>&)>;

  /// `workspacesFolder` is where the user keeps workspaces; empty for his documents.
  explicit DocumentWindows(MakeWindow makeWindow,
                           std::function<std::string()> workspacesFolder = {})
      : makeWindow_(std::move(makeWindow)), workspacesFolder_(std::move(workspacesFolder)) {}

  [[nodiscard]] std::shared_ptr<MainWindow> windowOf(const WorkspaceDocument& document) const;
  [[nodiscard]] std::vector<std::shared_ptr<MainWindow>> windows() const;

  /// The folder that a panel for workspaces starts in: that of `document` where it has a file that
  /// the user may save beside, else the one of the settings where there is one, else the user's
  /// documents.
  [[nodiscard]] std::filesystem::path folderForPanels(const WorkspaceDocument* document) const;

  /// Hides the windows of documents that are not in `open`, and lets go of them after the present
  /// event has been handled.
  void keepOnly(const std::vector<std::shared_ptr<WorkspaceDocument>>& open);

  /// Brings titles and the marks of unsaved changes in line.
  void updateTitles();

  std::shared_ptr<WorkspaceDocumentModelHaving> showWindow(
      const std::shared_ptr<WorkspaceDocument>& document) override;
  ChangesAnswer askToSaveChanges(WorkspaceDocument& document) override;
  std::optional<std::filesystem::path> askForLocation(WorkspaceDocument& document) override;
  bool askToReplace(WorkspaceDocument& document, const DocumentError& problem) override;
  RecoveryAnswer askToRecover(const std::vector<std::string>& names) override;
  void showAlert(WorkspaceDocument& document, const DocumentAlert& alert,
                 std::function<void(std::size_t)> pressed) override;
  void presentError(WorkspaceDocument& document, const Error& error) override;

 private:
  [[nodiscard]] QWidget* widgetOf(const WorkspaceDocument& document) const;

  MakeWindow makeWindow_;
  std::function<std::string()> workspacesFolder_;
  std::map<const WorkspaceDocument*, std::shared_ptr<MainWindow>> windows_;
};

}  // namespace corvane::desktop
