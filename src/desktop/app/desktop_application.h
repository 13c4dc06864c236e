// The program as the desktop knows it: its documents, its windows, its look.
#pragma once

#include <QPointer>
#include <QWidget>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "desktop/app/desktop_shell.h"
#include "desktop/app/document_windows.h"
#include "desktop/app/main_queue_pump.h"
#include "storage/application/app_delegate.h"

class QApplication;

namespace corvane::desktop {

/// What the program is started with.
struct DesktopSurroundings {
  /// A new client of the market-data service.
  std::function<std::shared_ptr<QuoteProvider>()> makeSourceProvider;
  UserDefaults* defaults = &UserDefaults::standard();  ///< never null
  /// Where prices are cached; by default where a cache of the source has its place.
  std::optional<std::filesystem::path> cacheURL = std::nullopt;
  /// The name of the sample workspace among the data files.
  std::string sampleWorkspace = "Sample.corvane";
};

/// Owns all documents and windows, and answers the commands that any window offers. Main thread,
/// with a QApplication around it; pumps the main queue.
class DesktopApplication {
 public:
  explicit DesktopApplication(DesktopSurroundings surroundings);
  DesktopApplication(const DesktopApplication&) = delete;
  DesktopApplication& operator=(const DesktopApplication&) = delete;
  ~DesktopApplication();

  [[nodiscard]] DocumentController& documentController() { return delegate_->documentController(); }
  [[nodiscard]] AppDelegate& delegate() { return *delegate_; }
  [[nodiscard]] const ApplicationMenuState& menuState() const { return shell_->menuState(); }
  [[nodiscard]] DocumentWindows& windows() { return *windows_; }
  [[nodiscard]] UserDefaults& defaults() { return *surroundings_.defaults; }

  /// Asks about unsaved work that programs which were ended have left; what is recovered is open
  /// then. To be called before the run begins.
  void offerRecovery();

  /// Tells the user of what does not work in this run: folders that cannot be used. The program
  /// runs on without.
  void showProblems(const std::vector<ErrorPointer>& problems);

  /// Begins the run. Opens `workspace`; without one, what was used last, or else a new workspace.
  void start(const std::optional<std::filesystem::path>& workspace);

  /// Begins the run with the sample workspace.
  void startWithSample();
  /// Where the sample workspace lies.
  [[nodiscard]] std::filesystem::path sampleWorkspace() const;

  void newWorkspace(QWidget* from);
  void chooseAndOpenWorkspace(QWidget* from, const WorkspaceDocument* near);
  /// False where it fails, which the user has been told then.
  bool openWorkspace(QWidget* from, const std::filesystem::path& path);
  bool saveWorkspace(const std::shared_ptr<WorkspaceDocument>& document);
  bool saveWorkspaceAs(const std::shared_ptr<WorkspaceDocument>& document);
  /// Asks about unsaved changes; false where the document stays open.
  bool closeWorkspace(const std::shared_ptr<WorkspaceDocument>& document);
  /// Closes all documents and ends the program, unless one of them stays open.
  bool quit();
  /// As quit(), of a user who may have to confirm it.
  bool quitAction(QWidget* from);
  /// The session ends, or the system wants the program to. It counts as a normal end, whatever
  /// comes of unsaved changes: they are asked about where `mayAsk`, and the program ends then
  /// unless the user wants to go on, which is false. Without an answer nothing is closed, and what
  /// is unsaved when the program is ended is offered at the next start.
  bool endSession(bool mayAsk);

  /// Opens the settings on `from`, or brings them to the front.
  void showSettings(QWidget* from);

 private:
  DesktopSurroundings surroundings_;
  MainQueuePump pump_;
  std::shared_ptr<DocumentWindows> windows_;
  std::shared_ptr<DesktopShell> shell_ = std::make_shared<DesktopShell>();
  std::shared_ptr<AppDelegate> delegate_;
  QPointer<QWidget> settings_;
};

}  // namespace corvane::desktop
