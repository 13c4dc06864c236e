#include "desktop/workspace/workspace_view.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QFileDialog>
#include <QLabel>
#include <QMenu>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QSplitter>
#include <QStackedWidget>
#include <QTabWidget>
#include <QVBoxLayout>
#include <algorithm>

#include "desktop/controls/column_choice.h"
#include "desktop/controls/first_steps.h"
#include "desktop/controls/table_view.h"
#include "desktop/equity/equity_view.h"
#include "desktop/exchange/exchange_panels.h"
#include "desktop/exchange/statement_dialog.h"
#include "desktop/exchange/statement_imports_dialog.h"
#include "desktop/exchange/work_progress.h"
#include "desktop/look/alert_box.h"
#include "desktop/look/documents_folder.h"
#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"
#include "desktop/portfolio/edit_portfolio_dialog.h"
#include "desktop/portfolio/portfolio_view.h"
#include "desktop/reports/explanation_panel.h"
#include "desktop/reports/overview_view.h"
#include "desktop/reports/tax_year_view.h"
#include "desktop/scenario/scenario_batch_tab.h"
#include "desktop/scenario/scenario_detail_tab.h"
#include "desktop/transactions/transactions_tab.h"
#include "desktop/workspace/dates_time_zone_dialog.h"
#include "desktop/workspace/reports_view.h"
#include "desktop/workspace/source_list_view.h"
#include "desktop/workspace/time_zone_bar.h"
#include "exchange/brokers/import_export_error.h"
#include "exchange/exports/export_controller.h"
#include "exchange/exports/portfolio_exporter.h"
#include "platform/overloaded.h"
#include "presentation/portfolio/statement_preview_controller.h"

