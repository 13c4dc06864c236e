#include "desktop/app/desktop_application.h"

#include <QApplication>
#include <QSessionManager>

#include "desktop/app/workspace_panels.h"
#include "desktop/look/alert_box.h"
#include "desktop/workspace/main_window.h"

namespace corvane::desktop {

DesktopApplication::DesktopApplication(DesktopSurroundings surroundings)
    : surroundings_(std::move(surroundings)),
      windows_(std::make_shared<DocumentWindows>(
          [this](const auto& document) { return std::make_shared<MainWindow>(*this, document); })) {
  WorkspaceSurroundings workspace;
  workspace.sharedQuoteProvider = surroundings_.makeSourceProvider;
  workspace.appBundleVersion = "1";
  workspace.appMarketingVersion = "0.1.0";
  workspace.shell = windows_;
  controller_ = std::make_unique<DocumentController>(std::move(workspace), *surroundings_.defaults);
  // The session ends: documents are asked about while the windows are still there.
  QObject::connect(
      qApp, &QGuiApplication::commitDataRequest, &pump_,
      [this](QSessionManager& session) {
        if (session.allowsInteraction() && !controller_->closeAllDocuments()) {
          session.cancel();
        }
        windows_->keepOnly(controller_->documents());
      },
      Qt::DirectConnection);
}

DesktopApplication::~DesktopApplication() {
  windows_->keepOnly({});
}

void DesktopApplication::start(const std::optional<std::filesystem::path>& workspace) {
  if (workspace && openWorkspace(nullptr, *workspace)) {
    return;
  }
  const auto recent = controller_->recentDocuments();
  if (!workspace && !recent.empty() && openWorkspace(nullptr, recent.front())) {
    return;
  }
  newWorkspace(nullptr);
}

void DesktopApplication::newWorkspace(QWidget* from) {
  try {
    controller_->newDocument();
  } catch (const Error& error) {
    showError(from, error);
  }
}

void DesktopApplication::chooseAndOpenWorkspace(QWidget* from, const WorkspaceDocument* near) {
  if (const auto chosen = OpenWorkspacePanel(from, folderForPanels(near)).ask()) {
    openWorkspace(from, *chosen);
  }
}

bool DesktopApplication::openWorkspace(QWidget* from, const std::filesystem::path& path) {
  try {
    controller_->openDocument(path);
    return true;
  } catch (const Error& error) {
    showError(from, error);
    return false;
  }
}

bool DesktopApplication::saveWorkspace(const std::shared_ptr<WorkspaceDocument>& document) {
  const bool isSaved = controller_->saveDocument(document);
  windows_->updateTitles();
  return isSaved;
}

bool DesktopApplication::saveWorkspaceAs(const std::shared_ptr<WorkspaceDocument>& document) {
  const bool isSaved = controller_->saveDocumentAs(document);
  windows_->updateTitles();
  return isSaved;
}

bool DesktopApplication::closeWorkspace(const std::shared_ptr<WorkspaceDocument>& document) {
  const bool isClosed = controller_->closeDocument(document);
  windows_->keepOnly(controller_->documents());
  return isClosed;
}

bool DesktopApplication::quit() {
  const bool isClosed = controller_->closeAllDocuments();
  windows_->keepOnly(controller_->documents());
  if (isClosed) {
    QApplication::quit();
  }
  return isClosed;
}

}  // namespace corvane::desktop
