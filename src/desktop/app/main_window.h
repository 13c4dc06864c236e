// The window of a workspace.
#pragma once

#include <QMainWindow>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "desktop/frame/command_palette_dialog.h"
#include "marketdata/chain/switchable_quote_provider.h"
#include "platform/async/undo_manager.h"
#include "storage/workspace/workspace_document.h"

class QAction;
class QMenu;

namespace corvane::desktop {

class DesktopApplication;
class WorkspaceView;

/// Frame and menus of a document's window; what is in it is the WorkspaceView's. Main queue only.
class MainWindow : public QMainWindow, public WorkspaceDocumentModelHaving {
  Q_OBJECT

 public:
  /// `application` outlives this.
  MainWindow(DesktopApplication& application, std::shared_ptr<WorkspaceDocument> document);
  ~MainWindow() override;

  [[nodiscard]] std::weak_ptr<WorkspaceModel> documentModel() const override { return model_; }
  void setDocumentModel(std::weak_ptr<WorkspaceModel> model) override;

  [[nodiscard]] const std::shared_ptr<WorkspaceDocument>& document() const { return document_; }
  [[nodiscard]] WorkspaceView& workspaceView() { return *view_; }

  /// Brings the title and the mark of unsaved changes in line with the document.
  void updateTitle();
  /// Opens the box in which everything can be found by a few letters, or the list of shortcuts.
  void openCommandPalette(CommandPaletteDialog::Contents contents);
  void openSettings();
  /// Brings the menu of prices in line with the application controller.
  void updateMarketMenu();

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  void makeFileMenu();
  void makeEditMenu();
  void makePortfolioMenu();
  void makeViewMenu();
  void makeMarketMenu();
  void makeHelpMenu();
  QAction* addAction(QMenu* menu, const QString& text, const QKeySequence& shortcut,
                     std::function<void()> perform);
  void fillRecentMenu(QMenu* menu);
  void updateUndoActions();
  void undoOrRedo(bool (UndoManager::*perform)());
  void revert();

  DesktopApplication& application_;
  std::shared_ptr<WorkspaceDocument> document_;
  std::weak_ptr<WorkspaceModel> model_;
  WorkspaceView* view_;
  QAction* undo_ = nullptr;
  QAction* redo_ = nullptr;
  std::vector<const QAction*> paletteActions_;  ///< those that open the palette itself
  QMenu* dataSources_ = nullptr;
  QAction* networkActivity_ = nullptr;
  std::vector<QAction*> priceAdjustments_;
  std::vector<std::pair<SwitchableQuoteProvider::DataSource, QAction*>> dataSourceActions_;
  Subscription undoObservation_;
};

}  // namespace corvane::desktop
