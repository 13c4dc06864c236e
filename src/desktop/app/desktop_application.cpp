#include "desktop/app/desktop_application.h"

#include <QApplication>
#include <QSessionManager>

#include "desktop/app/main_window.h"
#include "desktop/app/workspace_panels.h"
#include "desktop/frame/settings_dialog.h"
#include "desktop/look/alert_box.h"
#include "desktop/look/front_window.h"
#include "desktop/look/qt_text.h"
#include "marketdata/yahoo/network_activity_monitor.h"
#include "platform/async/dispatch_queue.h"
#include "platform/system/resources.h"

namespace corvane::desktop {

DesktopApplication::DesktopApplication(DesktopSurroundings surroundings)
    : surroundings_(std::move(surroundings)),
      windows_(std::make_shared<DocumentWindows>(
          [this](const auto& document) { return std::make_shared<MainWindow>(*this, document); },
          [this] { return delegate_->workspacesFolder.get(); })) {
  shell_->menuStateChanged = [this] {
    for (const auto& window : windows_->windows()) {
      window->updateMarketMenu();
    }
  };
  delegate_ = std::make_shared<AppDelegate>(ApplicationSurroundings{
      .defaults = *surroundings_.defaults,
      .info = InfoDictionary::fromFile(resourcePath(InfoDictionary::fileName)),
      .makeSourceProvider = surroundings_.makeSourceProvider,
      .shell = shell_,
      .documentShell = windows_,
      .cacheURL = surroundings_.cacheURL,
      .isActivityMonitored = &NetworkActivityMonitor::isOn,
      .monitorActivity = &NetworkActivityMonitor::setOn,
      .sampleDocument = sampleWorkspace(),
      .resources = resourcePath("")});
  // The session ends: documents are asked about while the windows are still there.
  QObject::connect(
      qApp, &QGuiApplication::commitDataRequest, &pump_,
      [this](QSessionManager& session) {
        if (!endSession(session.allowsInteraction())) {
          session.cancel();
        }
      },
      Qt::DirectConnection);
}

DesktopApplication::~DesktopApplication() {
  shell_->closeWindows();
  windows_->keepOnly({});
  // Windows that were let go of are still to be destroyed, while the program around them stands.
  MainLoop::drain();
}

std::filesystem::path DesktopApplication::sampleWorkspace() const {
  return resourcePath(surroundings_.sampleWorkspace);
}

void DesktopApplication::offerRecovery() {
  documentController().offerRecovery();
}

void DesktopApplication::showProblems(const std::vector<ErrorPointer>& problems) {
  if (problems.empty()) {
    return;
  }
  QStringList lines;
  for (const ErrorPointer& problem : problems) {
    lines.append(qtText(problem->description().value_or("")));
  }
  showAlert(QApplication::activeWindow(), AlertKind::warning,
            QStringLiteral("Some of your folders cannot be used."),
            lines.join(QStringLiteral("\n")) +
                QStringLiteral("\nSettings that cannot be kept hold for this run, and another "
                               "temporary folder is taken where there is one."),
            {QStringLiteral("OK")});
}

void DesktopApplication::startWithSample() {
  delegate_->applicationDidFinishLaunching();
  if (documentController().documents().empty()) {
    delegate_->openSampleDocument();
  }
  if (documentController().documents().empty()) {
    newWorkspace(nullptr);
  }
}

void DesktopApplication::start(const std::optional<std::filesystem::path>& workspace) {
  delegate_->applicationDidFinishLaunching();
  if (workspace) {
    openWorkspace(nullptr, *workspace);
  }
  const auto recent = documentController().recentDocuments();
  if (documentController().documents().empty() && !workspace && !recent.empty()) {
    openWorkspace(nullptr, recent.front());
  }
  if (documentController().documents().empty()) {
    newWorkspace(nullptr);
  }
}

void DesktopApplication::newWorkspace(QWidget* from) {
  try {
    documentController().newDocument();
  } catch (const Error& error) {
    showError(from, error);
  }
}

void DesktopApplication::chooseAndOpenWorkspace(QWidget* from, const WorkspaceDocument* near) {
  if (const auto chosen = OpenWorkspacePanel(from, windows_->folderForPanels(near)).ask()) {
    openWorkspace(from, *chosen);
  }
}

bool DesktopApplication::openWorkspace(QWidget* from, const std::filesystem::path& path) {
  try {
    documentController().openDocument(path);
    return true;
  } catch (const Error& error) {
    showError(from, error);
    return false;
  }
}

bool DesktopApplication::saveWorkspace(const std::shared_ptr<WorkspaceDocument>& document) {
  const bool isSaved = documentController().saveDocument(document);
  windows_->updateTitles();
  return isSaved;
}

bool DesktopApplication::saveWorkspaceAs(const std::shared_ptr<WorkspaceDocument>& document) {
  const bool isSaved = documentController().saveDocumentAs(document);
  windows_->updateTitles();
  return isSaved;
}

bool DesktopApplication::closeWorkspace(const std::shared_ptr<WorkspaceDocument>& document) {
  const bool isClosed = documentController().closeDocument(document);
  windows_->keepOnly(documentController().documents());
  if (documentController().documents().empty()) {
    // The last window: with it the program ends, also where pages are still open.
    quit();
  }
  return isClosed;
}

bool DesktopApplication::quitAction(QWidget* from) {
  if (delegate_->confirmBeforeQuit.get() &&
      ask(from, AlertKind::message, QStringLiteral("Do you want to quit Corvane?"), {},
          {QStringLiteral("Quit"), QStringLiteral("Cancel")}) != 0) {
    return false;
  }
  return quit();
}

bool DesktopApplication::endSession(bool mayAsk) {
  delegate_->applicationWillTerminate();
  return !mayAsk || quit();
}

void DesktopApplication::showSettings(QWidget* from) {
  if (settings_ == nullptr || !settings_->isVisible()) {
    settings_ = new SettingsDialog(*delegate_, defaults(), from);
  }
  bringToFront(*settings_);
}

bool DesktopApplication::quit() {
  const bool isClosed = documentController().closeAllDocuments();
  windows_->keepOnly(documentController().documents());
  if (isClosed) {
    delegate_->applicationWillTerminate();
    shell_->closeWindows();
    QApplication::quit();
  }
  return isClosed;
}

}  // namespace corvane::desktop
