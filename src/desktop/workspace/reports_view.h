// The reports about all portfolios of a workspace, of which one is shown at a time.
#pragma once

#include <QStackedWidget>
#include <functional>
#include <map>
#include <memory>

#include "presentation/frame/workspace_reports.h"

namespace corvane::desktop {

class TaxYearView;

/// A page for each WorkspaceReport, which is made when it is first shown.
class ReportsView : public QStackedWidget {
 public:
  explicit ReportsView(std::shared_ptr<WorkspaceReports> reports, QWidget* parent = nullptr);

  /// Shows the report that the reports have as theirs.
  void showReport();
  [[nodiscard]] TaxYearView& taxYear();

  /// Called with each page once it has been made.
  std::function<void(QWidget& page)> pageMade;

 private:
  QWidget* page(WorkspaceReport report);
  QWidget* makePage(WorkspaceReport report);

  std::shared_ptr<WorkspaceReports> reports_;
  std::map<WorkspaceReport, QWidget*> pages_;
};

}  // namespace corvane::desktop
