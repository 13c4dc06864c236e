// The view of what the market has told about the days of what is held.
#pragma once

#include <QWidget>
#include <memory>

#include "platform/async/subscription.h"
#include "presentation/coverage/coverage_view_controller.h"

class QLabel;
class QProgressBar;
class QPushButton;

namespace corvane::desktop {

class FiguresRow;
class ReportHeading;
class ReportPage;
class TableModelAdapter;
class TableView;

/// Shows a CoverageViewController: figures, a line with a bar for each equity and exchange rate,
/// and the stretches of days of the line that is selected.
class CoverageView : public QWidget {
  Q_OBJECT

 public:
  explicit CoverageView(std::shared_ptr<CoverageViewController> controller,
                        QWidget* parent = nullptr);

 private:
  void addChoices();
  void addTables();
  void showState();
  void showLines();
  void showStretches();
  void chooseCurrent();

  std::shared_ptr<CoverageViewController> controller_;
  QProgressBar* busy_;
  ReportHeading* heading_;
  QProgressBar* progress_;
  QPushButton* fetch_;
  QLabel* notice_;
  ReportPage* page_;
  FiguresRow* figures_;
  TableModelAdapter* lineAdapter_;
  TableModelAdapter* stretchAdapter_;
  TableView* lines_;
  QLabel* stretchHeading_ = nullptr;
  TableView* stretches_;
  bool isShowing_ = false;
  Subscription changes_;
  Subscription lineChanges_;
  Subscription stretchChanges_;
};

}  // namespace corvane::desktop
