// The reports about all portfolios of a workspace, of which one is shown at a time.
#pragma once

#include <QStackedWidget>
#include <memory>

#include "presentation/frame/workspace_reports.h"

namespace corvane::desktop {

class TaxYearView;

/// A page for each WorkspaceReport.
class ReportsView : public QStackedWidget {
 public:
  explicit ReportsView(std::shared_ptr<WorkspaceReports> reports, QWidget* parent = nullptr);

  /// Shows the report that the reports have as theirs.
  void showReport();
  [[nodiscard]] TaxYearView& taxYear() { return *taxYear_; }

 private:
  std::shared_ptr<WorkspaceReports> reports_;
  QWidget* returns_;
  TaxYearView* taxYear_;
  QWidget* taxYearPage_;
  QWidget* income_;
  QWidget* coverage_;
};

}  // namespace corvane::desktop
