// The first page of a workspace, over all of its portfolios.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "desktop/reports/report_view.h"
#include "presentation/controls/query_dates_picker.h"
#include "presentation/overview/portfolios_overview_view_controller.h"

namespace corvane::desktop {

class TableModelAdapter;
class TableView;

/// Shows a PortfoliosOverviewViewController: figures, the chart with its days, and the tables of
/// portfolios, holdings and currencies. A refresh of prices writes into the cells that there are,
/// and leaves the selection and what has been scrolled to.
class OverviewView : public ReportView {
  Q_OBJECT

 public:
  /// `days` are those of the chart, and outlive this.
  OverviewView(std::shared_ptr<PortfoliosOverviewViewController> controller, QueryDatesPicker& days,
               QWidget* parent = nullptr);

  /// Asked to write one of the lists to a file.
  std::function<void(std::shared_ptr<PortfolioExporter>)> exportHandler =
      [](const std::shared_ptr<PortfolioExporter>&) {};

 protected:
  void showState() override;

 private:
  /// A table whose rows have keys that stay when their figures change.
  struct List {
    TableModelAdapter* adapter;
    TableView* table;
    int mostRows;
    std::function<std::string(std::size_t row)> keyOf;
    std::optional<std::string> chosen = std::nullopt;
  };

  void addTables();
  List& addList(const QString& heading, const QString& help, const QString& objectName,
                const TableModel& model, int mostRows,
                std::function<std::string(std::size_t)> keyOf);
  void showList(List& list);

  std::shared_ptr<PortfoliosOverviewViewController> controller_;
  std::vector<std::unique_ptr<List>> lists_;
  bool isShowing_ = false;
};

}  // namespace corvane::desktop
