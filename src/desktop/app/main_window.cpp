#include "desktop/app/main_window.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QScreen>
#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

#include "desktop/app/desktop_application.h"
#include "desktop/look/alert_box.h"
#include "desktop/look/qt_text.h"
#include "desktop/workspace/workspace_view.h"
#include "platform/async/dispatch_queue.h"

namespace corvane::desktop {
namespace {

constexpr QSize initialSize(1280, 800);
constexpr QSize leastSize(960, 600);
constexpr QSize frameAllowance(8, 40);  // for borders and the bar with the title

/// Lets the widget with the keyboard handle `key`, as if the user had pressed it there.
void sendToFocus(QKeySequence::StandardKey key) {
  QWidget* focus = QApplication::focusWidget();
  const auto bindings = QKeySequence::keyBindings(key);
  if (focus == nullptr || bindings.isEmpty()) {
    return;
  }
  const QKeyCombination combination = bindings.constFirst()[0];
  QKeyEvent press(QEvent::KeyPress, combination.key(), combination.keyboardModifiers());
  QApplication::sendEvent(focus, &press);
}

}  // namespace

MainWindow::MainWindow(DesktopApplication& application, std::shared_ptr<WorkspaceDocument> document)
    : application_(application),
      document_(std::move(document)),
      view_(new WorkspaceView(*document_, application.defaults())) {
  setCentralWidget(view_);
  setMinimumSize(leastSize);
  // The frame that the system adds must fit on the screen too.
  resize(initialSize.boundedTo(screen()->availableSize() - frameAllowance).expandedTo(leastSize));
  makeFileMenu();
  makeEditMenu();
  makePortfolioMenu();
  makeViewMenu();
  makeMarketMenu();
  makeHelpMenu();
  view_->setDocumentChangedHandler([this] {
    updateUndoActions();
    updateTitle();
  });
  // Names are given to steps after they are registered, so the menu is brought in line later.
  undoObservation_ = document_->undoManager()->addObserver([this](UndoManager::Change) {
    DispatchQueue::main()->async([weakDocument = std::weak_ptr(document_), this] {
      if (weakDocument.lock() != nullptr &&
          application_.windows().windowOf(*document_) != nullptr) {
        updateUndoActions();
        updateTitle();
      }
    });
  });
  updateUndoActions();
  updateTitle();
}

MainWindow::~MainWindow() = default;

void MainWindow::setDocumentModel(std::weak_ptr<WorkspaceModel> model) {
  model_ = std::move(model);
  view_->setDocumentModel(model_);
  updateTitle();
}

void MainWindow::updateTitle() {
  setWindowTitle(qtText(document_->displayName()) + QStringLiteral("[*] — Corvane"));
  setWindowModified(document_->isDocumentEdited());
  setWindowFilePath(document_->fileURL() ? qtPath(*document_->fileURL()) : QString());
}

void MainWindow::closeEvent(QCloseEvent* event) {
  event->setAccepted(application_.closeWorkspace(document_));
}

QAction* MainWindow::addAction(QMenu* menu, const QString& text, const QKeySequence& shortcut,
                               std::function<void()> perform) {
  QAction* action = menu->addAction(text);
  action->setShortcut(shortcut);
  connect(action, &QAction::triggered, this, [perform = std::move(perform)] { perform(); });
  return action;
}

void MainWindow::makeFileMenu() {
  QMenu* menu = menuBar()->addMenu(QStringLiteral("&File"));
  addAction(menu, QStringLiteral("&New Workspace"), QKeySequence::New,
            [this] { application_.newWorkspace(this); });
  addAction(menu, QStringLiteral("&Open…"), QKeySequence::Open,
            [this] { application_.chooseAndOpenWorkspace(this, document_.get()); });
  QMenu* recent = menu->addMenu(QStringLiteral("Open &Recent"));
  connect(recent, &QMenu::aboutToShow, this, [this, recent] { fillRecentMenu(recent); });
  menu->addSeparator();
  addAction(menu, QStringLiteral("&Save"), QKeySequence::Save,
            [this] { application_.saveWorkspace(document_); });
  addAction(menu, QStringLiteral("Save &As…"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S),
            [this] { application_.saveWorkspaceAs(document_); });
  QAction* revert =
      addAction(menu, QStringLiteral("Re&vert to Saved"), {}, [this] { this->revert(); });
  connect(menu, &QMenu::aboutToShow, this, [this, revert] {
    revert->setEnabled(document_->fileURL().has_value() && document_->isDocumentEdited());
  });
  menu->addSeparator();
  view_->addExchangeActions(menu);
  menu->addSeparator();
  addAction(menu, QStringLiteral("&Close Window"), QKeySequence::Close, [this] { close(); });
  addAction(menu, QStringLiteral("&Quit"), QKeySequence(Qt::CTRL | Qt::Key_Q),
            [this] { application_.quitAction(this); });
}

void MainWindow::fillRecentMenu(QMenu* menu) {
  menu->clear();
  const auto recent = application_.documentController().recentDocuments();
  for (const auto& path : recent) {
    addAction(menu, qtText(path.stem().string()).replace(QLatin1Char('&'), QStringLiteral("&&")),
              {}, [this, path] { application_.openWorkspace(this, path); })
        ->setToolTip(qtPath(path));
  }
  menu->setToolTipsVisible(true);
  menu->addSeparator();
  addAction(menu, QStringLiteral("Clear Menu"), {}, [this] {
    application_.documentController().clearRecentDocuments();
  })->setEnabled(!recent.empty());
}

void MainWindow::makeEditMenu() {
  QMenu* menu = menuBar()->addMenu(QStringLiteral("&Edit"));
  undo_ = addAction(menu, QStringLiteral("&Undo"), QKeySequence::Undo,
                    [this] { undoOrRedo(&UndoManager::undo); });
  redo_ = addAction(menu, QStringLiteral("&Redo"), QKeySequence::Redo,
                    [this] { undoOrRedo(&UndoManager::redo); });
  redo_->setShortcuts(
      {QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z), QKeySequence(Qt::CTRL | Qt::Key_Y)});
  menu->addSeparator();
  const auto addEditing = [&](const QString& text, QKeySequence::StandardKey key) {
    addAction(menu, text, {}, [key] {
      sendToFocus(key);
    })->setText(text + QLatin1Char('\t') + QKeySequence(key).toString(QKeySequence::NativeText));
  };
  addEditing(QStringLiteral("Cu&t"), QKeySequence::Cut);
  addEditing(QStringLiteral("&Copy"), QKeySequence::Copy);
  addEditing(QStringLiteral("&Paste"), QKeySequence::Paste);
  addEditing(QStringLiteral("Select &All"), QKeySequence::SelectAll);
  menu->addSeparator();
  view_->addSearchAction(menu);
  paletteActions_.push_back(
      addAction(menu, QStringLiteral("Command Palette…"), QKeySequence(Qt::CTRL | Qt::Key_K),
                [this] { openCommandPalette(CommandPaletteDialog::Contents::everything); }));
  menu->addSeparator();
  addAction(menu, QStringLiteral("S&ettings…"), QKeySequence(Qt::CTRL | Qt::Key_Comma),
            [this] { openSettings(); });
  addAction(menu, QStringLiteral("Time &Zone of Days…"), {}, [this] { view_->showTimeZone(); });
  connect(menu, &QMenu::aboutToShow, this, &MainWindow::updateUndoActions);
}

