// The report of a tax year.
#pragma once

#include <QWidget>
#include <functional>
#include <memory>
#include <vector>

#include "platform/async/subscription.h"
#include "presentation/taxes/tax_year_view_controller.h"

class QComboBox;
class QFrame;
class QLabel;
class QProgressBar;

namespace corvane::desktop {

class FiguresRow;
class ReportHeading;
class ReportPage;
class TableModelAdapter;
class TableView;

/// Shows a TaxYearViewController: year and person, the banner that asks for roles, figures, and a
/// table for each section.
class TaxYearView : public QWidget {
  Q_OBJECT

 public:
  /// Writes one of the lists of the year to a file.
  std::function<void(std::shared_ptr<PortfolioExporter>)> exportHandler =
      [](const std::shared_ptr<PortfolioExporter>&) {};

  explicit TaxYearView(std::shared_ptr<TaxYearViewController> controller,
                       QWidget* parent = nullptr);

  /// Opens the form that says whose the portfolios are.
  void openRoles();

 private:
  void addChoices();
  [[nodiscard]] QFrame* makeBanner();
  void connectTables(TableView& disposals, TableView& check);
  TableView* addTable(const QString& name, const QString& objectName, const TableModel& model);
  void showState();
  void showChoices();

  std::shared_ptr<TaxYearViewController> controller_;
  QComboBox* year_;
  QComboBox* person_;
  QProgressBar* busy_;
  ReportHeading* heading_;
  QLabel* bannerText_;
  QFrame* banner_;
  ReportPage* page_;
  FiguresRow* figures_;
  std::vector<TableView*> tables_;
  std::vector<TableModelAdapter*> adapters_;
  QLabel* footnote_ = nullptr;
  Subscription changes_;
};

}  // namespace corvane::desktop
