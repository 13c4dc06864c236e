// The reports about all portfolios of a workspace.
#pragma once

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string_view>
#include <vector>

#include "platform/async/notification_center.h"
#include "presentation/controls/query_dates_picker.h"
#include "presentation/coverage/coverage_view_controller.h"
#include "presentation/overview/portfolios_overview_view_controller.h"
#include "presentation/reports/income_view_controller.h"
#include "presentation/reports/returns_view_controller.h"
#include "presentation/taxes/tax_year_view_controller.h"

namespace corvane {

enum class WorkspaceReport { overview, returns, taxYear, income, coverage };

/// Shows one of the reports at a time, or none. The one that is shown follows edits of the ledgers
/// and refreshes of their prices. Held by shared pointer only. Main queue only.
class WorkspaceReports : public std::enable_shared_from_this<WorkspaceReports> {
  struct Passkey {};

 public:
  struct Entry {
    WorkspaceReport report;
    std::string_view title;
  };
  /// As the source list has them.
  static constexpr std::array<Entry, 5> entries = {{{WorkspaceReport::overview, "All Portfolios"},
                                                    {WorkspaceReport::returns, "Returns"},
                                                    {WorkspaceReport::taxYear, "Tax Year"},
                                                    {WorkspaceReport::income, "Income"},
                                                    {WorkspaceReport::coverage, "Coverage"}}};

  [[nodiscard]] static std::shared_ptr<WorkspaceReports> make(ScreenSurroundings surroundings);
  WorkspaceReports(Passkey passkey, ScreenSurroundings surroundings);

  const std::shared_ptr<PortfoliosOverviewViewController> overview;
  const std::shared_ptr<ReturnsViewController> returns;
  const std::shared_ptr<TaxYearViewController> taxYear;
  const std::shared_ptr<IncomeViewController> income;
  const std::shared_ptr<CoverageViewController> coverage;
  /// The days of the chart of all portfolios, and those of the report of returns.
  QueryDatesPicker overviewDatesPicker;
  QueryDatesPicker datesPicker;

  /// Whether any of them is being worked out.
  [[nodiscard]] bool isBusy() const;

  void setDocumentModel(std::weak_ptr<WorkspaceModel> model);
  /// Looks at the portfolios anew, of which there are others.
  void portfoliosDidChange() { reload(); }
  /// None for none.
  void show(std::optional<WorkspaceReport> report);
  [[nodiscard]] std::optional<WorkspaceReport> shown() const { return shown_; }
  /// What writes the report that is shown to a file; null where there is
  /// nothing to write.
  [[nodiscard]] std::shared_ptr<PortfolioExporter> makeExporter() const;

 private:
  void observe();
  void reload();
  void limitDays(QueryDatesPicker& picker, const std::vector<PortfolioPointer>& portfolios);

  ScreenSurroundings surroundings_;
  std::weak_ptr<WorkspaceModel> documentModel_;
  std::optional<WorkspaceReport> shown_;
  std::set<const QueryDatesPicker*> fresh_;  ///< those that are to show all days
  std::vector<Subscription> observations_;
};

}  // namespace corvane