void MainWindow::makePortfolioMenu() {
  view_->addPortfolioActions(menuBar()->addMenu(QStringLiteral("&Portfolio")));
}

void MainWindow::makeViewMenu() {
  QMenu* menu = menuBar()->addMenu(QStringLiteral("&View"));
  view_->addViewActions(menu);
  menu->addSeparator();
  AppDelegate& delegate = application_.delegate();
  const auto addSetting = [&](const QString& text, AppDelegate::UserDefaultsBacked<bool>& setting) {
    QAction* action = menu->addAction(text);
    action->setCheckable(true);
    connect(action, &QAction::triggered, this, [&setting](bool isOn) { setting.set(isOn); });
    connect(menu, &QMenu::aboutToShow, action,
            [action, &setting] { action->setChecked(setting.get()); });
  };
  addSetting(QStringLiteral("Dates in &Local Time Zone"), delegate.preferLocalTimeZone);
  addSetting(QStringLiteral("&Mark Rows from the Network"), delegate.indicateFetchedRows);
}

void MainWindow::makeMarketMenu() {
  QMenu* menu = menuBar()->addMenu(QStringLiteral("P&rices"));
  AppDelegate& delegate = application_.delegate();
  addAction(menu, QStringLiteral("&Refresh Prices"), QKeySequence(Qt::Key_F5),
            [&delegate] { delegate.refreshPrices(); });
  menu->addSeparator();
  QMenu* adjustments = menu->addMenu(QStringLiteral("Price &Adjustment"));
  const auto addChoice = [this](QMenu* to, const QString& text, std::function<void()> choose) {
    QAction* action = addAction(to, text, {}, [this, choose = std::move(choose)] {
      choose();
      updateMarketMenu();
    });
    action->setCheckable(true);
    return action;
  };
  const std::array titles = {QStringLiteral("As &Traded"), QStringLiteral("Adjusted for &Splits"),
                             QStringLiteral("Adjusted for Splits and &Dividends")};
  static_assert(titles.size() == AppDelegate::priceAdjustmentUserDefaultsMap.size());
  for (std::size_t i = 0; i < titles.size(); ++i) {
    const PriceAdjustment adjustment = AppDelegate::priceAdjustmentUserDefaultsMap[i].first;
    priceAdjustments_.push_back(addChoice(adjustments, titles[i], [&delegate, adjustment] {
      delegate.choosePriceAdjustment(adjustment);
    }));
  }
  dataSources_ = menu->addMenu(QStringLiteral("Data &Source"));
  using DataSource = SwitchableQuoteProvider::DataSource;
  for (const auto& [title, source] :
       {std::pair{QStringLiteral("Network and &Cache"), DataSource::sourceAndCache},
        std::pair{QStringLiteral("&Network Only"), DataSource::sourceOnly},
        std::pair{QStringLiteral("Cache &Only"), DataSource::cacheOnly}}) {
    dataSourceActions_.emplace_back(source, addChoice(dataSources_, title, [&delegate, source] {
                                      delegate.chooseDataSource(source);
                                    }));
  }
  addAction(menu, QStringLiteral("&Empty Price Cache"), {}, [&delegate] { delegate.emptyCache(); });
  menu->addSeparator();
  networkActivity_ = addAction(menu, QStringLiteral("Network Acti&vity"), {},
                               [&delegate] { delegate.showNetworkActivity(); });
  // Another window may have changed what this one offers.
  connect(menu, &QMenu::aboutToShow, this, &MainWindow::updateMarketMenu);
  updateMarketMenu();
}