namespace corvane::desktop {
namespace {

/// Where an alert is seen: the sheet that is open on `window`, or the window itself.
QWidget* frontOf(QWidget* window) {
  for (QDialog* sheet : window->findChildren<QDialog*>()) {
    if (sheet->isVisible() && qobject_cast<QMessageBox*>(sheet) == nullptr) {
      return sheet;
    }
  }
  return window;
}

}  // namespace

WorkspaceView::WorkspaceView(WorkspaceDocument& document, UserDefaults& defaults, QWidget* parent)
    : QWidget(parent),
      document_(document),
      defaults_(defaults),
      frame_(MainSplitViewController::make(surroundings())),
      timeZone_(new TimeZoneBar(document, [this] { showTimeZone(); })),
      source_(new SourceView(frame_)),
      split_(new QSplitter(Qt::Horizontal)),
      detail_(new QStackedWidget),
      empty_(new FirstSteps),
      equity_(new EquityView(frame_->equityViewController)),
      portfolio_(new PortfolioView(frame_->portfolioViewController)),
      reports_(new ReportsView(frame_->reports)),
      explanation_(new ExplanationPanel(frame_->explanation)),
      import_(PortfolioImport::make(frame_->portfolioViewController, surroundings(),
                                    std::make_shared<ExchangePanels>(this))),
      export_(PortfolioExport::make(frame_->portfolioViewController, surroundings(),
                                    std::make_shared<ExchangePanels>(this))) {
  equity_->addTab(new ScenarioDetailTab(frame_->scenarioDetailViewController),
                  QStringLiteral("Scenario"));
  equity_->addTab(new ScenarioBatchTab(frame_->scenarioBatchViewController),
                  QStringLiteral("Scenario Batch"));
  detail_->addWidget(empty_);
  detail_->addWidget(equity_);
  detail_->addWidget(portfolio_);
  detail_->addWidget(reports_);

  split_->setHandleWidth(1);
  split_->addWidget(source_);
  split_->addWidget(detail_);
  split_->addWidget(explanation_);
  split_->setStretchFactor(0, 0);
  split_->setStretchFactor(1, 1);
  split_->setCollapsible(0, false);
  split_->setCollapsible(1, false);
  split_->setCollapsible(2, false);
  explanation_->setMinimumWidth(std::max(360, theme::widthOfLetters(40)));
  explanation_->setMaximumWidth(720);
  source_->setMinimumWidth(theme::widthOfLetters(22));
  source_->setMaximumWidth(theme::widthOfLetters(57));
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(0);
  column->addWidget(timeZone_);
  column->addWidget(split_, 1);

  offerColumns(*this);
  reports_->pageMade = [this](QWidget& page) {
    offerColumns(page);
    if (auto* overview = page.findChild<OverviewView*>()) {
      overview->exportHandler = [this](const auto& exporter) { exportReport(exporter); };
    }
    if (auto* taxYear = page.findChild<TaxYearView*>()) {
      taxYear->exportHandler = [this](const auto& exporter) { exportReport(exporter); };
    }
  };
  explanation_->installEventFilter(this);
  changes_ = subscribe(frame_->changeHandler, [this] { showDetail(); });
  decisions_ = NotificationCenter::defaultCenter().addObserver(
      WorkspaceDocument::datesTimeZoneDidChange, &document_, [this](const NoPayload&) {
        timeZone_->showDoubt();
        documentChanged_();
      });
  segues_ = subscribe(frame_->performSegue, [this](const auto& segue) { perform(segue); });
  showDetail();
}

/// A table with a name of its own has columns to choose from.
void WorkspaceView::offerColumns(const QWidget& page) {
  for (TableView* table : page.findChildren<TableView*>()) {
    if (!table->objectName().isEmpty()) {
      columnChoices_.push_back(new ColumnChoice(*table, defaults_));
    }
  }
}

bool WorkspaceView::eventFilter(QObject* watched, QEvent* event) {
  if (watched == explanation_ &&
      (event->type() == QEvent::ShowToParent || event->type() == QEvent::HideToParent)) {
    shareRoomWithExplanation(event->type() == QEvent::ShowToParent);
  }
  return QWidget::eventFilter(watched, event);
}

/// In a narrow window the source list makes room for the explanation of a figure, rather than that
/// the screen with the figure is squeezed.
void WorkspaceView::shareRoomWithExplanation(bool isShown) {
  if (isShown && !source_->isHidden()) {
    // What both need to be read, which is more than the least that they can have.
    const int needed = theme::widthOfLetters(28) +
                       std::max(detail_->minimumSizeHint().width(), theme::widthOfLetters(70)) +
                       explanation_->minimumWidth();
    hasSourceGivenWay_ = needed > width();
    sourceWidth_ = source_->width();
    source_->setHidden(hasSourceGivenWay_);
  } else if (!isShown && hasSourceGivenWay_) {
    hasSourceGivenWay_ = false;
    source_->show();
    split_->setSizes({sourceWidth_, split_->width() - sourceWidth_, 0});
  }
}

ScreenSurroundings WorkspaceView::surroundings() {
  ScreenSurroundings made;
  const QPointer<QWidget> self(this);
  made.presentError = [self](const Error& error) {
    if (self) {
      showError(frontOf(self->window()), error);
    }
  };
  made.presentMessage = [self](const std::string& message) {
    if (self) {
      showAlert(self->window(), AlertKind::message, qtText(message), {}, {QStringLiteral("OK")});
    }
  };
  made.showAlert = [self](const DocumentAlert& alert, std::function<void(std::size_t)> pressed) {
    QStringList buttons;
    for (const std::string& button : alert.buttons) {
      buttons.append(qtText(button));
    }
    if (self) {
      desktop::showAlert(frontOf(self->window()), AlertKind::critical, qtText(alert.messageText),
                         qtText(alert.informativeText), buttons, std::move(pressed));
    }
  };
  made.undoManager = document_.undoManager();
  made.documentDidChange = [this, self] {
    if (self) {
      document_.updateChangeCount(Document::ChangeType::done);
      documentChanged_();
    }
  };
  made.defaults = &defaults_;
  return made;
}

void WorkspaceView::setDocumentModel(const std::weak_ptr<WorkspaceModel>& model) {
  frame_->setDocumentModel(model);
  timeZone_->showDoubt();
  // A window that opens with its caret in the search box would draw it twice a second for nobody.
  source_->focusSelection();
  updateActions();
}

void WorkspaceView::showDetail() {
  const auto& source = *frame_->masterSourceViewController;
  empty_->setMessage(qtText(frame_->emptyStateMessage()));
  empty_->setStepsVisible(source.numberOfPortfolioRows() == 0 &&
                          source.numberOfWatchlistRows() == 0);
  switch (frame_->currentDetailTab()) {
    case MainSplitViewController::DetailTab::portfolio:
      detail_->setCurrentWidget(portfolio_);
      break;
    case MainSplitViewController::DetailTab::equity:
      detail_->setCurrentWidget(equity_);
      break;
    case MainSplitViewController::DetailTab::report:
      reports_->showReport();
      detail_->setCurrentWidget(reports_);
      break;
    case MainSplitViewController::DetailTab::emptyState:
      detail_->setCurrentWidget(empty_);
      break;
  }
  source_->showReportSelection();
  updateActions();
}

void WorkspaceView::perform(const MainSplitViewController::Segue& segue) {
  std::visit(Overloaded{[this](const MainSplitViewController::CreatePortfolio&) {
               EditPortfolioDialog::open(
                   this, frame_->makeCreatePortfolioForm(
                             [] {}, defaults_.boolean("diagnosticToolsEnabled").value_or(false)));
             }},
             segue);
}

void WorkspaceView::addExchangeActions(QMenu* menu) {
  importAction_ = menu->addAction(QStringLiteral("&Import Transactions…"));
  importAction_->setShortcut(Qt::CTRL | Qt::Key_I);
  connect(importAction_, &QAction::triggered, this, [this] {
    if (!timeZone_->refusesImport()) {
      import_->importAction();
    }
  });
  statementAction_ = menu->addAction(QStringLiteral("Import &Statement…"));
  statementAction_->setShortcut(Qt::CTRL | Qt::SHIFT | Qt::Key_I);
  connect(statementAction_, &QAction::triggered, this, &WorkspaceView::importStatement);
  importsAction_ = menu->addAction(QStringLiteral("Imports of S&tatements…"));
  connect(importsAction_, &QAction::triggered, this, &WorkspaceView::showImports);
  exportAction_ = menu->addAction(QStringLiteral("&Export…"));
  exportAction_->setShortcut(Qt::CTRL | Qt::Key_E);
  connect(exportAction_, &QAction::triggered, this, &WorkspaceView::exportShown);
  connect(menu, &QMenu::aboutToShow, this, &WorkspaceView::updateActions);
}

void WorkspaceView::importStatement() {
  const PortfolioPointer portfolio = frame_->portfolioViewController->currentData().portfolio;
  if (portfolio == nullptr || !import_->canImport() || timeZone_->refusesImport()) {
    return;
  }
  auto* panel = new QFileDialog(this, QStringLiteral("Import Statement"), documentsFolder());
  panel->setAttribute(Qt::WA_DeleteOnClose);
  panel->setWindowModality(Qt::WindowModal);
  panel->setFileMode(QFileDialog::ExistingFile);
  panel->setNameFilters({QStringLiteral("Statements (*.csv *.tsv *.tab *.txt *.ofx *.qfx)"),
                         QStringLiteral("All files (*)")});
  panel->setLabelText(QFileDialog::Accept, QStringLiteral("Look At"));
  connect(panel, &QFileDialog::fileSelected, this,
          [this](const QString& file) { openStatement(filePath(file)); });
  panel->open();
}

void WorkspaceView::openStatement(const std::filesystem::path& file) {
  const PortfolioPointer portfolio = frame_->portfolioViewController->currentData().portfolio;
  if (portfolio == nullptr) {
    return;
  }
  try {
    const auto progress =
        std::make_shared<WorkProgress>(QStringLiteral("Reading the statement…"), this);
    auto preview = std::make_unique<StatementPreviewController>(
        file, portfolio, document_.workingDirectoryURL(),
        [progress](double fraction) { progress->show(fraction); });
    auto* dialog = new StatementDialog(
        std::move(preview),
        [import = import_, portfolio](const std::vector<BasicTransaction>& rows) {
          import->importDidEnd(rows, portfolio);
        },
        this);
    dialog->open();
  } catch (const UserCancelledError&) {
    return;
  } catch (const Error& error) {
    showError(this, error);
  }
}

void WorkspaceView::showImports() {
  const PortfolioPointer portfolio = frame_->portfolioViewController->currentData().portfolio;
  if (portfolio == nullptr) {
    return;
  }
  try {
    auto* dialog =
        new StatementImportsDialog(std::make_unique<StatementImportsController>(
                                       portfolio, document_.workingDirectoryURL(), surroundings(),
                                       document_.model()->datesDoubt.has_value()),
                                   this);
    dialog->open();
  } catch (const Error& error) {
    showError(this, error);
  }
}

void WorkspaceView::showTimeZone() {
  try {
    (new DatesTimeZoneDialog(std::make_unique<DatesTimeZoneForm>(document_), this))->open();
  } catch (const Error& error) {
    showError(this, error);
  }
}

void WorkspaceView::addPortfolioActions(QMenu* menu) {
  PortfolioViewController& portfolio = *frame_->portfolioViewController;
  const auto add = [&](const QString& text, const QKeySequence& shortcut, auto perform) {
    QAction* action = menu->addAction(text);
    action->setShortcut(shortcut);
    connect(action, &QAction::triggered, this, perform);
    return action;
  };
  newPortfolio_ = add(QStringLiteral("&New Portfolio…"), Qt::CTRL | Qt::SHIFT | Qt::Key_N,
                      [this] { frame_->createPortfolioAction(); });
  editPortfolio_ = add(QStringLiteral("Portfolio &Details…"), Qt::ALT | Qt::Key_Return,
                       [&portfolio] { portfolio.editPortfolioAction(); });
  deletePortfolio_ = add(QStringLiteral("De&lete Portfolio…"), {},
                         [&portfolio] { portfolio.deletePortfolioAction(); });
  menu->addSeparator();
  newTransaction_ = add(QStringLiteral("New &Transaction…"), Qt::CTRL | Qt::Key_T,
                        [&portfolio] { portfolio.createTransactionAction(); });
  TransactionsTab& transactions = portfolio_->transactionsTab();
  for (QAction* command : transactions.commands()) {
    menu->addAction(command);
  }
  transactions.addToContextMenu({newTransaction_, exportAction_});
  menu->addSeparator();
  menu->addAction(source_->moveUpAction());
  menu->addAction(source_->moveDownAction());
  menu->addAction(source_->removeAction());
  connect(menu, &QMenu::aboutToShow, this, &WorkspaceView::updateActions);
  addFirstSteps();
  updateActions();
}

/// What screens without anything in them offer. The menus of files and of editing are there by now.
void WorkspaceView::addFirstSteps() {
  empty_->addStep(newPortfolio_, QStringLiteral("New Portfolio…"));
  empty_->addStep(search_, QStringLiteral("Find an Equity"));
  portfolio_->firstSteps().addStep(statementAction_, QStringLiteral("Import a Statement…"));
  portfolio_->firstSteps().addStep(newTransaction_, QStringLiteral("Add a Transaction…"));
}

void WorkspaceView::addSearchAction(QMenu* menu) {
  search_ = menu->addAction(QStringLiteral("&Find an Equity"));
  search_->setShortcut(QKeySequence::Find);
  connect(search_, &QAction::triggered, this, [this] {
    source_->show();
    source_->startSearch();
  });
  findTransactions_ = menu->addAction(QStringLiteral("Find Tra&nsactions"));
  findTransactions_->setShortcut(Qt::CTRL | Qt::SHIFT | Qt::Key_F);
  connect(findTransactions_, &QAction::triggered, portfolio_, &PortfolioView::findTransactions);
  connect(menu, &QMenu::aboutToShow, this, &WorkspaceView::updateActions);
}

void WorkspaceView::addViewActions(QMenu* menu) {
  const int mostTabs = std::max(portfolio_->tabs().count(), equity_->tabs().count());
  for (int i = 0; i < mostTabs; ++i) {
    QAction* action = menu->addAction(QString());
    action->setShortcut(Qt::CTRL | static_cast<Qt::Key>(Qt::Key_1 + i));
    connect(action, &QAction::triggered, this, [this, i] {
      if (QTabWidget* tabs = shownTabs()) {
        tabs->setCurrentIndex(i);
      }
    });
    tabActions_.push_back(action);
  }
  updateActions();
  addReportActions(menu);
  menu->addSeparator();
  QAction* sidebar = menu->addAction(QStringLiteral("Show &Source List"));
  sidebar->setCheckable(true);
  sidebar->setChecked(true);
  sidebar->setShortcut(Qt::Key_F9);
  connect(sidebar, &QAction::toggled, source_, &QWidget::setVisible);
  connect(menu, &QMenu::aboutToShow, sidebar,
          [this, sidebar] { sidebar->setChecked(source_->isVisible()); });
  QMenu* columns = menu->addMenu(QStringLiteral("&Columns"));
  connect(menu, &QMenu::aboutToShow, columns, [this, columns] { fillColumnsMenu(*columns); });
  QMenu* screen = menu->addMenu(QStringLiteral("&This Screen"));
  connect(menu, &QMenu::aboutToShow, screen, [this, screen] { fillScreenMenu(*screen); });
}

void WorkspaceView::addReportActions(QMenu* menu) {
  QMenu* reports = menu->addMenu(QStringLiteral("&Reports"));
  for (const WorkspaceReports::Entry& entry : WorkspaceReports::entries) {
    connect(reports->addAction(qtText(entry.title)), &QAction::triggered, this,
            [this, report = entry.report] { frame_->showReport(report); });
  }
  QAction* explain = menu->addAction(QStringLiteral("E&xplain This Number"));
  explain->setShortcut(Qt::CTRL | Qt::SHIFT | Qt::Key_E);
  connect(explain, &QAction::triggered, this, &WorkspaceView::explainNumber);
}

void WorkspaceView::explainNumber() {
  QWidget* focused = QApplication::focusWidget();
  if (auto* figure = qobject_cast<QAbstractButton*>(focused);
      figure != nullptr && figure->property("isFigure").toBool()) {
    figure->click();
    return;
  }
  if (focused != nullptr && isAncestorOf(focused)) {
    for (QAction* action : focused->actions()) {
      if (action->objectName() == QStringLiteral("explain") && action->isEnabled()) {
        action->trigger();
        return;
      }
    }
  }
  if (const TrailMaker trail = frame_->portfolioViewController->valueTrailMaker()) {
    frame_->explanation.explain(trail);
  }
}

void WorkspaceView::exportShown() {
  if (!frame_->reports->shown()) {
    export_->exportAction();
  } else if (const auto exporter = frame_->reports->makeExporter()) {
    exportReport(exporter);
  }
}

void WorkspaceView::exportReport(const std::shared_ptr<PortfolioExporter>& exporter) {
  // Held by the completion: a second export waits for the sheet of the first one anyway.
  const auto controller = ExportController::make(exporter);
  controller->beginExport(std::make_shared<ExchangePanels>(this), [controller](bool) {});
}

/// The columns of the table that is seen, as its heading offers them.
void WorkspaceView::fillColumnsMenu(QMenu& menu) {
  menu.clear();
  for (ColumnChoice* choice : columnChoices_) {
    if (choice->table().isVisible()) {
      choice->fillMenu(menu);
    }
  }
  menu.setEnabled(!menu.isEmpty());
}

/// What the context menus of the charts, tables and figures that are seen offer and no other menu
/// does, and the menus of buttons.
void WorkspaceView::fillScreenMenu(QMenu& menu) {
  qDeleteAll(menu.findChildren<QMenu*>(QString(), Qt::FindDirectChildrenOnly));
  menu.clear();
  const auto isElsewhere = [](const QAction* action) {
    const QObjectList places = action->associatedObjects();
    return std::any_of(places.begin(), places.end(),
                       [](QObject* place) { return qobject_cast<QMenu*>(place) != nullptr; });
  };
  for (QWidget* widget : detail_->findChildren<QWidget*>()) {
    QList<QAction*> actions = widget->actions();
    actions.removeIf([&](const QAction* action) {
      return isElsewhere(action) || action->isSeparator() || action->menu() != nullptr;
    });
    if (actions.isEmpty() || !widget->isVisible()) {
      continue;
    }
    // A figure needs no menu of its own: its commands say what they explain.
    QMenu* to = qobject_cast<QLabel*>(widget) != nullptr || widget->accessibleName().isEmpty()
                    ? &menu
                    : menu.addMenu(widget->accessibleName());
    to->addActions(actions);
  }
  for (const QPushButton* button : detail_->findChildren<QPushButton*>()) {
    if (button->isVisible() && button->menu() != nullptr) {
      menu.addMenu(button->text())->addActions(button->menu()->actions());
    }
  }
  menu.setEnabled(!menu.isEmpty());
}

/// The tabs of the screen in the detail area; null for none.
QTabWidget* WorkspaceView::shownTabs() {
  switch (frame_->currentDetailTab()) {
    case MainSplitViewController::DetailTab::equity:
      return &equity_->tabs();
    case MainSplitViewController::DetailTab::portfolio:
      return &portfolio_->tabs();
    case MainSplitViewController::DetailTab::report:
    case MainSplitViewController::DetailTab::emptyState:
      break;
  }
  return nullptr;
}

void WorkspaceView::updateActions() {
  const QTabWidget* tabs = shownTabs();
  for (std::size_t i = 0; i < tabActions_.size(); ++i) {
    const int tab = static_cast<int>(i);
    const bool isThere = tabs != nullptr && tab < tabs->count();
    tabActions_[i]->setVisible(isThere);
    tabActions_[i]->setEnabled(isThere);
    if (isThere) {
      tabActions_[i]->setText(tabs->tabText(tab));
    }
  }
  if (newPortfolio_ == nullptr) {
    return;
  }
  const PortfolioViewController& portfolio = *frame_->portfolioViewController;
  const bool showsPortfolio =
      frame_->currentDetailTab() == MainSplitViewController::DetailTab::portfolio;
  newPortfolio_->setEnabled(frame_->canCreatePortfolio());
  editPortfolio_->setEnabled(showsPortfolio && portfolio.canEditPortfolio());
  deletePortfolio_->setEnabled(showsPortfolio && portfolio.canEditPortfolio());
  findTransactions_->setEnabled(showsPortfolio && portfolio.canCreateTransaction() &&
                                !portfolio.currentData().portfolio->transactions().empty());
  newTransaction_->setEnabled(showsPortfolio && portfolio.canCreateTransaction());
  // An import or export that is under way refuses a second one by itself.
  importAction_->setEnabled(showsPortfolio && portfolio.canCreateTransaction());
  statementAction_->setEnabled(importAction_->isEnabled());
  importsAction_->setEnabled(importAction_->isEnabled());
  exportAction_->setEnabled((showsPortfolio && portfolio.canCreateTransaction()) ||
                            frame_->currentDetailTab() ==
                                MainSplitViewController::DetailTab::report);
}

}  // namespace corvane::desktop
