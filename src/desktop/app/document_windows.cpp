#include "desktop/app/document_windows.h"

#include <QApplication>
#include <QFileInfo>
#include <algorithm>

#include "desktop/app/main_window.h"
#include "desktop/app/workspace_panels.h"
#include "desktop/look/alert_box.h"
#include "desktop/look/documents_folder.h"
#include "desktop/look/front_window.h"
#include "desktop/look/qt_text.h"
#include "platform/async/dispatch_queue.h"

namespace corvane::desktop {

std::filesystem::path DocumentWindows::folderForPanels(const WorkspaceDocument* document) const {
  if (document != nullptr && document->fileURL()) {
    // The sample lies among the program's own files, where the user cannot save.
    const std::filesystem::path folder = document->fileURL()->parent_path();
    if (QFileInfo(qtPath(folder)).isWritable()) {
      return folder;
    }
  }
  const QString chosen = workspacesFolder_ ? qtText(workspacesFolder_()) : QString();
  const bool isThere = !chosen.isEmpty() && QFileInfo(chosen).isDir();
  return filePath(isThere ? chosen : documentsFolder());
}

std::shared_ptr<MainWindow> DocumentWindows::windowOf(const WorkspaceDocument& document) const {
  const auto found = windows_.find(&document);
  return found == windows_.end() ? nullptr : found->second;
}

std::vector<std::shared_ptr<MainWindow>> DocumentWindows::windows() const {
  std::vector<std::shared_ptr<MainWindow>> all;
  for (const auto& [document, window] : windows_) {
    all.push_back(window);
  }
  return all;
}

void DocumentWindows::keepOnly(const std::vector<std::shared_ptr<WorkspaceDocument>>& open) {
  std::erase_if(windows_, [&](const auto& entry) {
    if (std::ranges::find(open, entry.first, &std::shared_ptr<WorkspaceDocument>::get) !=
        open.end()) {
      return false;
    }
    entry.second->hide();
    // A window that is closing is still being called by Qt.
    DispatchQueue::main()->async([window = entry.second] {});
    return true;
  });
}

void DocumentWindows::updateTitles() {
  for (const auto& [document, window] : windows_) {
    window->updateTitle();
  }
}

QWidget* DocumentWindows::widgetOf(const WorkspaceDocument& document) const {
  return windowOf(document).get();
}

std::shared_ptr<WorkspaceDocumentModelHaving> DocumentWindows::showWindow(
    const std::shared_ptr<WorkspaceDocument>& document) {
  auto& window = windows_[document.get()];
  if (window == nullptr) {
    window = makeWindow_(document);
  }
  bringToFront(*window);
  return window;
}

DocumentShell::ChangesAnswer DocumentWindows::askToSaveChanges(WorkspaceDocument& document) {
  if (QWidget* window = widgetOf(document)) {
    bringToFront(*window);
  }
  const QString message = QStringLiteral("Do you want to save the changes you made to “%1”?")
                              .arg(qtText(document.displayName()));
  switch (ask(widgetOf(document), AlertKind::warning, message,
              QStringLiteral("Your changes will be lost if you don’t save them."),
              {QStringLiteral("Save"), QStringLiteral("Don’t Save"), QStringLiteral("Cancel")})) {
    case 0:
      return ChangesAnswer::save;
    case 1:
      return ChangesAnswer::discard;
    default:
      return ChangesAnswer::cancel;
  }
}

std::optional<std::filesystem::path> DocumentWindows::askForLocation(WorkspaceDocument& document) {
  return askWhereToSaveWorkspace(widgetOf(document), folderForPanels(&document),
                                 qtText(document.displayName()));
}

bool DocumentWindows::askToReplace(WorkspaceDocument& document, const DocumentError& problem) {
  const ErrorText text = errorText(problem);
  return ask(widgetOf(document), AlertKind::critical, text.message, text.suggestion,
             {QStringLiteral("Replace"), QStringLiteral("Cancel")}) == 0;
}

DocumentShell::RecoveryAnswer DocumentWindows::askToRecover(const std::vector<std::string>& names) {
  QStringList quoted;
  for (const std::string& name : names) {
    quoted.append(QStringLiteral("“%1”").arg(qtText(name)));
  }
  const QString message = QStringLiteral("Corvane has found unsaved changes of %1.")
                              .arg(quoted.join(QStringLiteral(", ")));
  switch (ask(nullptr, AlertKind::warning, message,
              QStringLiteral("The program was ended before they were saved. They can be opened as "
                             "new workspaces; the files themselves stay as they are."),
              {QStringLiteral("Recover"), QStringLiteral("Discard"), QStringLiteral("Later")})) {
    case 0:
      return RecoveryAnswer::recover;
    case 1:
      return RecoveryAnswer::discard;
    default:
      return RecoveryAnswer::later;
  }
}

void DocumentWindows::showAlert(WorkspaceDocument& document, const DocumentAlert& alert,
                                std::function<void(std::size_t)> pressed) {
  QStringList buttons;
  for (const std::string& button : alert.buttons) {
    buttons.append(qtText(button));
  }
  desktop::showAlert(widgetOf(document), AlertKind::message, qtText(alert.messageText),
                     qtText(alert.informativeText), buttons, std::move(pressed));
}

void DocumentWindows::presentError(WorkspaceDocument& document, const Error& error) {
  showError(widgetOf(document), error);
}

}  // namespace corvane::desktop
