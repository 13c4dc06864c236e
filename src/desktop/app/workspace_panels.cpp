#include "desktop/app/workspace_panels.h"

#include "desktop/look/qt_text.h"
#include "storage/workspace/workspace_document.h"

namespace corvane::desktop {
namespace {

bool isWorkspace(const QString& path) {
  return filePath(path).extension() == WorkspaceDocument::filenameExtension;
}

}  // namespace

OpenWorkspacePanel::OpenWorkspacePanel(QWidget* parent, const std::filesystem::path& startFolder)
    : QFileDialog(parent, QStringLiteral("Open Workspace"), qtPath(startFolder)) {
  // The system's panels of folders would enter a workspace.
  setOption(DontUseNativeDialog);
  setFileMode(Directory);
  setOption(ShowDirsOnly);
  setLabelText(FileName, QStringLiteral("Workspace:"));
  setLabelText(Accept, QStringLiteral("Open"));
  connect(this, &QFileDialog::directoryEntered, this, [this](const QString& folder) {
    if (isWorkspace(folder)) {
      choose(folder);
    }
  });
}

std::optional<std::filesystem::path> OpenWorkspacePanel::ask() {
  if (exec() != Accepted || chosen_.isEmpty()) {
    return std::nullopt;
  }
  return filePath(chosen_);
}

void OpenWorkspacePanel::accept() {
  const QStringList files = selectedFiles();
  if (files.isEmpty()) {
    return;
  }
  if (isWorkspace(files.constFirst())) {
    choose(files.constFirst());
  } else {
    setDirectory(files.constFirst());
  }
}

void OpenWorkspacePanel::choose(const QString& path) {
  chosen_ = path;
  done(Accepted);
}

SaveWorkspacePanel::SaveWorkspacePanel(QWidget* parent, const std::filesystem::path& startFolder,
                                       const QString& name)
    : QFileDialog(parent, QStringLiteral("Save Workspace"), qtPath(startFolder)) {
  // The system's panels of files would enter a workspace that is to be replaced.
  setOption(DontUseNativeDialog);
  // Replacing is asked about where the workspace is written.
  setOption(DontConfirmOverwrite);
  setAcceptMode(AcceptSave);
  setFileMode(AnyFile);
  setNameFilter(QStringLiteral("Corvane workspaces (*.corvane)"));
  // A workspace is a folder, which Qt would offer to open.
  setLabelText(Accept, QStringLiteral("&Save"));
  setDefaultSuffix(qtText(WorkspaceDocument::filenameExtension).mid(1));
  selectFile(name + qtText(WorkspaceDocument::filenameExtension));
}

std::optional<std::filesystem::path> SaveWorkspacePanel::ask() {
  const QStringList files = exec() == Accepted ? selectedFiles() : QStringList();
  if (files.isEmpty()) {
    return std::nullopt;
  }
  return filePath(files.constFirst());
}

void SaveWorkspacePanel::accept() {
  const QStringList files = selectedFiles();
  if (!files.isEmpty() && isWorkspace(files.constFirst())) {
    done(Accepted);
  } else {
    QFileDialog::accept();
  }
}

std::optional<std::filesystem::path> askWhereToSaveWorkspace(
    QWidget* parent, const std::filesystem::path& startFolder, const QString& name) {
  return SaveWorkspacePanel(parent, startFolder, name).ask();
}

}  // namespace corvane::desktop