void MainWindow::updateMarketMenu() {
  const ApplicationMenuState state = application_.delegate().menuState();
  for (std::size_t i = 0; i < priceAdjustments_.size(); ++i) {
    priceAdjustments_[i]->setChecked(AppDelegate::priceAdjustmentUserDefaultsMap[i].first ==
                                     state.checkedPriceAdjustment);
  }
  for (const auto& [source, action] : dataSourceActions_) {
    action->setChecked(source == state.checkedDataSource);
  }
  dataSources_->menuAction()->setVisible(state.showsDataSources);
  networkActivity_->setVisible(state.showsNetworkActivity);
}

void MainWindow::makeHelpMenu() {
  QMenu* menu = menuBar()->addMenu(QStringLiteral("&Help"));
  const auto addPage = [&](const QString& text, const QKeySequence& shortcut,
                           AppDelegate::HelpDocument page) {
    addAction(menu, text, shortcut, [this, page] { application_.delegate().showHelp(page); });
  };
  using HelpDocument = AppDelegate::HelpDocument;
  addPage(QStringLiteral("&User Guide"), QKeySequence::HelpContents, HelpDocument::userGuide);
  addAction(menu, QStringLiteral("&Keyboard Shortcuts"), {},
            [this] { openCommandPalette(CommandPaletteDialog::Contents::shortcuts); });
  addPage(QStringLiteral("&Release Notes"), {}, HelpDocument::releaseNotes);
  addPage(QStringLiteral("&Welcome"), {}, HelpDocument::welcome);
  addPage(QStringLiteral("&Legal"), {}, HelpDocument::legal);
  menu->addSeparator();
  addAction(menu, QStringLiteral("Open &Sample Workspace"), {},
            [this] { application_.delegate().openSampleDocument(); });
  QAction* diagnostics = menu->addAction(QStringLiteral("&Diagnostic Tools"));
  diagnostics->setCheckable(true);
  connect(menu, &QMenu::aboutToShow, diagnostics, [this, diagnostics] {
    diagnostics->setChecked(application_.delegate().diagnosticToolsEnabled.get());
  });
  connect(diagnostics, &QAction::triggered, this,
          [this](bool isOn) { application_.delegate().diagnosticToolsEnabled.set(isOn); });
  menu->addSeparator();
  addAction(menu, QStringLiteral("&About Corvane"), {}, [this] {
    QMessageBox::about(this, QStringLiteral("About Corvane"),
                       QStringLiteral("<h3>Corvane</h3><p>Keeps the books of a private investor."
                                      "</p><p>Free software under the GNU General Public License, "
                                      "version 3 or later.</p>"));
  });
}

