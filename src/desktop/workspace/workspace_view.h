// The content of a workspace's window: the source list beside the detail area.
#pragma once

#include <QWidget>
#include <filesystem>
#include <functional>
#include <memory>
#include <vector>

#include "platform/async/subscription.h"
#include "presentation/frame/main_split_view_controller.h"
#include "presentation/portfolio/portfolio_export.h"
#include "presentation/portfolio/portfolio_import.h"
#include "storage/workspace/workspace_document.h"

class QAction;
class QMenu;
class QSplitter;
class QStackedWidget;
class QTabWidget;

namespace corvane::desktop {

class ColumnChoice;
class EquityView;
class ExplanationPanel;
class FirstSteps;
class PortfolioView;
class ReportsView;
class SourceView;
class TimeZoneBar;

/// Shows a MainSplitViewController, and hands its screens what they need of the window.
class WorkspaceView : public QWidget {
  Q_OBJECT

 public:
  /// Both outlive this.
  WorkspaceView(WorkspaceDocument& document, UserDefaults& defaults, QWidget* parent = nullptr);

  void setDocumentModel(const std::weak_ptr<WorkspaceModel>& model);
  [[nodiscard]] MainSplitViewController& controller() { return *frame_; }
  [[nodiscard]] PortfolioView& portfolioView() { return *portfolio_; }
  [[nodiscard]] EquityView& equityView() { return *equity_; }
  [[nodiscard]] ReportsView& reportsView() { return *reports_; }

  [[nodiscard]] PortfolioExport& portfolioExport() { return *export_; }
  /// Shows what an import of a statement into the portfolio on the screen would do.
  void openStatement(const std::filesystem::path& file);
  /// Shows the imports of the portfolio on the screen.
  void showImports();
  /// Lets the user say in which time zone the days of the workspace stand.
  void showTimeZone();

  /// Called when the document may count other changes than before.
  void setDocumentChangedHandler(std::function<void()> handler) {
    documentChanged_ = std::move(handler);
  }

  // The commands of the screens, for the menus of the window.

  void addExchangeActions(QMenu* menu);
  void addSearchAction(QMenu* menu);
  void addPortfolioActions(QMenu* menu);
  void addViewActions(QMenu* menu);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  [[nodiscard]] ScreenSurroundings surroundings();
  void shareRoomWithExplanation(bool isShown);
  void showDetail();
  void perform(const MainSplitViewController::Segue& segue);
  void updateActions();
  void importStatement();
  void addFirstSteps();
  void fillColumnsMenu(QMenu& menu);
  void fillScreenMenu(QMenu& menu);
  void addReportActions(QMenu* menu);
  /// Explains the figure that the keyboard is on, or else the one in the heading.
  void explainNumber();
  void exportShown();
  void offerColumns(const QWidget& page);
  void exportReport(const std::shared_ptr<PortfolioExporter>& exporter);
  [[nodiscard]] QTabWidget* shownTabs();

  WorkspaceDocument& document_;
  UserDefaults& defaults_;
  std::function<void()> documentChanged_ = [] {};
  std::shared_ptr<MainSplitViewController> frame_;
  TimeZoneBar* timeZone_;
  SourceView* source_;
  QSplitter* split_;
  QStackedWidget* detail_;
  FirstSteps* empty_;
  EquityView* equity_;
  PortfolioView* portfolio_;
  ReportsView* reports_;
  ExplanationPanel* explanation_;
  int sourceWidth_ = 0;             ///< before it gave way
  bool hasSourceGivenWay_ = false;  ///< to the explanation, and comes back behind it
  std::shared_ptr<PortfolioImport> import_;
  std::shared_ptr<PortfolioExport> export_;
  QAction* importAction_ = nullptr;
  QAction* statementAction_ = nullptr;
  QAction* importsAction_ = nullptr;
  QAction* exportAction_ = nullptr;
  QAction* search_ = nullptr;
  QAction* findTransactions_ = nullptr;
  QAction* newPortfolio_ = nullptr;
  QAction* newTransaction_ = nullptr;
  QAction* editPortfolio_ = nullptr;
  QAction* deletePortfolio_ = nullptr;
  std::vector<QAction*> tabActions_;
  std::vector<ColumnChoice*> columnChoices_;
  Subscription changes_;
  Subscription segues_;
  Subscription decisions_;
};

}  // namespace corvane::desktop