void MainWindow::openSettings() {
  application_.showSettings(this);
}

void MainWindow::openCommandPalette(CommandPaletteDialog::Contents contents) {
  const bool isListOfShortcuts = contents == CommandPaletteDialog::Contents::shortcuts;
  auto entries = CommandPaletteDialog::entriesOf(
      *menuBar(), isListOfShortcuts ? std::vector<const QAction*>() : paletteActions_);
  if (const auto model = model_.lock(); model != nullptr && !isListOfShortcuts) {
    const auto show = [source = std::weak_ptr(view_->controller().masterSourceViewController)](
                          const auto& object) {
      if (const auto living = source.lock()) {
        living->setCurrentDetailObject(object);
      }
    };
    auto objects = paletteEntriesOf(*model, show, show);
    std::ranges::move(objects, std::back_inserter(entries));
  }
  CommandPaletteDialog::open(this, contents, std::move(entries));
}

void MainWindow::updateUndoActions() {
  const UndoManager& manager = *document_->undoManager();
  undo_->setEnabled(manager.canUndo());
  undo_->setText(QStringLiteral("&Undo ") + qtText(manager.undoActionName()));
  redo_->setEnabled(manager.canRedo());
  redo_->setText(QStringLiteral("&Redo ") + qtText(manager.redoActionName()));
}

void MainWindow::undoOrRedo(bool (UndoManager::*perform)()) {
  try {
    ((*document_->undoManager()).*perform)();
  } catch (const Error& error) {
    showError(this, error);
  }
  updateUndoActions();
  updateTitle();
}

void MainWindow::revert() {
  const QString message = QStringLiteral("Do you want to go back to “%1” as it was last saved?")
                              .arg(qtText(document_->displayName()));
  if (ask(this, AlertKind::critical, message,
          QStringLiteral("All changes since then will be lost."),
          {QStringLiteral("Revert"), QStringLiteral("Cancel")}) != 0) {
    return;
  }
  try {
    document_->revertToSaved();
  } catch (const Error& error) {
    showError(this, error);
  }
  updateUndoActions();
  updateTitle();
}

}  // namespace corvane::desktop
